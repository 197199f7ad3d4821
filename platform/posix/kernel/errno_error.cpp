#include "platform/posix/kernel/errno_error.h"

#include <cerrno>

#include "korutil/platform/last_error.h"

namespace kor {
namespace {

struct Pair {
    int number;
    DWORD code;
};

constexpr Pair kPairs[] = {
    {0, ERROR_SUCCESS},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {EROFS, ERROR_WRITE_PROTECT},
    {ENODEV, ERROR_NOT_READY},
    {ENXIO, ERROR_NOT_READY},
    {ENOMEDIUM, ERROR_NOT_READY},
    {ESPIPE, ERROR_SEEK_ON_DEVICE},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {EAGAIN, ERROR_LOCK_VIOLATION},
    {EDEADLK, ERROR_POSSIBLE_DEADLOCK},
    {ENOLCK, ERROR_NO_SYSTEM_RESOURCES},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
    {ENOSYS, ERROR_NOT_SUPPORTED},
    {EEXIST, ERROR_FILE_EXISTS},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {EOVERFLOW, ERROR_FILE_TOO_LARGE},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {EFAULT, ERROR_NOACCESS},
    {EIO, ERROR_IO_DEVICE},
    {EMLINK, ERROR_TOO_MANY_LINKS},
    {ECANCELED, ERROR_CANCELLED},
};

}  // namespace

DWORD errorFromErrno(int number) {
    for (const Pair& pair : kPairs) {
        if (pair.number == number) return pair.code;
    }
    return ERROR_GEN_FAILURE;
}

BOOL failWith(DWORD code) {
    SetLastError(code);
    return FALSE;
}

BOOL failWithErrno() { return failWith(errorFromErrno(errno)); }

}  // namespace kor
