// Parents, owners, neighbours, and children by their numbers.
#include "korutil/platform/control.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/user/window_tree.h"

namespace kor {
namespace {

HWND handleOf(const Window* window) { return window ? window->handle : nullptr; }

HWND related(const Window& window, UINT relation) {
    switch (relation) {
        case GW_HWNDFIRST:
            return handleOf(window.parent ? window.parent->first : nullptr);
        case GW_HWNDLAST:
            return handleOf(window.parent ? window.parent->last : nullptr);
        case GW_HWNDNEXT:
            return handleOf(window.next);
        case GW_HWNDPREV:
            return handleOf(window.previous);
        case GW_OWNER:
            return handleOf(window.owner);
        case GW_CHILD:
            return handleOf(window.first);
        default:
            SetLastError(ERROR_INVALID_GW_COMMAND);
            return nullptr;
    }
}

HWND setParent(Window& window, Window& parent) {
    if (isDesktop(window) || !canBeWithin(window, parent)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const HWND former = handleOf(window.parent);
    unlinkWindow(window);
    linkWindow(window, parent, lastAboveTop(window, parent));
    return former;
}

}  // namespace
}  // namespace kor

HWND WINAPI GetDesktopWindow() {
    return kor::withMemory(nullptr, []() -> HWND {
        const kor::UserLock lock = kor::lockUser();
        return kor::desktopWindow().handle;
    });
}

HWND WINAPI GetParent(HWND window) {
    return kor::withWindow(window, HWND{nullptr}, [](const kor::Window& found) -> HWND {
        if (found.style & WS_CHILD) return kor::handleOf(found.parent);
        return found.style & WS_POPUP ? kor::handleOf(found.owner) : nullptr;
    });
}

HWND WINAPI SetParent(HWND window, HWND parent) {
    return kor::withWindow(window, HWND{nullptr}, [parent](kor::Window& found) -> HWND {
        kor::Window* wanted = parent ? kor::findWindow(parent) : &kor::desktopWindow();
        if (!wanted || wanted->isDying) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return nullptr;
        }
        return kor::setParent(found, *wanted);
    });
}

HWND WINAPI GetWindow(HWND window, UINT relation) {
    return kor::withWindow(window, HWND{nullptr},
                           [=](const kor::Window& found) { return kor::related(found, relation); });
}

HWND WINAPI GetAncestor(HWND window, UINT relation) {
    return kor::withWindow(window, HWND{nullptr}, [=](kor::Window& found) -> HWND {
        if (relation == GA_PARENT) return kor::handleOf(found.parent);
        if (relation == GA_ROOT) return kor::rootOf(found).handle;
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    });
}

BOOL WINAPI IsChild(HWND parent, HWND window) {
    return kor::withWindow(parent, FALSE, [window](const kor::Window& around) -> BOOL {
        const kor::Window* found = kor::findWindow(window);
        return found && found != &around && kor::isWithin(found, around);
    });
}

HWND WINAPI GetDlgItem(HWND dialog, int id) {
    return kor::withWindow(dialog, HWND{nullptr}, [id](const kor::Window& found) -> HWND {
        for (const kor::Window* child = found.first; child; child = child->next) {
            if (static_cast<int>(child->id) == id) return child->handle;
        }
        SetLastError(ERROR_CONTROL_ID_NOT_FOUND);
        return nullptr;
    });
}
