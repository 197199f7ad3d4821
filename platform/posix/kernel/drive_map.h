#pragma once
// Which native folder a drive letter stands for.

#include <optional>
#include <string>

#include "korutil/platform.h"

namespace kor {

/// The folder that holds drive C, drives.conf and the settings: KORUTIL_HOME, else `korutil` in the user's
/// data folder. The user's own folder is HOME, else the one in the user's account; nothing without both, and
/// then drive C is not there.
const std::optional<std::string>& homeFolder();

/// @param letter  in either case
/// @return the native folder without a separator at its end (empty for `/`); nothing for a drive that is not
/// there.
///         Asking for C makes its folder, with the system's two folders, when they are missing.
std::optional<std::string> driveFolder(char letter);

/// Bit 0 for A and so on.
DWORD driveMask();

}  // namespace kor
