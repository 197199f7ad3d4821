#pragma once
// The texts of a description of files.

#include <string>

#include "korutil/file_dialog.h"

namespace kor {

/// A text of the description: itself, or the string of that number; empty when there is none.
std::string textOf(const FileIoDescription& kind, const char* textOrNumber);

/// The folder of the files, its subfolder included, with a backslash at its end.
std::string folderOf(const FileIoDescription& kind);

}  // namespace kor
