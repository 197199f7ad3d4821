#pragma once
// The process's current folder and those of its drives.

#include <optional>
#include <string>
#include <string_view>

namespace kor {

/// The process starts on `Z:` in its working folder. While the current drive is `Z:` the host's own chdir()
/// is followed.
/// @return the current folder in UTF-8; nothing when no platform path names the process's working folder,
/// with last error ERROR_INVALID_NAME, or ERROR_PATH_NOT_FOUND when it was deleted
std::optional<std::string> currentFolder();

/// A path made absolute and plain as by `fullPath`, from the current folders.
/// @return nothing for an empty path (ERROR_PATH_NOT_FOUND), and as currentFolder for a path that starts
/// there
std::optional<std::string> absolutePath(std::string_view path);

/// After the process's working folder was changed to it.
/// @param folder  an absolute path in UTF-8 without a trailing separator but a root's
/// By value: it is taken over without needing memory.
void setCurrentFolder(std::string folder);

}  // namespace kor
