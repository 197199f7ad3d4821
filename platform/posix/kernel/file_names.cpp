// Deleting and moving files, and their attributes.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/share_lock.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::failWith;
using kor::ResolvedPath;

bool linkStatus(const std::string& native, struct stat& status) {
    return lstat(native.c_str(), &status) == 0;
}

// The path as the caller spells its last component, in the folder as it is spelled on disk.
std::string spelledByCaller(const ResolvedPath& path) {
    const std::string name = path.full.substr(path.full.rfind('\\') + 1);
    return path.native.substr(0, path.native.rfind('/') + 1) + name;
}

// Renames unless the target is there; without kernel support a second process may come between the two steps.
bool renameToNew(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    struct stat status {};
    if (linkStatus(to, status)) {
        errno = EEXIST;
        return false;
    }
    return rename(from.c_str(), to.c_str()) == 0;
}

BOOL failWithRenameErrno(const std::string& to) {
    if (errno == EEXIST || errno == ENOTEMPTY) return failWith(ERROR_ALREADY_EXISTS);
    // A folder cannot go below itself.
    if (errno == EINVAL) return failWith(ERROR_SHARING_VIOLATION);
    if (errno == ENOENT) return failWith(ERROR_PATH_NOT_FOUND);
    return kor::failWithErrnoOf(to);
}

BOOL moveBetweenDisks(LPCSTR from, LPCSTR to, DWORD flags) {
    if (!CopyFileA(from, to, !(flags & MOVEFILE_REPLACE_EXISTING))) {
        return failWith(GetLastError() == ERROR_FILE_EXISTS ? ERROR_ALREADY_EXISTS : GetLastError());
    }
    return DeleteFileA(from);
}

// @return the code that forbids replacing, 0 when it may be
DWORD replaceRefusal(const std::string& target, const struct stat& targetStatus, const struct stat& source) {
    if (S_ISDIR(targetStatus.st_mode) || S_ISDIR(source.st_mode)) return ERROR_ACCESS_DENIED;
    if (kor::isReadOnly(targetStatus.st_mode)) return ERROR_ACCESS_DENIED;
    // Required: an open target is told as a lack of access, an open source as a sharing violation.
    return kor::deletionIsShared(target.c_str()) ? 0 : ERROR_ACCESS_DENIED;
}

}  // namespace

KORPLATFORM_API BOOL WINAPI DeleteFileA(LPCSTR name) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const auto path = kor::resolveEntry(name);
        if (!path) return FALSE;
        struct stat status {};
        if (!linkStatus(path->native, status)) return kor::failWithErrnoOf(path->native);
        if (S_ISDIR(status.st_mode)) return failWith(ERROR_ACCESS_DENIED);
        if (path->trailingSeparator) return failWith(ERROR_INVALID_NAME);
        if (kor::isReadOnly(status.st_mode)) return failWith(ERROR_ACCESS_DENIED);
        if (S_ISREG(status.st_mode) && !kor::deletionIsShared(path->native.c_str())) {
            return failWith(ERROR_SHARING_VIOLATION);
        }
        return unlink(path->native.c_str()) == 0 || kor::failWithErrnoOf(path->native);
    });
}

KORPLATFORM_API BOOL WINAPI MoveFileA(LPCSTR from, LPCSTR to) {
    return MoveFileExA(from, to, MOVEFILE_COPY_ALLOWED);
}

KORPLATFORM_API BOOL WINAPI MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (flags & MOVEFILE_DELAY_UNTIL_REBOOT) return failWith(ERROR_NOT_SUPPORTED);
        const auto source = kor::resolveEntry(from);
        if (!source) return FALSE;
        struct stat sourceStatus {};
        if (!linkStatus(source->native, sourceStatus)) return kor::failWithErrnoOf(source->native);
        const auto target = kor::resolveEntry(to);
        if (!target) return FALSE;
        if (S_ISREG(sourceStatus.st_mode) && !kor::deletionIsShared(source->native.c_str())) {
            return failWith(ERROR_SHARING_VIOLATION);
        }
        struct stat targetStatus {};
        const bool sameEntry = source->native == target->native;
        const bool replaces = !sameEntry && linkStatus(target->native, targetStatus);
        if (replaces && !(flags & MOVEFILE_REPLACE_EXISTING)) return failWith(ERROR_ALREADY_EXISTS);
        if (replaces) {
            if (const DWORD code = replaceRefusal(target->native, targetStatus, sourceStatus))
                return failWith(code);
        }
        const std::string renamed = replaces ? target->native : spelledByCaller(*target);
        if (renamed == source->native) return TRUE;
        const bool done = replaces ? rename(source->native.c_str(), renamed.c_str()) == 0
                                   : renameToNew(source->native, renamed);
        if (!done) {
            const bool copies =
                errno == EXDEV && S_ISREG(sourceStatus.st_mode) && (flags & MOVEFILE_COPY_ALLOWED);
            return copies ? moveBetweenDisks(from, to, flags) : failWithRenameErrno(renamed);
        }
        if (flags & MOVEFILE_WRITE_THROUGH) return kor::flushFolderOf(renamed) || kor::failWithErrno();
        return TRUE;
    });
}

KORPLATFORM_API DWORD WINAPI GetFileAttributesA(LPCSTR name) {
    return kor::withMemory(INVALID_FILE_ATTRIBUTES, [&]() -> DWORD {
        const auto path = kor::resolvePath(name);
        if (!path) return INVALID_FILE_ATTRIBUTES;
        struct stat status {};
        // A symbolic link that leads nowhere is a file all the same.
        if (stat(path->native.c_str(), &status) != 0 && !linkStatus(path->native, status)) {
            kor::failWithErrnoOf(path->native);
            return INVALID_FILE_ATTRIBUTES;
        }
        if (path->trailingSeparator && !S_ISDIR(status.st_mode)) {
            SetLastError(ERROR_PATH_NOT_FOUND);
            return INVALID_FILE_ATTRIBUTES;
        }
        return kor::attributesOf(status.st_mode, path->native);
    });
}

KORPLATFORM_API BOOL WINAPI SetFileAttributesA(LPCSTR name, DWORD attributes) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const auto path = kor::resolveEntry(name);
        if (!path) return FALSE;
        struct stat status {};
        if (stat(path->native.c_str(), &status) != 0) return kor::failWithErrnoOf(path->native);
        // A folder without write permission would refuse new files, which READONLY does not mean.
        if (!S_ISREG(status.st_mode)) return TRUE;
        const bool readOnly = attributes & FILE_ATTRIBUTE_READONLY;
        if (readOnly == kor::isReadOnly(status.st_mode)) return TRUE;
        const mode_t mode = (status.st_mode & 07777 & ~mode_t{0222}) | (readOnly ? 0u : 0200u);
        return chmod(path->native.c_str(), mode) == 0 || kor::failWithErrnoOf(path->native);
    });
}
