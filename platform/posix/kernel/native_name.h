#pragma once
/// Between the platform's paths (`Z:\home\x`, in the ANSI code page) and the native ones (`/home/x`, UTF-8),
/// for the platform's own sources; korutil/platform/name.h is for others. All are safe in any thread.

#include <optional>
#include <string>
#include <string_view>

#include "korutil/platform/name.h"

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
