#include <algorithm>
#include <cctype>
#include <list>
#include <mutex>
#include <string>

#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "korutil/platform/window.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

constexpr ATOM kFirstAtom = 0xC000;
constexpr ATOM kLastAtom = 0xFFFF;

struct WindowClass {
    ATOM atom;
    std::string key;  // the name in lower case
    std::string menuName;
    WNDCLASSA record;
};

struct Classes {
    std::mutex lock;
    std::list<WindowClass> all;
    ATOM nextAtom = kFirstAtom;
};

// Never destroyed: libraries unregister their classes while the process ends.
Classes& classes() {
    static Classes& instance = *new Classes;
    return instance;
}

std::string lowerCase(const char* text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(c < 0x80 ? std::tolower(c) : c); });
    return result;
}

HINSTANCE moduleOrHost(HINSTANCE module) {
    if (!module) module = GetModuleHandleA(nullptr);
    if (!module) kor::passShortageOn();
    return module;
}

// By name or atom; a global class is every module's.
std::list<WindowClass>::iterator find(Classes& known, LPCSTR name, HINSTANCE module) {
    const bool byAtom = IS_INTRESOURCE(name);
    const ATOM atom = static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(name));
    const std::string key = byAtom ? std::string() : lowerCase(name);
    return std::find_if(known.all.begin(), known.all.end(), [&](const WindowClass& item) {
        if (byAtom ? item.atom != atom : item.key != key) return false;
        return item.record.hInstance == module || (item.record.style & CS_GLOBALCLASS);
    });
}

// One name has one atom, whichever modules register it.
ATOM atomFor(Classes& known, const std::string& key) {
    const auto sameName =
        std::find_if(known.all.begin(), known.all.end(), [&](const auto& item) { return item.key == key; });
    if (sameName != known.all.end()) return sameName->atom;
    const auto isFree = [&](ATOM atom) {
        return std::none_of(known.all.begin(), known.all.end(),
                            [&](const auto& item) { return item.atom == atom; });
    };
    for (unsigned tries = 0; tries <= kLastAtom - kFirstAtom; ++tries) {
        const ATOM atom = known.nextAtom;
        known.nextAtom = atom == kLastAtom ? kFirstAtom : static_cast<ATOM>(atom + 1);
        if (isFree(atom)) return atom;
    }
    return 0;
}

ATOM failed(DWORD error) {
    SetLastError(error);
    return 0;
}

}  // namespace

ATOM WINAPI RegisterClassA(const WNDCLASSA* windowClass) {
    return kor::withMemory(ATOM{0}, [&]() -> ATOM {
        if (!windowClass || IS_INTRESOURCE(windowClass->lpszClassName) || !*windowClass->lpszClassName ||
            windowClass->cbClsExtra < 0 || windowClass->cbWndExtra < 0) {
            return failed(ERROR_INVALID_PARAMETER);
        }
        WindowClass entry{0, lowerCase(windowClass->lpszClassName), {}, *windowClass};
        entry.record.hInstance = moduleOrHost(windowClass->hInstance);
        if (!IS_INTRESOURCE(windowClass->lpszMenuName)) entry.menuName = windowClass->lpszMenuName;
        Classes& known = classes();
        const std::lock_guard lock(known.lock);
        if (find(known, windowClass->lpszClassName, entry.record.hInstance) != known.all.end()) {
            return failed(ERROR_CLASS_ALREADY_EXISTS);
        }
        entry.atom = atomFor(known, entry.key);
        if (entry.atom == 0) return failed(ERROR_NOT_ENOUGH_MEMORY);
        known.all.push_back(std::move(entry));
        return known.all.back().atom;
    });
}

BOOL WINAPI UnregisterClassA(LPCSTR name, HINSTANCE module) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        Classes& known = classes();
        const HINSTANCE owner = moduleOrHost(module);
        const std::lock_guard lock(known.lock);
        const auto found = find(known, name, owner);
        if (found == known.all.end()) return failed(ERROR_CLASS_DOES_NOT_EXIST);
        known.all.erase(found);
        return TRUE;
    });
}

BOOL WINAPI GetClassInfoA(HINSTANCE module, LPCSTR name, WNDCLASSA* windowClass) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (!windowClass) return failed(ERROR_NOACCESS);
        Classes& known = classes();
        const std::lock_guard lock(known.lock);
        const auto found = find(known, name, module);
        if (found == known.all.end()) return failed(ERROR_CLASS_DOES_NOT_EXIST);
        *windowClass = found->record;
        windowClass->hInstance = module;
        windowClass->lpszClassName = name;
        if (!IS_INTRESOURCE(windowClass->lpszMenuName)) windowClass->lpszMenuName = found->menuName.c_str();
        return found->atom;
    });
}

LRESULT WINAPI DefWindowProcA(HWND, UINT, WPARAM, LPARAM) { return 0; }
