#pragma once
// What is needed of a library's file in portable-executable form: whether it has code, and its resources.

#include <optional>
#include <string>
#include <vector>

#include "platform/posix/kernel/resource_image.h"

namespace kor {

struct PortableExecutable {
    bool hasCode;                      // an entry point or imports, or it is not a library
    std::vector<std::byte> resources;  // the section from its resource directory on; empty when it has none
    DWORD resourceAddress = 0;         // of the section's first byte in memory
};

/// Reads a file's bytes; nothing when they are not a portable executable. A resource section that does not
/// lie within the file is cut, or empty.
std::optional<PortableExecutable> parsePortableExecutable(ByteView file);

}  // namespace kor
