#pragma once
/// Window classes, cursors, stock objects and message boxes, with the system's names, results and error
/// codes.
///
/// On Windows all of it is the system's own. Elsewhere there is no screen: classes and cursors are kept so
/// that they can be registered and looked up, there are no windows yet, and a message box writes its text to
/// standard error in UTF-8. A box with one button, or one that nobody can be asked about because standard
/// input or standard error is not a terminal, answers with its default button; a question on a terminal is
/// asked there.

#include "korutil/platform.h"

#ifndef _WIN32

// ------------------------------------------------------------------------------------------ window classes

inline constexpr UINT CS_VREDRAW = 0x0001;
inline constexpr UINT CS_HREDRAW = 0x0002;
inline constexpr UINT CS_DBLCLKS = 0x0008;
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

/// @return the class's atom (0xC000 or above); 0 with last error 1410 when the module, or a global class, has
///         the name already, 87 when the record has no name or a negative size
KORPLATFORM_API ATOM WINAPI RegisterClassA(const WNDCLASSA* windowClass);
/// @return FALSE with last error 1411 when the module has no such class
KORPLATFORM_API BOOL WINAPI UnregisterClassA(LPCSTR name, HINSTANCE module);
/// Looks a class up by its module, null for global classes only. The record gets the given name and module;
/// the menu's name is valid while the class is registered.
/// @return the class's atom as a truth value; FALSE with last error 1411
KORPLATFORM_API BOOL WINAPI GetClassInfoA(HINSTANCE module, LPCSTR name, WNDCLASSA* windowClass);
/// The procedure that handles what a window does not. @return 0
KORPLATFORM_API LRESULT WINAPI DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// @return TRUE for a live window: none exists natively. The last error is then 1400
KORPLATFORM_API BOOL WINAPI IsWindow(HWND window);
/// @return null: there are no windows natively
KORPLATFORM_API HWND WINAPI GetDesktopWindow();
KORPLATFORM_API HWND WINAPI GetActiveWindow();
KORPLATFORM_API HWND WINAPI GetForegroundWindow();
KORPLATFORM_API HWND WINAPI GetLastActivePopup(HWND window);

// ----------------------------------------------------------------------------------------- drawing objects

#define IDC_ARROW MAKEINTRESOURCEA(32512)
#define IDC_IBEAM MAKEINTRESOURCEA(32513)
#define IDC_WAIT MAKEINTRESOURCEA(32514)
#define IDC_CROSS MAKEINTRESOURCEA(32515)
#define IDC_UPARROW MAKEINTRESOURCEA(32516)
#define IDC_SIZENWSE MAKEINTRESOURCEA(32642)
#define IDC_SIZENESW MAKEINTRESOURCEA(32643)
#define IDC_SIZEWE MAKEINTRESOURCEA(32644)
#define IDC_SIZENS MAKEINTRESOURCEA(32645)
#define IDC_SIZEALL MAKEINTRESOURCEA(32646)
#define IDC_NO MAKEINTRESOURCEA(32648)
#define IDC_APPSTARTING MAKEINTRESOURCEA(32650)

inline constexpr int WHITE_BRUSH = 0;
inline constexpr int LTGRAY_BRUSH = 1;
inline constexpr int GRAY_BRUSH = 2;
inline constexpr int DKGRAY_BRUSH = 3;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int OEM_FIXED_FONT = 10;
inline constexpr int ANSI_FIXED_FONT = 11;
inline constexpr int ANSI_VAR_FONT = 12;
inline constexpr int SYSTEM_FONT = 13;
inline constexpr int DEVICE_DEFAULT_FONT = 14;
inline constexpr int DEFAULT_PALETTE = 15;
inline constexpr int SYSTEM_FIXED_FONT = 16;
inline constexpr int DEFAULT_GUI_FONT = 17;
inline constexpr int DC_BRUSH = 18;
inline constexpr int DC_PEN = 19;

/// @param module  null for the system's cursors (IDC_...)
/// @return the cursor, shared and never freed; null with last error 1813, 1814 or 1812 when there is none
KORPLATFORM_API HCURSOR WINAPI LoadCursorA(HINSTANCE module, LPCSTR name);
/// @return one of the system's shared objects, null for an index that has none
KORPLATFORM_API HGDIOBJ WINAPI GetStockObject(int index);
/// Deletes a drawing object. @return TRUE for a stock object, which is left alone; else FALSE
KORPLATFORM_API BOOL WINAPI DeleteObject(HGDIOBJ object);

// ------------------------------------------------------------------------------------------- message boxes

inline constexpr UINT MB_OK = 0x0;
inline constexpr UINT MB_OKCANCEL = 0x1;
inline constexpr UINT MB_ABORTRETRYIGNORE = 0x2;
inline constexpr UINT MB_YESNOCANCEL = 0x3;
inline constexpr UINT MB_YESNO = 0x4;
inline constexpr UINT MB_RETRYCANCEL = 0x5;
inline constexpr UINT MB_CANCELTRYCONTINUE = 0x6;
inline constexpr UINT MB_TYPEMASK = 0xF;
inline constexpr UINT MB_ICONSTOP = 0x10;
inline constexpr UINT MB_ICONHAND = 0x10;
inline constexpr UINT MB_ICONERROR = 0x10;
inline constexpr UINT MB_ICONQUESTION = 0x20;
inline constexpr UINT MB_ICONEXCLAMATION = 0x30;
inline constexpr UINT MB_ICONWARNING = 0x30;
inline constexpr UINT MB_ICONINFORMATION = 0x40;
inline constexpr UINT MB_ICONASTERISK = 0x40;
inline constexpr UINT MB_USERICON = 0x80;
inline constexpr UINT MB_ICONMASK = 0xF0;
inline constexpr UINT MB_DEFBUTTON1 = 0x000;
inline constexpr UINT MB_DEFBUTTON2 = 0x100;
inline constexpr UINT MB_DEFBUTTON3 = 0x200;
inline constexpr UINT MB_DEFBUTTON4 = 0x300;
inline constexpr UINT MB_DEFMASK = 0xF00;
inline constexpr UINT MB_APPLMODAL = 0x0000;
inline constexpr UINT MB_SYSTEMMODAL = 0x1000;
inline constexpr UINT MB_TASKMODAL = 0x2000;
inline constexpr UINT MB_HELP = 0x4000;
inline constexpr UINT MB_SETFOREGROUND = 0x10000;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;
inline constexpr int IDTRYAGAIN = 10;
inline constexpr int IDCONTINUE = 11;

struct HELPINFO;
using MSGBOXCALLBACK = void(CALLBACK*)(HELPINFO*);

/// What MessageBoxIndirectA shows; lpszText and lpszCaption are texts or string numbers of hInstance.
struct MSGBOXPARAMSA {
    UINT cbSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCSTR lpszText;
    LPCSTR lpszCaption;
    DWORD dwStyle;
    LPCSTR lpszIcon;
    DWORD_PTR dwContextHelpId;
    MSGBOXCALLBACK lpfnMsgBoxCallback;
    DWORD dwLanguageId;
};

/// @param caption  null for "Error"
/// @return the button pressed (ID...); 0 with ERROR_INVALID_MSGBOX_STYLE for a set of buttons that does not
/// exist
KORPLATFORM_API int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style);
KORPLATFORM_API int WINAPI MessageBoxIndirectA(const MSGBOXPARAMSA* parameters);
/// Rings the terminal's bell when standard error is a terminal. @return TRUE
KORPLATFORM_API BOOL WINAPI MessageBeep(UINT type);

#endif
