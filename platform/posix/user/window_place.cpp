// Where windows lie.
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/user/activation.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/screen.h"
#include "platform/posix/user/show_state.h"
#include "platform/posix/user/window_tree.h"

namespace kor {
namespace {

constexpr UINT kNothing = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER;

bool isOrder(HWND after) {
    return after == HWND_TOP || after == HWND_BOTTOM || after == HWND_TOPMOST || after == HWND_NOTOPMOST;
}

// Sets the place. @return the flags of what did not change
UINT applyPlace(Window& window, WINDOWPOS& position) {
    UINT unchanged = 0;
    const RECT& place = window.place;
    const bool moves = !(position.flags & SWP_NOMOVE), sizes = !(position.flags & SWP_NOSIZE);
    const RECT wanted = rectangleAt(moves ? position.x : place.left, moves ? position.y : place.top,
                                    sizes ? position.cx : place.right - place.left,
                                    sizes ? position.cy : place.bottom - place.top);
    if (wanted.left == place.left && wanted.top == place.top) unchanged |= SWP_NOMOVE;
    if (wanted.right - wanted.left == place.right - place.left &&
        wanted.bottom - wanted.top == place.bottom - place.top) {
        unchanged |= SWP_NOSIZE;
    }
    window.place = wanted;
    position.x = wanted.left;
    position.y = wanted.top;
    position.cx = wanted.right - wanted.left;
    position.cy = wanted.bottom - wanted.top;
    return unchanged;
}

// The sibling below which it comes; false when the order stays.
bool newAbove(Window& window, HWND after, Window*& above) {
    if (after == HWND_BOTTOM) {
        above = window.parent->last == &window ? window.previous : window.parent->last;
    } else if (isOrder(after)) {
        above = lastAboveTop(window, *window.parent);
    } else {
        above = findWindow(after);
        if (!above || above->parent != window.parent || above == &window) return false;
    }
    return above != window.previous;
}

UINT applyOrder(Window& window, const WINDOWPOS& position) {
    if (position.flags & SWP_NOZORDER) return SWP_NOZORDER;
    const HWND after = position.hwndInsertAfter;
    if (after == HWND_TOPMOST) window.exStyle |= WS_EX_TOPMOST;
    if (after == HWND_NOTOPMOST || after == HWND_BOTTOM) window.exStyle &= ~WS_EX_TOPMOST;
    Window* above = nullptr;
    if (!newAbove(window, after, above)) return SWP_NOZORDER;
    Window& parent = *window.parent;
    unlinkWindow(window);
    linkWindow(window, parent, above);
    return 0;
}

// @return whether it changed
bool applyVisibility(Window& window, UINT flags) {
    const DWORD before = window.style;
    if (flags & SWP_SHOWWINDOW) window.style |= WS_VISIBLE;
    if (flags & SWP_HIDEWINDOW) window.style &= ~WS_VISIBLE;
    return window.style != before;
}

// @return whether anything changed
bool apply(Window& window, WINDOWPOS& position) {
    const UINT unchanged = applyPlace(window, position) | applyOrder(window, position);
    const bool changed = applyVisibility(window, position.flags);
    position.flags |= unchanged;
    return changed || (unchanged & kNothing) != kNothing || (position.flags & SWP_FRAMECHANGED);
}

enum class Request { fails, doesNothing, goesOn };

Request examine(const Window& window, const WINDOWPOS& position) {
    if (isDesktop(window)) return Request::fails;
    if ((position.flags & SWP_NOZORDER) || isOrder(position.hwndInsertAfter)) return Request::goesOn;
    const Window* sibling = findWindow(position.hwndInsertAfter);
    if (!sibling) return Request::fails;
    return sibling->parent == window.parent ? Request::goesOn : Request::doesNothing;
}

bool activates(const Window& window, const WINDOWPOS& position) {
    const bool raised = !(position.flags & SWP_NOZORDER) && position.hwndInsertAfter != HWND_BOTTOM;
    return !(position.flags & SWP_NOACTIVATE) && (raised || (position.flags & SWP_SHOWWINDOW)) &&
           !(window.style & WS_CHILD) && (window.style & WS_VISIBLE);
}

BOOL setPosition(WINDOWPOS position) {
    const HWND window = position.hwnd;
    const auto request =
        withWindow(window, Request::fails, [&](const Window& found) { return examine(found, position); });
    if (request == Request::fails) return failWith(ERROR_INVALID_WINDOW_HANDLE);
    if (request == Request::doesNothing) return TRUE;
    if (!(position.flags & SWP_NOSENDCHANGING)) deliver(window, WM_WINDOWPOSCHANGING, 0, &position);
    bool changed = false, isToActivate = false;
    if (!withWindow(window, FALSE, [&](Window& found) -> BOOL {
            changed = apply(found, position);
            isToActivate = activates(found, position);
            return TRUE;
        })) {
        return FALSE;
    }
    if (isToActivate) SetActiveWindow(window);
    if (changed) deliver(window, WM_WINDOWPOSCHANGED, 0, &position);
    return TRUE;
}

BOOL offset(HWND window, POINT* point, int sign) {
    return withWindow(window, FALSE, [=](const Window& found) -> BOOL {
        if (!point) return failWith(ERROR_NOACCESS);
        const POINT origin = screenOrigin(found);
        point->x = saturated(point->x + sign * std::int64_t{origin.x});
        point->y = saturated(point->y + sign * std::int64_t{origin.y});
        return TRUE;
    });
}

}  // namespace
}  // namespace kor

BOOL WINAPI GetWindowRect(HWND window, RECT* rectangle) {
    return kor::withWindow(window, FALSE, [rectangle](const kor::Window& found) -> BOOL {
        if (!rectangle) return kor::failWith(ERROR_NOACCESS);
        const POINT origin = kor::screenOrigin(found);
        const RECT& place = found.place;
        *rectangle = kor::rectangleAt(origin.x, origin.y, place.right - place.left, place.bottom - place.top);
        return TRUE;
    });
}

BOOL WINAPI GetClientRect(HWND window, RECT* rectangle) {
    return kor::withWindow(window, FALSE, [rectangle](const kor::Window& found) -> BOOL {
        if (!rectangle) return kor::failWith(ERROR_NOACCESS);
        const RECT& place = found.place;
        *rectangle = {0, 0, place.right - place.left, place.bottom - place.top};
        return TRUE;
    });
}

BOOL WINAPI SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags) {
    return kor::withMemory(FALSE, [&] {
        return kor::setPosition({window, after, x, y, width, height, flags});
    });
}

BOOL WINAPI MoveWindow(HWND window, int x, int y, int width, int height, BOOL redraw) {
    const UINT flags = SWP_NOZORDER | SWP_NOACTIVATE | (redraw ? 0 : SWP_NOREDRAW);
    return SetWindowPos(window, nullptr, x, y, width, height, flags);
}

BOOL WINAPI ClientToScreen(HWND window, POINT* point) { return kor::offset(window, point, 1); }
BOOL WINAPI ScreenToClient(HWND window, POINT* point) { return kor::offset(window, point, -1); }

int WINAPI GetSystemMetrics(int index) {
    constexpr RECT kScreen = kor::screenPlace();
    switch (index) {
        case SM_CXSCREEN:
        case SM_CXFULLSCREEN:
        case SM_CXVIRTUALSCREEN:
            return kScreen.right;
        case SM_CYSCREEN:
        case SM_CYFULLSCREEN:
        case SM_CYVIRTUALSCREEN:
            return kScreen.bottom;
        case SM_CMONITORS:
            return 1;
        case SM_DBCSENABLED: {
            const UINT page = kor::ansiCodePage();
            return page == 932 || page == 936;
        }
        default:
            return 0;
    }
}
