#pragma once
// The process's current folder and those of its drives.

#include "platform/posix/kernel/windows_path.h"

namespace kor {

/// The process starts on `Z:` in its working folder; one that a platform path cannot express counts as `Z:\`.
const CurrentFolders& currentFolders();

/// @param folder  an absolute path in UTF-8 without a trailing separator but a root's
/// By value: it is taken over without needing memory.
void setCurrentFolder(std::string folder);

}  // namespace kor
