#pragma once
/// Message boxes, with the system's names, results and error codes.
///
/// On Windows they are the system's own. Elsewhere there is no screen: a message box writes its text to
/// standard error in UTF-8. A box with one button, or one that nobody can be asked about because standard
/// input or standard error is not a terminal, answers with its default button; a question on a terminal is
/// asked there.

#include "korutil/platform.h"

#ifndef _WIN32

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
