// A window's text and its class's name, which callers ask for.
#include "korutil/platform/window_message.h"
#include "platform/posix/user/cut_text.h"
#include "platform/posix/user/message_queue.h"

namespace {

// Sends a message to a window that there is. @return `failure` with last error 1400 when there is none
LRESULT sent(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return kor::withMemory(LRESULT{0}, [&]() -> LRESULT {
        {
            const kor::UserLock lock = kor::lockUser();
            if (!kor::findWindow(window)) {
                SetLastError(ERROR_INVALID_WINDOW_HANDLE);
                return 0;
            }
        }
        return kor::deliver(window, message, wParam, lParam);
    });
}

}  // namespace

LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return sent(window, message, wParam, lParam);
}

int WINAPI GetWindowTextA(HWND window, LPSTR buffer, int size) {
    if (!buffer || size <= 0) return 0;
    buffer[0] = '\0';
    return static_cast<int>(
        sent(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(buffer)));
}

int WINAPI GetWindowTextLengthA(HWND window) {
    return static_cast<int>(sent(window, WM_GETTEXTLENGTH, 0, 0));
}

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text) {
    return sent(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) != 0;
}

int WINAPI GetClassNameA(HWND window, LPSTR buffer, int size) {
    return kor::withWindow(window, 0, [=](const kor::Window& found) {
        return kor::copyCut(found.windowClass->name, buffer, size > 0 ? static_cast<std::size_t>(size) : 0);
    });
}
