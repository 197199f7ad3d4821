#pragma once
/// The dialogs that ask for a file, under the system's names. Without a screen they are a question on the
/// terminal; where standard input or standard error is no terminal they are cancelled.

#include "korutil/platform.h"

inline constexpr DWORD OFN_OVERWRITEPROMPT = 0x00000002;  ///< ask before a file is replaced
inline constexpr DWORD OFN_HIDEREADONLY = 0x00000004;     ///< no effect
inline constexpr DWORD OFN_NOCHANGEDIR = 0x00000008;      ///< no effect: the current folder stays
inline constexpr DWORD OFN_PATHMUSTEXIST = 0x00000800;    ///< only in a folder that is there
inline constexpr DWORD OFN_FILEMUSTEXIST = 0x00001000;    ///< only a file that is there
inline constexpr DWORD OFN_EXPLORER = 0x00080000;         ///< no effect

inline constexpr DWORD CDERR_STRUCTSIZE = 0x0001;
inline constexpr DWORD CDERR_MEMALLOCFAILURE = 0x0009;
inline constexpr DWORD FNERR_BUFFERTOOSMALL = 0x3003;

/// Used here are the size, the filter, the file, the initial folder, the title, the flags and the default
/// extension.
struct OPENFILENAMEA {
    DWORD lStructSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCSTR lpstrFilter;  ///< pairs of a name and patterns, each ended by a zero, and one more zero
    LPSTR lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;  ///< from 1; 0 counts as 1
    LPSTR lpstrFile;     ///< the name offered; receives the full path
    DWORD nMaxFile;
    LPSTR lpstrFileTitle;
    DWORD nMaxFileTitle;
    LPCSTR lpstrInitialDir;
    LPCSTR lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;     ///< receives where the name begins in the path
    WORD nFileExtension;  ///< receives where the extension begins, behind its dot; 0 for none
    LPCSTR lpstrDefExt;   ///< added to a name without an extension
    LPARAM lCustData;
    FARPROC lpfnHook;
    LPCSTR lpTemplateName;
};

/// Asks for a file. The answer is a native path, a platform path, or a name in the initial folder, in UTF-8;
/// an empty answer takes the name offered, or cancels when there is none, and the end of input cancels.
/// @return TRUE when a file was chosen; FALSE when not, and CommDlgExtendedError tells why
KORPLATFORM_API BOOL WINAPI GetOpenFileNameA(OPENFILENAMEA* dialog);
KORPLATFORM_API BOOL WINAPI GetSaveFileNameA(OPENFILENAMEA* dialog);

/// @return why this thread's last dialog gave FALSE: 0 when it was cancelled, CDERR_STRUCTSIZE,
///         FNERR_BUFFERTOOSMALL (the first two bytes of the buffer then tell the size needed),
///         CDERR_MEMALLOCFAILURE
KORPLATFORM_API DWORD WINAPI CommDlgExtendedError();
