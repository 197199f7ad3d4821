#pragma once
// Reading a whole initialisation file.

#include <optional>
#include <string>

#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/profile_identity.h"
#include "platform/posix/kernel/profile_path.h"
#include "platform/posix/kernel/profile_text.h"

namespace kor {

struct LoadedProfile {
    ProfileText text;
    ProfileIdentity identity;
    struct stat status;
};

/// Reads an open file.
/// @return nothing on failure, with the last error set: ERROR_ACCESS_DENIED for what is no file,
///         ERROR_FILE_TOO_LARGE from 4 GB on
std::optional<LoadedProfile> loadProfile(int descriptor);

/// Opens and reads a file.
std::optional<LoadedProfile> loadProfile(const ProfilePath& path);

/// Opens a file for reading; neither a pipe nor a device holds us up.
/// @param folder  descriptor that the name is taken from, or AT_FDCWD
/// @param flags   more of open's
/// @return not open on failure, with errno set
Descriptor openProfile(int folder, const std::string& name, int flags = 0);

}  // namespace kor
