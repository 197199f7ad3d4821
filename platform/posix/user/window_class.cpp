#include "platform/posix/user/window_class.h"

#include <algorithm>
#include <cctype>
#include <list>
#include <mutex>

#include "korutil/platform/drawing_object.h"
#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/with_memory.h"
#include "platform/posix/user/control_class.h"

namespace kor {
namespace {

constexpr ATOM kFirstAtom = 0xC000;
constexpr ATOM kLastAtom = 0xFFFF;

using List = std::list<std::shared_ptr<WindowClass>>;

struct Classes {
    std::mutex lock;
    List all;
    ATOM nextAtom = kFirstAtom;

    Classes();

  private:
    void addSystems(const char* name, UINT style, WNDPROC procedure);
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

// By name or atom: the module's own class before a global one, and that before the system's.
List::iterator find(Classes& known, LPCSTR name, HINSTANCE module) {
    const bool byAtom = IS_INTRESOURCE(name);
    const ATOM atom = static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(name));
    const std::string key = byAtom ? std::string() : lowerCase(name);
    const auto rank = [&](const WindowClass& item) {
        if (byAtom ? item.atom != atom : item.key != key) return 0;
        if (item.isSystems) return 1;
        if (item.record.hInstance == module) return 3;
        return item.record.style & CS_GLOBALCLASS ? 2 : 0;
    };
    auto best = known.all.end();
    for (auto item = known.all.begin(); item != known.all.end(); ++item) {
        if (rank(**item) > (best == known.all.end() ? 0 : rank(**best))) best = item;
    }
    return best;
}

// One name has one atom, whichever modules register it.
ATOM atomFor(Classes& known, const std::string& key) {
    const auto sameName =
        std::find_if(known.all.begin(), known.all.end(), [&](const auto& item) { return item->key == key; });
    if (sameName != known.all.end()) return (*sameName)->atom;
    const auto isFree = [&](ATOM atom) {
        return std::none_of(known.all.begin(), known.all.end(),
                            [&](const auto& item) { return item->atom == atom; });
    };
    for (unsigned tries = 0; tries <= kLastAtom - kFirstAtom; ++tries) {
        const ATOM atom = known.nextAtom;
        known.nextAtom = atom == kLastAtom ? kFirstAtom : static_cast<ATOM>(atom + 1);
        if (isFree(atom)) return atom;
    }
    return 0;
}

void Classes::addSystems(const char* name, UINT style, WNDPROC procedure) {
    auto entry = std::make_shared<WindowClass>();
    entry->name = name;
    entry->key = lowerCase(name);
    entry->atom = atomFor(*this, entry->key);
    entry->record.style = style;
    entry->record.lpfnWndProc = procedure;
    entry->record.cbWndExtra = sizeof(LONG_PTR);
    entry->record.hCursor = LoadCursorA(nullptr, procedure == editProcedure ? IDC_IBEAM : IDC_ARROW);
    entry->isSystems = true;
    all.push_back(std::move(entry));
}

Classes::Classes() {
    addSystems("Button", CS_VREDRAW | CS_HREDRAW | CS_DBLCLKS | CS_PARENTDC, buttonProcedure);
    addSystems("Edit", CS_DBLCLKS | CS_PARENTDC, editProcedure);
    addSystems("Static", CS_DBLCLKS | CS_PARENTDC, staticProcedure);
}

ATOM failed(DWORD error) {
    SetLastError(error);
    return 0;
}

// Whether a module's class, but for the system's, has the name already.
bool isTaken(Classes& known, LPCSTR name, HINSTANCE module) {
    const auto found = find(known, name, module);
    return found != known.all.end() && !(*found)->isSystems;
}

std::shared_ptr<WindowClass> entryFor(const WNDCLASSA& windowClass) {
    auto entry = std::make_shared<WindowClass>();
    entry->name = windowClass.lpszClassName;
    entry->key = lowerCase(windowClass.lpszClassName);
    entry->record = windowClass;
    entry->record.hInstance = moduleOrHost(windowClass.hInstance);
    if (!IS_INTRESOURCE(windowClass.lpszMenuName)) entry->menuName = windowClass.lpszMenuName;
    return entry;
}

}  // namespace

std::shared_ptr<const WindowClass> classForWindow(HINSTANCE module, LPCSTR name) {
    Classes& known = classes();
    const HINSTANCE owner = moduleOrHost(module);
    const std::lock_guard lock(known.lock);
    const auto found = find(known, name, owner);
    return found == known.all.end() ? nullptr : *found;
}

}  // namespace kor

ATOM WINAPI RegisterClassA(const WNDCLASSA* windowClass) {
    return kor::withMemory(ATOM{0}, [&]() -> ATOM {
        if (!windowClass || IS_INTRESOURCE(windowClass->lpszClassName) || !*windowClass->lpszClassName ||
            windowClass->cbClsExtra < 0 || windowClass->cbWndExtra < 0) {
            return kor::failed(ERROR_INVALID_PARAMETER);
        }
        auto entry = kor::entryFor(*windowClass);
        kor::Classes& known = kor::classes();
        const std::lock_guard lock(known.lock);
        if (kor::isTaken(known, windowClass->lpszClassName, entry->record.hInstance)) {
            return kor::failed(ERROR_CLASS_ALREADY_EXISTS);
        }
        entry->atom = kor::atomFor(known, entry->key);
        if (entry->atom == 0) return kor::failed(ERROR_NOT_ENOUGH_MEMORY);
        known.all.push_back(std::move(entry));
        return known.all.back()->atom;
    });
}

BOOL WINAPI UnregisterClassA(LPCSTR name, HINSTANCE module) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        kor::Classes& known = kor::classes();
        const HINSTANCE owner = kor::moduleOrHost(module);
        const std::lock_guard lock(known.lock);
        const auto found = kor::find(known, name, owner);
        if (found == known.all.end() || (*found)->isSystems) return kor::failed(ERROR_CLASS_DOES_NOT_EXIST);
        if (found->use_count() > 1) return kor::failed(ERROR_CLASS_HAS_WINDOWS);
        known.all.erase(found);
        return TRUE;
    });
}

BOOL WINAPI GetClassInfoA(HINSTANCE module, LPCSTR name, WNDCLASSA* windowClass) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (!windowClass) return kor::failed(ERROR_NOACCESS);
        kor::Classes& known = kor::classes();
        const std::lock_guard lock(known.lock);
        const auto found = kor::find(known, name, module);
        if (found == known.all.end()) return kor::failed(ERROR_CLASS_DOES_NOT_EXIST);
        *windowClass = (*found)->record;
        windowClass->hInstance = module;
        windowClass->lpszClassName = name;
        if (!IS_INTRESOURCE(windowClass->lpszMenuName))
            windowClass->lpszMenuName = (*found)->menuName.c_str();
        return (*found)->atom;
    });
}
