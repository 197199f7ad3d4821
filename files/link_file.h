#pragma once
// Shell link files, by the published description [MS-SHLLINK].

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace kor {

/// Where a shell link leads, in the ANSI code page; each path is empty when the link has none.
struct LinkTarget {
    std::string path;      ///< on a drive or a network
    std::string relative;  ///< from the folder of the link
};

/// @param file  the file's bytes; what lies behind its strings is not looked at
/// @return nothing for what is no shell link, or a damaged one
std::optional<LinkTarget> readLink(std::span<const std::byte> file);

}  // namespace kor
