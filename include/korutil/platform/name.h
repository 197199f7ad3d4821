#pragma once
/// Names and texts between the two sides of the native target: the library's are in the ANSI code page
/// (KORUTIL_CODEPAGE), its paths have drives (`Z:\home\x`); the system's are UTF-8, its paths are `/home/x`.
/// On Windows there is nothing to translate, and nothing here.
///
/// The results are those of the platform's text functions: the length without the terminator; when the buffer
/// is too small (or null with size 0) the size needed with it, the buffer untouched; 0 on failure, with the
/// last error set. All are safe in any thread.

#include "korutil/platform.h"

#ifndef _WIN32

/// The native path of a platform path: made absolute, its drive replaced by its folder, each component
/// spelled as on disk when it is there, exactly or but for its case. What is not there keeps the caller's
/// spelling, so the result serves for creating too. Failures: ERROR_PATH_NOT_FOUND (empty, no such
/// drive, relative in a deleted working folder), ERROR_INVALID_NAME (reserved character, not text of the code
/// page, relative in a working folder that cannot be expressed), ERROR_BAD_NETPATH,
/// ERROR_FILENAME_EXCED_RANGE.
KORPLATFORM_API DWORD WINAPI korNativePath(LPCSTR path, LPSTR buffer, DWORD size);

/// The platform path of a native one, always on `Z:`; a relative one is taken from the current folder. `.`
/// and `..` are resolved by the text. The file need not exist.
/// Failures: ERROR_PATH_NOT_FOUND (empty), ERROR_INVALID_NAME (not UTF-8, cannot be expressed in the code
/// page, or holds what a platform path cannot: a backslash, a colon, a wild card, a dot or blank at a
/// component's end).
KORPLATFORM_API DWORD WINAPI korWindowsPath(LPCSTR native, LPSTR buffer, DWORD size);

/// Text of the code page as UTF-8; ERROR_NO_UNICODE_TRANSLATION when it is not valid there. Empty text gives
/// 0 with last error 0.
KORPLATFORM_API DWORD WINAPI korUtf8FromText(LPCSTR text, LPSTR buffer, DWORD size);

/// UTF-8 as text of the code page; ERROR_NO_UNICODE_TRANSLATION when it is not UTF-8 or cannot be expressed,
/// never a replacement character. Empty text gives 0 with last error 0.
KORPLATFORM_API DWORD WINAPI korTextFromUtf8(LPCSTR utf8, LPSTR buffer, DWORD size);

#endif
