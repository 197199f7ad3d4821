#pragma once
// What the platform tells of a file, in its own terms.

#include <cstdint>
#include <optional>

#include "korutil/platform.h"

namespace kor {

struct FileStatus {
    unsigned mode;  ///< as stat's
    FILETIME creation;
    FILETIME access;
    FILETIME write;
    std::uint64_t size;  ///< 0 for anything but a file
    std::uint64_t inode;
    DWORD device;
    DWORD links;
};

/// @param folder  descriptor that `name` is taken from; of an empty name it is the file itself
/// @param follow  whether a symbolic link is followed
/// @return nothing on failure, with errno set
std::optional<FileStatus> statusOf(int folder, const char* name, bool follow);

}  // namespace kor
