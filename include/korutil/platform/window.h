#pragma once
/// Window classes and windows, with the system's names, results, messages and error codes.
///
/// On Windows all of it is the system's own. Elsewhere there is no screen, and windows are what a program
/// keeps in them: a text, a place, states, bytes of their own and a window procedure. They are created,
/// moved, shown, focused and destroyed as on a screen and receive the same messages, except those that draw,
/// that ask a window for its measures, and that a mouse or a keyboard sends. What differs:
/// - A window has no frame: its client area is the whole window. WM_NCCALCSIZE and WM_GETMINMAXINFO are not
///   sent.
/// - The screen has one monitor of 1024 by 768 points without a bar. A window placed by the system
///   (CW_USEDEFAULT) has its upper left three quarters.
/// - There are at most 10,000 windows, 100 within each other.
/// - There are no menus, hooks, properties, regions, and no wide-character forms.
///
/// A window belongs to the thread that created it, and only that thread can destroy it. When the thread ends
/// its windows go without a message. A function that fails on a handle which is no window's sets last error
/// 1400. A handle is used again only after the 32,767 windows that follow it in the same place.

#include "korutil/platform.h"

#ifndef _WIN32

// ------------------------------------------------------------------------------------------ window classes

inline constexpr UINT CS_VREDRAW = 0x0001;
inline constexpr UINT CS_HREDRAW = 0x0002;
inline constexpr UINT CS_DBLCLKS = 0x0008;
inline constexpr UINT CS_PARENTDC = 0x0080;
inline constexpr UINT CS_GLOBALCLASS = 0x4000;

/// A window class. With a NUMBER below 0x10000 instead of a text, lpszMenuName is a resource and
/// lpszClassName an atom that RegisterClassA returned.
struct WNDCLASSA {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
};

/// A module may register a class of the name of one of the system's ("Button", "Edit", "Static"), which then
/// stands before it for that module.
/// @return the class's atom (0xC000 or above); 0 with last error 1410 when the module, or a global class, has
///         the name already, 87 when the record has no name or a negative size
KORPLATFORM_API ATOM WINAPI RegisterClassA(const WNDCLASSA* windowClass);
/// @return FALSE with last error 1411 when the module has no such class, 1412 while a window of it exists
KORPLATFORM_API BOOL WINAPI UnregisterClassA(LPCSTR name, HINSTANCE module);
/// Looks a class up by its module, null for global classes only. The record gets the given name and module;
/// the menu's name is valid while the class is registered.
/// @return the class's atom as a truth value; FALSE with last error 1411
KORPLATFORM_API BOOL WINAPI GetClassInfoA(HINSTANCE module, LPCSTR name, WNDCLASSA* windowClass);
/// @param size  bytes of the buffer; a longer name is cut at a whole character
/// @return the length copied, without the terminator
KORPLATFORM_API int WINAPI GetClassNameA(HWND window, LPSTR buffer, int size);

// --------------------------------------------------------------------------------- creation and destruction

inline constexpr DWORD WS_OVERLAPPED = 0x00000000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_MAXIMIZEBOX = 0x00010000;
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_MINIMIZEBOX = 0x00020000;
inline constexpr DWORD WS_THICKFRAME = 0x00040000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_HSCROLL = 0x00100000;
inline constexpr DWORD WS_VSCROLL = 0x00200000;
inline constexpr DWORD WS_DLGFRAME = 0x00400000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_CAPTION = WS_BORDER | WS_DLGFRAME;
inline constexpr DWORD WS_MAXIMIZE = 0x01000000;
inline constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
inline constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_MINIMIZE = 0x20000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW =
    WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
inline constexpr DWORD WS_POPUPWINDOW = WS_POPUP | WS_BORDER | WS_SYSMENU;

inline constexpr DWORD WS_EX_DLGMODALFRAME = 0x0001;
inline constexpr DWORD WS_EX_NOPARENTNOTIFY = 0x0004;
inline constexpr DWORD WS_EX_TOPMOST = 0x0008;
inline constexpr DWORD WS_EX_TOOLWINDOW = 0x0080;
inline constexpr DWORD WS_EX_WINDOWEDGE = 0x0100;
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x0200;
inline constexpr DWORD WS_EX_CONTROLPARENT = 0x10000;

inline constexpr int CW_USEDEFAULT = -0x7FFF'FFFF - 1;

/// What WM_NCCREATE and WM_CREATE point to: the arguments of CreateWindowExA.
struct CREATESTRUCTA {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
};

/// Creates a window: WM_NCCREATE (a result of 0 gives up), WM_CREATE (-1 gives up), WM_SIZE, WM_MOVE,
/// WM_PARENTNOTIFY to the parent of a child without WS_EX_NOPARENTNOTIFY; then shows one with WS_VISIBLE. A
/// window that is neither a child nor a popup gets a caption, and all but children WS_CLIPSIBLINGS.
/// @param x       and `y`: the place in the parent's client area for a child, else on the screen
/// @param width   and `height`: below 0 counts as 0
/// @param parent  a child's parent, else the owner (a child given as owner stands for its top-level window);
///                the window dies with either
/// @param menu    a child's number (GetDlgCtrlID)
/// @return the window; null with last error 1406 for a child without a parent, 1407 for an unknown class,
/// 1158
///         when there are too many windows, 8 when memory is short, and as the procedure left it when that
///         gave up
KORPLATFORM_API HWND WINAPI CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR text, DWORD style, int x,
                                            int y, int width, int height, HWND parent, HMENU menu,
                                            HINSTANCE module, LPVOID parameter);
#define CreateWindowA(className, text, style, x, y, width, height, parent, menu, module, parameter) \
    CreateWindowExA(0, className, text, style, x, y, width, height, parent, menu, module, parameter)

/// Hides and destroys a window: first those it owns; then WM_DESTROY to it and to all below it, from the top
/// down; then WM_NCDESTROY, the children's first.
/// @return FALSE with last error 5 for another thread's window and for the desktop's
KORPLATFORM_API BOOL WINAPI DestroyWindow(HWND window);
/// @return whether the handle is a window's; the last error is 1400 when it is not
KORPLATFORM_API BOOL WINAPI IsWindow(HWND window);

// ---------------------------------------------------------------------------------------------- window words

inline constexpr int GWL_WNDPROC = -4;
inline constexpr int GWL_HINSTANCE = -6;
inline constexpr int GWL_HWNDPARENT = -8;
inline constexpr int GWL_ID = -12;
inline constexpr int GWL_STYLE = -16;
inline constexpr int GWL_EXSTYLE = -20;
inline constexpr int GWL_USERDATA = -21;
inline constexpr int GWLP_WNDPROC = GWL_WNDPROC;
inline constexpr int GWLP_HINSTANCE = GWL_HINSTANCE;
inline constexpr int GWLP_HWNDPARENT = GWL_HWNDPARENT;
inline constexpr int GWLP_ID = GWL_ID;
inline constexpr int GWLP_USERDATA = GWL_USERDATA;

struct STYLESTRUCT {
    DWORD styleOld;
    DWORD styleNew;
};

/// A word of a window: GWL_..., GWLP_..., or an offset into the bytes that its class gave it. The forms
/// without Ptr take 32 bits; natively GWL_WNDPROC, GWL_HINSTANCE and GWL_HWNDPARENT are too wide for them.
/// @return the word, or the former one; 0 with last error 1413 for a word that there is not, or that does not
///         lie within the bytes whole
KORPLATFORM_API LONG WINAPI GetWindowLongA(HWND window, int index);
KORPLATFORM_API LONG WINAPI SetWindowLongA(HWND window, int index, LONG value);
KORPLATFORM_API LONG_PTR WINAPI GetWindowLongPtrA(HWND window, int index);
/// A new style comes with WM_STYLECHANGING, which may change it, and WM_STYLECHANGED. GWLP_HWNDPARENT gives a
/// child a new parent and any other window a new owner.
KORPLATFORM_API LONG_PTR WINAPI SetWindowLongPtrA(HWND window, int index, LONG_PTR value);

// --------------------------------------------------------------------------------------------------- text

/// Sends WM_GETTEXT. @param size  bytes of the buffer, terminator included; the text is cut at a whole
/// character. @return the length copied
KORPLATFORM_API int WINAPI GetWindowTextA(HWND window, LPSTR buffer, int size);
/// Sends WM_GETTEXTLENGTH. @return the length in bytes
KORPLATFORM_API int WINAPI GetWindowTextLengthA(HWND window);
/// Sends WM_SETTEXT; null is the empty text.
KORPLATFORM_API BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text);

// --------------------------------------------------------------------------------------------------- place

#define HWND_TOP (static_cast<HWND>(nullptr))
#define HWND_BOTTOM (reinterpret_cast<HWND>(static_cast<INT_PTR>(1)))
#define HWND_TOPMOST (reinterpret_cast<HWND>(static_cast<INT_PTR>(-1)))
#define HWND_NOTOPMOST (reinterpret_cast<HWND>(static_cast<INT_PTR>(-2)))

inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_NOREDRAW = 0x0008;
inline constexpr UINT SWP_NOACTIVATE = 0x0010;
inline constexpr UINT SWP_FRAMECHANGED = 0x0020;
inline constexpr UINT SWP_SHOWWINDOW = 0x0040;
inline constexpr UINT SWP_HIDEWINDOW = 0x0080;
inline constexpr UINT SWP_NOCOPYBITS = 0x0100;
inline constexpr UINT SWP_NOOWNERZORDER = 0x0200;
inline constexpr UINT SWP_NOSENDCHANGING = 0x0400;

/// What WM_WINDOWPOSCHANGING and WM_WINDOWPOSCHANGED point to.
struct WINDOWPOS {
    HWND hwnd;
    HWND hwndInsertAfter;
    int x;
    int y;
    int cx;
    int cy;
    UINT flags;
};

/// The window's place on the screen.
KORPLATFORM_API BOOL WINAPI GetWindowRect(HWND window, RECT* rectangle);
/// The client area, whose upper left corner is 0, 0.
KORPLATFORM_API BOOL WINAPI GetClientRect(HWND window, RECT* rectangle);
/// Moves and sizes a window, in the parent's client area for a child: SetWindowPos without a new order.
KORPLATFORM_API BOOL WINAPI MoveWindow(HWND window, int x, int y, int width, int height, BOOL redraw);
/// Moves, sizes, orders, shows and hides a window: WM_WINDOWPOSCHANGING, which may change what is to happen,
/// then WM_WINDOWPOSCHANGED when anything did, of which DefWindowProcA makes WM_MOVE and WM_SIZE.
/// @param after  HWND_..., or the sibling below which it comes; a window that is no sibling changes nothing
KORPLATFORM_API BOOL WINAPI SetWindowPos(HWND window, HWND after, int x, int y, int width, int height,
                                         UINT flags);
KORPLATFORM_API BOOL WINAPI ClientToScreen(HWND window, POINT* point);
KORPLATFORM_API BOOL WINAPI ScreenToClient(HWND window, POINT* point);

inline constexpr int SM_CXSCREEN = 0;
inline constexpr int SM_CYSCREEN = 1;
inline constexpr int SM_CXFULLSCREEN = 16;
inline constexpr int SM_CYFULLSCREEN = 17;
inline constexpr int SM_DBCSENABLED = 42;
inline constexpr int SM_CXVIRTUALSCREEN = 78;
inline constexpr int SM_CYVIRTUALSCREEN = 79;
inline constexpr int SM_CMONITORS = 80;

/// @return the screen's measures; whether the ANSI code page has double-byte characters; 0 for anything else
KORPLATFORM_API int WINAPI GetSystemMetrics(int index);

// --------------------------------------------------------------------------------------------------- state

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_NORMAL = 1;
inline constexpr int SW_SHOWMINIMIZED = 2;
inline constexpr int SW_SHOWMAXIMIZED = 3;
inline constexpr int SW_MAXIMIZE = 3;
inline constexpr int SW_SHOWNOACTIVATE = 4;
inline constexpr int SW_SHOW = 5;
inline constexpr int SW_MINIMIZE = 6;
inline constexpr int SW_SHOWMINNOACTIVE = 7;
inline constexpr int SW_SHOWNA = 8;
inline constexpr int SW_RESTORE = 9;
inline constexpr int SW_SHOWDEFAULT = 10;

/// Shows or hides a window (WM_SHOWWINDOW), minimises it (it then lies at -32000, -32000), maximises it to
/// the screen or its parent's client area, or restores its place.
/// @return whether it was visible before
KORPLATFORM_API BOOL WINAPI ShowWindow(HWND window, int command);
/// @return whether the window and all its parents are shown
KORPLATFORM_API BOOL WINAPI IsWindowVisible(HWND window);
/// WM_ENABLE follows a change. A disabled window cannot have the focus. @return whether it was disabled
/// before
KORPLATFORM_API BOOL WINAPI EnableWindow(HWND window, BOOL enable);
KORPLATFORM_API BOOL WINAPI IsWindowEnabled(HWND window);
KORPLATFORM_API BOOL WINAPI IsIconic(HWND window);
KORPLATFORM_API BOOL WINAPI IsZoomed(HWND window);

/// The calling thread's active top-level window, null when there is none.
/// @return for the setter the former one; null for a disabled and another thread's window, with which nothing
///         happens, and nothing happens with a child
KORPLATFORM_API HWND WINAPI GetActiveWindow();
KORPLATFORM_API HWND WINAPI SetActiveWindow(HWND window);
/// The active window of the thread that activated one last.
KORPLATFORM_API HWND WINAPI GetForegroundWindow();
/// Activates the window's top-level window before. @return as for the active window
KORPLATFORM_API HWND WINAPI SetFocus(HWND window);
KORPLATFORM_API HWND WINAPI GetFocus();

// ---------------------------------------------------------------------------------------------------- tree

inline constexpr UINT GW_HWNDFIRST = 0;
inline constexpr UINT GW_HWNDLAST = 1;
inline constexpr UINT GW_HWNDNEXT = 2;
inline constexpr UINT GW_HWNDPREV = 3;
inline constexpr UINT GW_OWNER = 4;
inline constexpr UINT GW_CHILD = 5;
inline constexpr UINT GA_PARENT = 1;
inline constexpr UINT GA_ROOT = 2;

/// The window of the whole screen, the parent of all top-level windows. It belongs to no thread.
KORPLATFORM_API HWND WINAPI GetDesktopWindow();
/// @return a child's parent, a popup's owner, else null
KORPLATFORM_API HWND WINAPI GetParent(HWND window);
/// Gives a window another parent, null for the desktop; its place within it stays.
/// @return the former parent; null with last error 87 when the parent is the window or lies below it
KORPLATFORM_API HWND WINAPI SetParent(HWND window, HWND parent);
/// The neighbours in the order of the screen, from the top down. New children come last, other new windows
/// first.
/// @return null when there is none, and with last error 1443 for an unknown relation
KORPLATFORM_API HWND WINAPI GetWindow(HWND window, UINT relation);
KORPLATFORM_API HWND WINAPI GetAncestor(HWND window, UINT relation);
/// @return whether the second window lies below the first one
KORPLATFORM_API BOOL WINAPI IsChild(HWND parent, HWND window);
/// @return the last active window among a top-level window and those it owns: natively the window itself,
///         unless the active window is one that it owns
KORPLATFORM_API HWND WINAPI GetLastActivePopup(HWND window);
/// @param process  receives the process's number, or is null. @return the number of the window's thread
KORPLATFORM_API DWORD WINAPI GetWindowThreadProcessId(HWND window, DWORD* process);

#endif
