// Windows come into being.
#include <algorithm>
#include <utility>

#include "korutil/platform/module.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/time.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/screen.h"
#include "platform/posix/user/show_state.h"
#include "platform/posix/user/window_removal.h"
#include "platform/posix/user/window_tree.h"

namespace kor {
namespace {

// A window that vanishes again unless its creation comes to its end.
class Unfinished {
  public:
    explicit Unfinished(HWND window) : window_(window) {}
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
    ~Unfinished() {
        const UserLock lock = lockUser();
        if (Window* window = findWindow(window_)) removeWindow(*window);
    }
    HWND finished() { return std::exchange(window_, nullptr); }

  private:
    HWND window_;
};

bool isChildStyle(LONG style) { return (static_cast<DWORD>(style) & (WS_CHILD | WS_POPUP)) == WS_CHILD; }

// The style and place that the system makes of what was asked for.
void settle(CREATESTRUCTA& create) {
    DWORD style = static_cast<DWORD>(create.style);
    const bool isChild = isChildStyle(create.style), isOverlapped = !(style & (WS_CHILD | WS_POPUP));
    if (!isChild) style |= WS_CLIPSIBLINGS;
    if (isOverlapped) style |= WS_CAPTION;
    if (style & (WS_DLGFRAME | WS_THICKFRAME)) create.dwExStyle |= WS_EX_WINDOWEDGE;
    create.style = static_cast<LONG>(style);
    const RECT screen = screenPlace();
    if (create.x == CW_USEDEFAULT) create.x = create.y = 0;
    if (create.cx == CW_USEDEFAULT) {
        create.cx = isOverlapped ? screen.right / 4 * 3 : 0;
        create.cy = isOverlapped ? screen.bottom / 4 * 3 : 0;
    }
    create.cx = std::max(create.cx, 0);
    create.cy = std::max(create.cy, 0);
}

// Puts the window where it belongs. @return false with the last error set
bool place(Window& window, const CREATESTRUCTA& create) {
    Window* given = create.hwndParent ? findWindow(create.hwndParent) : nullptr;
    if (create.hwndParent && (!given || given->isDying)) return failWith(ERROR_INVALID_WINDOW_HANDLE);
    if (isChildStyle(create.style)) {
        if (!given) return failWith(ERROR_TLW_WITH_WSCHILD);
        if (!canBeWithin(window, *given)) return failWith(ERROR_INVALID_PARAMETER);
        linkWindow(window, *given, given->last);
        return true;
    }
    if (given && !isDesktop(*given)) {
        window.owner = &rootOf(*given);
        if (!canBeOwnedBy(window, *window.owner)) return failWith(ERROR_INVALID_PARAMETER);
    }
    linkWindow(window, desktopWindow(), lastAboveTop(window, desktopWindow()));
    return true;
}

constexpr DWORD kShownLater = WS_VISIBLE | WS_MINIMIZE | WS_MAXIMIZE;

// @return null with the last error set
HWND addFor(const CREATESTRUCTA& create) {
    auto windowClass = classForWindow(create.hInstance, create.lpszClass);
    if (!windowClass) return failWith(ERROR_CANNOT_FIND_WND_CLASS), nullptr;
    auto queue = MessageQueue::current();
    std::vector<std::byte> extra(static_cast<std::size_t>(windowClass->record.cbWndExtra));
    const UserLock lock = lockUser();
    desktopWindow();
    Window* window = addWindow();
    if (!window) return failWith(ERROR_NO_MORE_USER_HANDLES), nullptr;
    window->extra = std::move(extra);
    window->queue = std::move(queue);
    window->thread = GetCurrentThreadId();
    window->procedure = windowClass->record.lpfnWndProc;
    window->windowClass = std::move(windowClass);
    window->module = create.hInstance;
    window->style = static_cast<DWORD>(create.style) & ~kShownLater;
    window->exStyle = create.dwExStyle;
    window->id = isChildStyle(create.style) ? reinterpret_cast<LONG_PTR>(create.hMenu) : 0;
    window->place = rectangleAt(create.x, create.y, create.cx, create.cy);
    window->isPlaceUntold = !(static_cast<DWORD>(create.style) & (WS_CHILD | WS_POPUP));
    if (place(*window, create)) return window->handle;
    removeWindow(*window);
    return nullptr;
}

bool isThere(HWND window) {
    const UserLock lock = lockUser();
    return findWindow(window) != nullptr;
}

// @return whether the window's procedure lets it be
bool tellCreation(HWND window, const CREATESTRUCTA& create) {
    if (!deliver(window, WM_NCCREATE, 0, &create)) {
        deliver(window, WM_NCDESTROY, 0, LPARAM{0});
        return false;
    }
    if (deliver(window, WM_CREATE, 0, &create) == -1) {
        DestroyWindow(window);
        return false;
    }
    return isThere(window);
}

void tellParent(HWND window, const CREATESTRUCTA& create) {
    if (!isChildStyle(create.style) || (create.dwExStyle & WS_EX_NOPARENTNOTIFY)) return;
    const auto id = reinterpret_cast<ULONG_PTR>(create.hMenu);
    deliver(create.hwndParent, WM_PARENTNOTIFY, MAKEWPARAM(WM_CREATE, id), window);
}

void showFirst(HWND window, DWORD style) {
    if (style & WS_MAXIMIZE) {
        setShowState(window, ShowState::maximized);
    } else if (style & WS_MINIMIZE) {
        setShowState(window, ShowState::minimized);
    }
    if (style & WS_VISIBLE) ShowWindow(window, SW_SHOW);
}

HWND create(CREATESTRUCTA wanted) {
    if (!wanted.hInstance) wanted.hInstance = GetModuleHandleA(nullptr);
    settle(wanted);
    const HWND handle = addFor(wanted);
    if (!handle) return nullptr;
    Unfinished unfinished(handle);
    if (!tellCreation(handle, wanted)) return nullptr;
    tellPlaceUnlessLater(handle);
    tellParent(handle, wanted);
    showFirst(handle, static_cast<DWORD>(wanted.style));
    unfinished.finished();
    return isThere(handle) ? handle : nullptr;
}

}  // namespace
}  // namespace kor

HWND WINAPI CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR text, DWORD style, int x, int y,
                            int width, int height, HWND parent, HMENU menu, HINSTANCE module,
                            LPVOID parameter) {
    return kor::withMemory(nullptr, [&]() -> HWND {
        return kor::create({parameter, module, menu, parent, height, width, y, x, static_cast<LONG>(style),
                            text, className, exStyle});
    });
}
