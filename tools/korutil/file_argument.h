#pragma once
// The one place where a FILE argument becomes a path of the library: symbolic links and ".." are resolved as
// the system resolves them, the path is made absolute, and the library's form of it is asked of the platform.

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

namespace kor::command {

struct FileArgument {
    std::string shown;   ///< as the user gave it, for messages
    std::string native;  ///< absolute, every link resolved, UTF-8
    std::string path;    ///< the same file for the library: Z:\..., in the code page
    std::optional<struct stat>
        found;  ///< the file as it was when the argument was looked at; nothing when missing
};

/// A file that is there. @throws Failure when it is not, is a folder or a device, or the code page cannot
/// express it
FileArgument existingFile(std::string_view argument);

/// A file that may be there; its folder must be. @throws Failure likewise
FileArgument targetFile(std::string_view argument);

/// The library's form of an absolute native path. @throws Failure about `shown` when there is none
std::string libraryPath(const std::string& native, std::string_view shown);

}  // namespace kor::command
