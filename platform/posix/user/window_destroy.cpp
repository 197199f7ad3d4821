// Windows go.
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/user/activation.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/window_removal.h"
#include "platform/posix/user/window_tree.h"

namespace kor {
namespace {

// @return whether the calling thread may go on with it
bool startDying(Window& window) {
    if (window.queue.get() != MessageQueue::existing() || isDesktop(window)) {
        return failWith(ERROR_ACCESS_DENIED);
    }
    window.isDying = true;
    return true;
}

HWND firstOwnedBy(HWND window) {
    const UserLock lock = lockUser();
    HWND found = nullptr;
    forEachTopLevel([&](const Window& other) {
        const bool isOwned = other.owner && other.owner->handle == window;
        if (!found && isOwned && !other.isDying && other.queue.get() == MessageQueue::existing()) {
            found = other.handle;
        }
    });
    return found;
}

HWND nextToTell(HWND parent) {
    const UserLock lock = lockUser();
    const Window* window = findWindow(parent);
    for (const Window* child = window ? window->first : nullptr; child; child = child->next) {
        if (!child->isDestroyTold) return child->handle;
    }
    return nullptr;
}

bool markTold(HWND window) {
    const UserLock lock = lockUser();
    Window* found = findWindow(window);
    if (found) found->isDying = found->isDestroyTold = true;
    return found != nullptr;
}

void tellDestroy(HWND window) {
    if (!markTold(window)) return;
    deliver(window, WM_DESTROY, 0, LPARAM{0});
    while (const HWND child = nextToTell(window))
        tellDestroy(child);
}

HWND firstChild(HWND parent) {
    const UserLock lock = lockUser();
    const Window* window = findWindow(parent);
    return window && window->first ? window->first->handle : nullptr;
}

void finish(HWND window) {
    while (const HWND child = firstChild(window))
        finish(child);
    deliver(window, WM_NCDESTROY, 0, LPARAM{0});
    const UserLock lock = lockUser();
    if (Window* found = findWindow(window)) removeWindow(*found);
}

void tellParent(HWND window) {
    HWND parent = nullptr;
    UINT id = 0;
    {
        const UserLock lock = lockUser();
        const Window* found = findWindow(window);
        if (!found || !(found->style & WS_CHILD) || (found->exStyle & WS_EX_NOPARENTNOTIFY)) return;
        parent = found->parent->handle;
        id = static_cast<UINT>(found->id);
    }
    deliver(parent, WM_PARENTNOTIFY, MAKEWPARAM(WM_DESTROY, id), window);
}

void destroy(HWND window) {
    tellParent(window);
    while (const HWND owned = firstOwnedBy(window)) {
        if (!DestroyWindow(owned)) break;
    }
    if (IsWindowVisible(window)) {
        constexpr UINT kHide = SWP_HIDEWINDOW | SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
        SetWindowPos(window, nullptr, 0, 0, 0, 0, kHide);
    }
    leaveWindow(window);
    tellDestroy(window);
    finish(window);
}

}  // namespace
}  // namespace kor

BOOL WINAPI DestroyWindow(HWND window) {
    bool isDying = false;
    const BOOL goesOn = kor::withWindow(window, FALSE, [&](kor::Window& found) -> BOOL {
        isDying = found.isDying;
        return isDying || kor::startDying(found);
    });
    // Required: a window's procedure may destroy it once more while it is being destroyed.
    if (!goesOn || isDying) return goesOn;
    return kor::withMemory(FALSE, [window] { return kor::destroy(window), TRUE; });
}

BOOL WINAPI IsWindow(HWND window) {
    return kor::withWindow(window, FALSE, [](const kor::Window&) { return TRUE; });
}
