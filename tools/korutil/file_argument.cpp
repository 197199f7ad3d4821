#include "tools/korutil/file_argument.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <vector>

#include "korutil/platform/name.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"

namespace kor::command {
namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
};

std::string resolved(const std::string& native, std::string_view shown) {
    const std::unique_ptr<char, Free> path(::realpath(native.c_str(), nullptr));
    if (!path) throw Failure(shown, systemReason(errno));
    return path.get();
}

// A device or a pipe cannot be read at positions, and opening one may wait for ever.
void checkRegular(const struct stat& status, std::string_view shown) {
    if (S_ISDIR(status.st_mode)) throw Failure(shown, "it is a folder");
    if (!S_ISREG(status.st_mode)) throw Failure(shown, "it is no regular file");
}

// Whether the library takes a path for a device, whatever lies there on the disk.
bool isDevice(const char* path) {
    std::array<char, 16> whole{};
    const DWORD size = GetFullPathNameA(path, static_cast<DWORD>(whole.size()), whole.data(), nullptr);
    return size < whole.size() && std::string_view(whole.data()).starts_with("\\\\.\\");
}

FileArgument known(std::string_view argument, std::string native) {
    FileArgument file{std::string(argument), std::move(native), {}, {}};
    file.path = libraryPath(file.native, argument);
    return file;
}

}  // namespace

FileArgument existingFile(std::string_view argument) {
    const std::string given(argument);
    if (given.empty()) throw Failure("FILE", "the name is empty");
    struct stat status {};
    if (::stat(given.c_str(), &status) != 0) throw Failure(argument, systemReason(errno));
    checkRegular(status, argument);
    FileArgument file = known(argument, resolved(given, argument));
    file.found = status;
    return file;
}

FileArgument targetFile(std::string_view argument) {
    const std::string given(argument);
    if (given.empty()) throw Failure("FILE", "the name is empty");
    struct stat status {};
    if (::stat(given.c_str(), &status) == 0) return existingFile(argument);
    if (errno != ENOENT) throw Failure(argument, systemReason(errno));
    if (::lstat(given.c_str(), &status) == 0)
        throw Failure(argument, "it is a symbolic link to a missing file");
    const std::size_t slash = given.rfind('/');
    const std::string name = slash == std::string::npos ? given : given.substr(slash + 1);
    if (name.empty()) throw Failure(argument, "it names no file");
    const std::string folder = slash == std::string::npos ? "." : given.substr(0, slash + 1);
    const std::string whole = resolved(folder, argument);
    return known(argument, (whole == "/" ? whole : whole + '/') + name);
}

std::string libraryPath(const std::string& native, std::string_view shown) {
    const std::size_t slash = native.rfind('/');
    const std::string folder = native.substr(0, slash);
    const std::string name = native.substr(slash + 1);
    // These name the character that cannot be expressed.
    code_page::fromUtf8(folder, folder);
    code_page::fromUtf8(name, shown);
    std::vector<char> path(korWindowsPath(native.c_str(), nullptr, 0));
    if (path.empty() || korWindowsPath(native.c_str(), path.data(), static_cast<DWORD>(path.size())) == 0) {
        throw Failure(
            shown, GetLastError() == ERROR_FILENAME_EXCED_RANGE
                       ? "the path is too long for the library"
                       : "the library cannot use this name: a part of it ends in a dot or a blank, or holds "
                         "a control character or one of \\ : * ? \" < > |");
    }
    if (isDevice(path.data())) throw Failure(shown, "'" + name + "' is the name of a device for the library");
    return path.data();
}

}  // namespace kor::command
