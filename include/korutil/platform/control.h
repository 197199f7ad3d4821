#pragma once
/// Controls, the windows of the classes "Edit", "Static" and "Button", and the windows of a dialog by their
/// numbers. The names, results and notifications are the system's; on Windows all of it is the system's own.
///
/// Elsewhere a control is what it holds; nothing is drawn and there is no undo and no clipboard. The lines of
/// a multi-line edit control end only where the text has CR LF or CR CR LF, for there is no width to wrap at.
/// Positions in its text count bytes; one inside a double-byte character stands for the character's start.
/// Notifications are WM_COMMAND messages sent to the parent: the number and the code in wParam, the control
/// in lParam.

#include "korutil/platform.h"
#include "korutil/platform/window_message.h"

#ifndef _WIN32

inline constexpr LRESULT DLGC_WANTARROWS = 0x0001;
inline constexpr LRESULT DLGC_WANTALLKEYS = 0x0004;
inline constexpr LRESULT DLGC_HASSETSEL = 0x0008;
inline constexpr LRESULT DLGC_DEFPUSHBUTTON = 0x0010;
inline constexpr LRESULT DLGC_UNDEFPUSHBUTTON = 0x0020;
inline constexpr LRESULT DLGC_RADIOBUTTON = 0x0040;
inline constexpr LRESULT DLGC_WANTCHARS = 0x0080;
inline constexpr LRESULT DLGC_STATIC = 0x0100;
inline constexpr LRESULT DLGC_BUTTON = 0x2000;

// ------------------------------------------------------------------------------------------- edit controls

inline constexpr DWORD ES_MULTILINE = 0x0004;
inline constexpr DWORD ES_AUTOVSCROLL = 0x0040;
inline constexpr DWORD ES_AUTOHSCROLL = 0x0080;
inline constexpr DWORD ES_READONLY = 0x0800;
inline constexpr DWORD ES_WANTRETURN = 0x1000;

inline constexpr UINT EM_GETSEL = 0x00B0;     ///< start and end in the result's halves (-1 when one is
                                              ///< above 65535) and where the DWORD pointers point
inline constexpr UINT EM_SETSEL = 0x00B1;     ///< start, end; -1 is the end, a start of -1 no selection
inline constexpr UINT EM_GETMODIFY = 0x00B8;  ///< set by every change but WM_SETTEXT, which clears it
inline constexpr UINT EM_SETMODIFY = 0x00B9;
inline constexpr UINT EM_GETLINECOUNT = 0x00BA;  ///< 1 at least
inline constexpr UINT EM_LINEINDEX = 0x00BB;     ///< a line's first position; -1: of the line of the
                                                 ///< selection's second position
inline constexpr UINT EM_LINELENGTH = 0x00C1;    ///< of the line at a position, without its end; -1: what
                                                 ///< is not selected of the selection's lines
inline constexpr UINT EM_REPLACESEL = 0x00C2;    ///< also when read-only; EN_MAXTEXT when the limit cuts it
inline constexpr UINT EM_GETLINE = 0x00C4;       ///< into a buffer whose first WORD is its size; not
                                                 ///< terminated. The result is the length copied
inline constexpr UINT EM_SETLIMITTEXT = 0x00C5;  ///< bytes; 0 for no limit. 30000 at first; WM_SETTEXT may
                                                 ///< exceed it
inline constexpr UINT EM_LIMITTEXT = EM_SETLIMITTEXT;
inline constexpr UINT EM_CANUNDO = 0x00C6;       ///< 0
inline constexpr UINT EM_LINEFROMCHAR = 0x00C9;  ///< -1: the selection's line
inline constexpr UINT EM_EMPTYUNDOBUFFER = 0x00CD;
inline constexpr UINT EM_GETFIRSTVISIBLELINE = 0x00CE;  ///< 0
inline constexpr UINT EM_SETREADONLY = 0x00CF;
inline constexpr UINT EM_GETLIMITTEXT = 0x00D5;

inline constexpr WORD EN_SETFOCUS = 0x0100;
inline constexpr WORD EN_KILLFOCUS = 0x0200;
inline constexpr WORD EN_CHANGE = 0x0300;  ///< after EN_UPDATE; not for WM_SETTEXT to a multi-line control
inline constexpr WORD EN_UPDATE = 0x0400;
inline constexpr WORD EN_ERRSPACE = 0x0500;  ///< memory is short; the text is as before
inline constexpr WORD EN_MAXTEXT = 0x0501;

// ------------------------------------------------------------------------------------------------- buttons

inline constexpr DWORD BS_PUSHBUTTON = 0x00;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x01;
inline constexpr DWORD BS_CHECKBOX = 0x02;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x03;
inline constexpr DWORD BS_RADIOBUTTON = 0x04;
inline constexpr DWORD BS_3STATE = 0x05;
inline constexpr DWORD BS_AUTO3STATE = 0x06;
inline constexpr DWORD BS_GROUPBOX = 0x07;
inline constexpr DWORD BS_USERBUTTON = 0x08;
inline constexpr DWORD BS_AUTORADIOBUTTON = 0x09;
inline constexpr DWORD BS_OWNERDRAW = 0x0B;
inline constexpr DWORD BS_TYPEMASK = 0x0F;

inline constexpr UINT BST_UNCHECKED = 0;
inline constexpr UINT BST_CHECKED = 1;
inline constexpr UINT BST_INDETERMINATE = 2;
inline constexpr UINT BST_PUSHED = 4;
inline constexpr UINT BST_FOCUS = 8;

inline constexpr UINT BM_GETCHECK = 0x00F0;  ///< BST_UNCHECKED for what cannot be checked
inline constexpr UINT BM_SETCHECK = 0x00F1;  ///< the nearest state that the button's kind has
inline constexpr UINT BM_GETSTATE = 0x00F2;  ///< BST_... of check, push and focus
inline constexpr UINT BM_SETSTATE = 0x00F3;  ///< pushed or not
inline constexpr UINT BM_SETSTYLE = 0x00F4;
inline constexpr UINT BM_CLICK = 0x00F5;  ///< focus, the next state of an automatic button, BN_CLICKED

inline constexpr WORD BN_CLICKED = 0;

// ------------------------------------------------------------------------------------- controls by number

/// @return the child of that number; null with last error 1421 when there is none
KORPLATFORM_API HWND WINAPI GetDlgItem(HWND dialog, int id);
/// @return the number that the window was created with
KORPLATFORM_API int WINAPI GetDlgCtrlID(HWND window);
/// The functions of a window's text, messages and checks for the child of that number.
/// @return FALSE or 0, and an empty text, when there is no such child
KORPLATFORM_API BOOL WINAPI SetDlgItemTextA(HWND dialog, int id, LPCSTR text);
KORPLATFORM_API UINT WINAPI GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size);
KORPLATFORM_API LRESULT WINAPI SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam,
                                                   LPARAM lParam);
KORPLATFORM_API UINT WINAPI IsDlgButtonChecked(HWND dialog, int id);
KORPLATFORM_API BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check);
/// Checks one of the radio buttons with numbers from `first` to `last` and clears the others.
KORPLATFORM_API BOOL WINAPI CheckRadioButton(HWND dialog, int first, int last, int checked);

#endif
