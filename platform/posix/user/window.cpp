#include "korutil/platform/window.h"

#include "korutil/platform/last_error.h"

BOOL WINAPI IsWindow(HWND) {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return FALSE;
}

HWND WINAPI GetDesktopWindow() { return nullptr; }
HWND WINAPI GetActiveWindow() { return nullptr; }
HWND WINAPI GetForegroundWindow() { return nullptr; }
HWND WINAPI GetLastActivePopup(HWND window) { return window; }
