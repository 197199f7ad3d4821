// Making and removing folders, and the current one.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/current_folder.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/text_result.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::failWith;

bool isWorkingFolder(const struct stat& status) {
    struct stat working {};
    return stat(".", &working) == 0 && working.st_dev == status.st_dev && working.st_ino == status.st_ino;
}

}  // namespace

KORPLATFORM_API BOOL WINAPI CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const auto path = kor::resolveEntry(name);
        if (!path) return FALSE;
        if (mkdir(path->native.c_str(), 0777) == 0) return TRUE;
        if (errno == EEXIST) return failWith(ERROR_ALREADY_EXISTS);
        return errno == ENOENT ? failWith(ERROR_PATH_NOT_FOUND) : kor::failWithErrno();
    });
}

KORPLATFORM_API BOOL WINAPI RemoveDirectoryA(LPCSTR name) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        // An empty name has its own code here: required, as the system does so.
        if (!name || !*name) return failWith(ERROR_INVALID_NAME);
        const auto path = kor::resolveEntry(name);
        if (!path) return FALSE;
        struct stat status {};
        if (lstat(path->native.c_str(), &status) != 0) return kor::failWithErrnoOf(path->native);
        struct stat behind {};
        if (S_ISLNK(status.st_mode) && stat(path->native.c_str(), &behind) == 0 && S_ISDIR(behind.st_mode)) {
            return unlink(path->native.c_str()) == 0 || kor::failWithErrno();
        }
        if (!S_ISDIR(status.st_mode)) return failWith(ERROR_DIRECTORY);
        if (isWorkingFolder(status)) return failWith(ERROR_SHARING_VIOLATION);
        if (rmdir(path->native.c_str()) == 0) return TRUE;
        return errno == EEXIST ? failWith(ERROR_DIR_NOT_EMPTY) : kor::failWithErrno();
    });
}

KORPLATFORM_API DWORD WINAPI GetCurrentDirectoryA(DWORD size, LPSTR buffer) {
    return kor::withMemory(0, [&]() -> DWORD {
        const auto folder = kor::currentFolder();
        return folder ? kor::utf8Result(*folder, buffer, size) : 0;
    });
}

KORPLATFORM_API BOOL WINAPI SetCurrentDirectoryA(LPCSTR name) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        // An empty name has its own code here: required, as the system does so.
        if (!name || !*name) return kor::failWith(ERROR_INVALID_NAME);
        auto path = kor::resolvePath(name);
        if (!path) return FALSE;
        struct stat status {};
        if (stat(path->native.c_str(), &status) != 0) return kor::failWithErrnoOf(path->native);
        if (!S_ISDIR(status.st_mode)) return kor::failWith(ERROR_DIRECTORY);
        if (chdir(path->native.c_str()) != 0) return kor::failWithErrnoOf(path->native);
        kor::setCurrentFolder(std::move(path->full));
        return TRUE;
    });
}
