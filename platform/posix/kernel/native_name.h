#pragma once
/// Between the platform's paths (`Z:\home\x`, in the ANSI code page) and the native ones (`/home/x`, UTF-8).
///
/// The functions at the top are for the command and the library, with the text results of the platform: the
/// length without the terminator; when the buffer is too small (or null with size 0) the size needed with it,
/// the buffer untouched; 0 on failure, with the last error set. Those in namespace `kor` are for the
/// platform's own sources. All are safe in any thread.

#include <optional>
#include <string>
#include <string_view>

#include "korutil/platform.h"

/// The native path of a platform path: made absolute, its drive replaced by its folder, each component
/// spelled as on disk when it is there, exactly or but for its case. What is not there keeps the caller's
/// spelling, so the result serves for creating too. Failures: ERROR_PATH_NOT_FOUND (empty, no such
/// drive, relative in a deleted working folder), ERROR_INVALID_NAME (reserved character, not text of the code
/// page, relative in a working folder that cannot be expressed),
/// ERROR_BAD_NETPATH, ERROR_FILENAME_EXCED_RANGE.
KORPLATFORM_API DWORD WINAPI korNativePath(LPCSTR path, LPSTR buffer, DWORD size);

/// The platform path of a native one, always on `Z:`; a relative one is taken from the current folder. `.`
/// and
/// `..` are resolved by the text. The file need not exist.
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

namespace kor {

/// As korNativePath and korWindowsPath; nothing on failure, with the last error set.
std::optional<std::string> nativePath(const char* path);
std::optional<std::string> windowsPath(std::string_view native);

/// A platform path with its native one, for callers that need both.
struct ResolvedPath {
    std::string full;        ///< absolute platform path in UTF-8 (`Z:\home\x`), or `\\.\NUL`
    std::string native;      ///< absolute native path in UTF-8, spelled as on disk
    bool trailingSeparator;  ///< the caller's text ended in a separator
};
std::optional<ResolvedPath> resolvePath(const char* path);

/// The same for a path in UTF-8.
std::optional<ResolvedPath> resolveUtf8(std::string_view path);

/// The same for a name in a folder: a device is ERROR_INVALID_PARAMETER, so that nobody deletes or renames
/// one.
std::optional<ResolvedPath> resolveEntry(const char* path);

/// Sets the last error for the present errno of a call on `native`: what is missing is ERROR_FILE_NOT_FOUND
/// when its folder is there, else ERROR_PATH_NOT_FOUND. Returns FALSE.
BOOL failWithErrnoOf(const std::string& native);

}  // namespace kor
