#pragma once
// The form of a path that is given as counted text. Nothing here looks at a disk.

#include <cstddef>
#include <string_view>

namespace kor {

inline bool isDriveLetter(char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
}

/// "X:" at the start.
inline bool hasDrive(std::string_view path) {
    return path.size() >= 2 && isDriveLetter(path[0]) && path[1] == ':';
}

inline bool isNetworkPath(std::string_view path) { return path.starts_with("\\\\"); }

inline bool isAbsolutePath(std::string_view path) {
    return isNetworkPath(path) || (path.size() >= 3 && hasDrive(path) && path[2] == '\\');
}

inline bool isRootFolder(std::string_view path) {
    if (path == "\\\\") return true;
    return hasDrive(path) && (path.size() == 2 || (path.size() == 3 && path[2] == '\\'));
}

}  // namespace kor
