// The embedded host's hook chains.

#include <new>
#include <utility>

#include "host/maker_function.h"
#include "korutil/host.h"

namespace kor {
namespace {

constexpr char kLibrary[] = "Wrx";

// A chain is kept until the library is unloaded, so that a handler may end the chain that it is called
// through; there are only as many as there are hooks.
struct HookChain {
    UINT id;
    bool live;
    MenuHook* first;
    MenuHook last;  // the default handler, which may be null
    HookChain* next;
};

struct HookChains {
    ~HookChains() {
        while (first)
            delete std::exchange(first, first->next);
    }

    HookChain* first = nullptr;
};
HookChains chains;

HookChain* findChain(UINT id) {
    HookChain* chain = chains.first;
    while (chain && chain->id != id)
        chain = chain->next;
    return chain;
}

HookChain* findLiveChain(UINT id) {
    HookChain* chain = findChain(id);
    return chain && chain->live ? chain : nullptr;
}

bool isLinked(const MenuHook* hook) {
    for (const HookChain* chain = chains.first; chain; chain = chain->next) {
        if (!chain->live) continue;
        for (const MenuHook* each = chain->first; each; each = each->next) {
            if (each == hook) return true;
        }
    }
    return false;
}

int call(const MenuHook* hook, void* record) { return hook && hook->handler ? hook->handler(record) : 0; }

}  // namespace
}  // namespace kor

using namespace kor;

int KORUTIL_CALL menuInitHook(UINT id, MenuHookHandler defaultHandler) {
    HookChain* chain = findChain(id);
    // A chain stays where it was begun, also when Wrx is loaded later.
    if (!chain || !chain->live) {
        const auto maker = makerFunction<decltype(&menuInitHook)>(kLibrary, "menuInitHook");
        if (maker) return maker(id, defaultHandler);
    }
    if (!chain) {
        chain = new (std::nothrow) HookChain{id, false, nullptr, {nullptr, nullptr}, chains.first};
        if (!chain) return 0;
        chain->first = &chain->last;
        chains.first = chain;
    }
    chain->live = true;
    chain->last.handler = defaultHandler;
    return 1;
}

int KORUTIL_CALL menuExitHook(UINT id) {
    HookChain* chain = findLiveChain(id);
    if (!chain) {
        const auto maker = makerFunction<decltype(&menuExitHook)>(kLibrary, "menuExitHook");
        return maker ? maker(id) : 0;
    }
    chain->live = false;
    chain->first = &chain->last;
    chain->last.handler = nullptr;
    return 1;
}

MenuHook** KORUTIL_CALL menuGetFirstHook(UINT id) {
    HookChain* chain = findLiveChain(id);
    if (chain) return &chain->first;
    const auto maker = makerFunction<decltype(&menuGetFirstHook)>(kLibrary, "menuGetFirstHook");
    return maker ? maker(id) : nullptr;
}

int KORUTIL_CALL menuCallFirstHook(UINT id, void* record) {
    const HookChain* chain = findLiveChain(id);
    if (chain) return call(chain->first, record);
    const auto maker = makerFunction<decltype(&menuCallFirstHook)>(kLibrary, "menuCallFirstHook");
    return maker ? maker(id, record) : 0;
}

int KORUTIL_CALL menuCallNextHook(const MenuHook* hook, void* record) {
    if (!hook) return 0;
    if (!isLinked(hook)) {
        const auto maker = makerFunction<decltype(&menuCallNextHook)>(kLibrary, "menuCallNextHook");
        if (maker) return maker(hook, record);
    }
    return call(hook->next, record);
}
