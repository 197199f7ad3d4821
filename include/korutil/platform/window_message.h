#pragma once
/// Messages: sent to a window, or posted to a thread's queue, and the timers that fill it. The names,
/// numbers, results and error codes are the system's; on Windows all of it is the system's own.
///
/// A message that is sent to a window of the same thread is a call of its procedure. One sent to another
/// thread's window waits until that thread looks into its queue (GetMessageA, PeekMessageA) or sends a
/// message itself and waits for an answer; the sender meanwhile answers what others send to it. When the
/// other thread ends first, the result is 0 with last error 1400. A message to the desktop's window is
/// handled where it is sent. There is no keyboard, and nothing is posted by the platform itself but WM_QUIT
/// and WM_TIMER.

#include "korutil/platform.h"
#include "korutil/platform/window.h"

#ifndef _WIN32

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_ACTIVATE = 0x0006;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_ENABLE = 0x000A;
inline constexpr UINT WM_SETREDRAW = 0x000B;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_GETTEXT = 0x000D;
inline constexpr UINT WM_GETTEXTLENGTH = 0x000E;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUERYENDSESSION = 0x0011;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_QUERYOPEN = 0x0013;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;
inline constexpr UINT WM_CANCELMODE = 0x001F;
inline constexpr UINT WM_WINDOWPOSCHANGING = 0x0046;
inline constexpr UINT WM_WINDOWPOSCHANGED = 0x0047;
inline constexpr UINT WM_NOTIFY = 0x004E;
inline constexpr UINT WM_STYLECHANGING = 0x007C;
inline constexpr UINT WM_STYLECHANGED = 0x007D;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_NCACTIVATE = 0x0086;
inline constexpr UINT WM_GETDLGCODE = 0x0087;
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_CHAR = 0x0102;
inline constexpr UINT WM_SYSKEYDOWN = 0x0104;
inline constexpr UINT WM_SYSKEYUP = 0x0105;
inline constexpr UINT WM_INITDIALOG = 0x0110;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_PARENTNOTIFY = 0x0210;
inline constexpr UINT WM_CLEAR = 0x0303;
inline constexpr UINT WM_USER = 0x0400;

inline constexpr WPARAM SIZE_RESTORED = 0;
inline constexpr WPARAM SIZE_MINIMIZED = 1;
inline constexpr WPARAM SIZE_MAXIMIZED = 2;
inline constexpr WPARAM WA_INACTIVE = 0;
inline constexpr WPARAM WA_ACTIVE = 1;

constexpr LONG MAKELONG(ULONG_PTR low, ULONG_PTR high) {
    return static_cast<LONG>(static_cast<DWORD>(low & 0xFFFF) | static_cast<DWORD>(high & 0xFFFF) << 16);
}
constexpr WPARAM MAKEWPARAM(ULONG_PTR low, ULONG_PTR high) { return static_cast<DWORD>(MAKELONG(low, high)); }
constexpr LPARAM MAKELPARAM(ULONG_PTR low, ULONG_PTR high) { return static_cast<DWORD>(MAKELONG(low, high)); }

/// A message of a queue; `time` is GetTickCount's when it was posted, `pt` is 0, 0.
struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

/// Has the window's procedure handle a message. @return its result; 0 with last error 1400 for no window
KORPLATFORM_API LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Calls a window procedure, on the calling thread. @return its result; 0 for null
KORPLATFORM_API LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                                               LPARAM lParam);
/// The procedure that handles what a window does not: its text (WM_NCCREATE, WM_SETTEXT, WM_GETTEXT,
/// WM_GETTEXTLENGTH), WM_CLOSE (DestroyWindow), WM_WINDOWPOSCHANGED (WM_MOVE, WM_SIZE), WM_ACTIVATE
/// (SetFocus), WM_SETREDRAW (WS_VISIBLE).
/// @return the system's result for those, 1 for WM_QUERYOPEN, WM_QUERYENDSESSION and WM_NCACTIVATE, else 0
KORPLATFORM_API LRESULT WINAPI DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Adds a message to the queue of the window's thread, of the calling thread for a null window.
/// @return FALSE with last error 1816 when the queue holds 10,000 messages already
KORPLATFORM_API BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Has the calling thread's queue give WM_QUIT with this wParam once nothing posted is left that is looked
/// for.
KORPLATFORM_API void WINAPI PostQuitMessage(int exitCode);

inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;

/// Handles what was sent to the calling thread's windows and gives the first message of its queue: posted
/// ones, then WM_QUIT, then WM_TIMER.
/// @param window  only messages for this window and those below it; null for all, -1 for those of the thread
///                itself. WM_QUIT comes in any case
/// @param first   only numbers from `first` to `last`, both 0 for all
/// @return whether there was one; FALSE with last error 1400 for a handle that is no window's
KORPLATFORM_API BOOL WINAPI PeekMessageA(MSG* message, HWND window, UINT first, UINT last, UINT flags);
/// The same, waiting until there is a message. @return 0 for WM_QUIT; -1 with last error 1400; else 1
KORPLATFORM_API BOOL WINAPI GetMessageA(MSG* message, HWND window, UINT first, UINT last);
/// @return whether the message is a key's. No character comes of it: there is no keyboard layout
KORPLATFORM_API BOOL WINAPI TranslateMessage(const MSG* message);
/// Sends the message to its window, or calls the procedure of the timer that it is from. @return the result
KORPLATFORM_API LRESULT WINAPI DispatchMessageA(const MSG* message);

using TIMERPROC = void(CALLBACK*)(HWND window, UINT message, UINT_PTR id, DWORD time);

/// Starts a timer, or restarts the one of that window and number, whose WM_TIMER comes every `period`
/// milliseconds (10 at least) when the queue is otherwise empty; several due at once are one message. It ends
/// with its window or thread.
/// @param window  of the calling thread; null for a timer of the thread, which gets a number of its own
/// unless
///                `id` is one that was got so
/// @param procedure  what DispatchMessageA calls in place of the window's procedure, or null
/// @return the number, 1 when a window's is 0; 0 with last error 1400, or 5 for another thread's window
KORPLATFORM_API UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure);
/// @return FALSE with last error 87 when there is no such timer
KORPLATFORM_API BOOL WINAPI KillTimer(HWND window, UINT_PTR id);

#endif
