#pragma once
// Symbolic links of the native system.

#include <optional>
#include <string>

namespace kor {

/// @return the full path that a symbolic link leads to, its last end when it is there; nothing for what is no
///         symbolic link, and on Windows, where the system follows them itself
std::optional<std::string> symbolicLinkTarget(const char* path);

}  // namespace kor
