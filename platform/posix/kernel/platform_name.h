#pragma once
// Names on disk as components of platform paths.

#include <optional>
#include <string>
#include <string_view>

namespace kor {

/// A component name from disk in the code page; nothing when it cannot be expressed or named by a platform
/// path. Leaves the last error alone.
std::optional<std::string> platformName(std::string_view native);

}  // namespace kor
