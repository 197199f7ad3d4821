// What a window does of itself.
#include "platform/posix/user/cut_text.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/show_state.h"
#include "platform/posix/user/window_word.h"

namespace kor {
namespace {

LRESULT setText(HWND window, LPCSTR text) {
    return withWindow(window, LRESULT{FALSE}, [text](Window& found) -> LRESULT {
        found.text = text ? text : "";
        return TRUE;
    });
}

LRESULT handlePositionChanged(HWND window, const WINDOWPOS* position) {
    if (!position) return 0;
    const UINT flags = position->flags;
    if (!(flags & SWP_NOMOVE)) tellMove(window);
    if (!(flags & SWP_NOSIZE)) tellSize(window);
    return 0;
}

LRESULT handleActivate(HWND window, WPARAM wParam) {
    if (LOWORD(wParam) != WA_INACTIVE && !IsIconic(window)) SetFocus(window);
    return 0;
}

LRESULT handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NCCREATE: {
            const auto* create = reinterpret_cast<const CREATESTRUCTA*>(lParam);
            return setText(window, create ? create->lpszName : nullptr);
        }
        case WM_SETTEXT:
            return setText(window, reinterpret_cast<LPCSTR>(lParam));
        case WM_GETTEXT:
            return withWindow(window, LRESULT{0}, [=](const Window& found) -> LRESULT {
                return copyCut(found.text, reinterpret_cast<LPSTR>(lParam), wParam);
            });
        case WM_GETTEXTLENGTH:
            return withWindow(window, LRESULT{0},
                              [](const Window& found) { return static_cast<LRESULT>(found.text.size()); });
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_WINDOWPOSCHANGED:
            return handlePositionChanged(window, reinterpret_cast<const WINDOWPOS*>(lParam));
        case WM_ACTIVATE:
            return handleActivate(window, wParam);
        case WM_SETREDRAW:
            changeStyle(window, wParam ? WS_VISIBLE : 0, wParam ? 0 : WS_VISIBLE);
            return 0;
        case WM_QUERYOPEN:
        case WM_QUERYENDSESSION:
        case WM_NCACTIVATE:
            return TRUE;
        default:
            return 0;
    }
}

}  // namespace
}  // namespace kor

LRESULT WINAPI DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!IsWindow(window)) return 0;
    return kor::withMemory(LRESULT{0}, [&] { return kor::handle(window, message, wParam, lParam); });
}
