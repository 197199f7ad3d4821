#pragma once
// The form in which the loader compares and sets folders. Pure text.

#include <string>
#include <string_view>

namespace kor {

/// Whether a path needs no current folder or drive: "X:\..." or "\\...".
bool isAbsolutePath(std::string_view path);

/// The normal form of a folder: a root ("\\", "X:", "X:\") ends in a backslash, every other folder does not.
void normaliseFolder(std::string& folder);

/// The folder part of a full file name: what stands before the last backslash; empty when there is none.
std::string folderOf(const std::string& fileName);

}  // namespace kor
