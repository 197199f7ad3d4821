// Times and identity of open files.
#include <fcntl.h>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/file_status.h"
#include "platform/posix/kernel/file_time.h"
#include "platform/posix/kernel/open_file.h"

namespace {

// Null, or all zero: the time is to stay.
timespec timeToSet(const FILETIME* time) {
    if (!time || kor::unitsOf(*time) == 0) return {0, UTIME_OMIT};
    return kor::nativeTime(*time);
}

}  // namespace

KORPLATFORM_API BOOL WINAPI GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* access,
                                        FILETIME* write) {
    const auto file = kor::openedFile(handle);
    if (!file) return FALSE;
    const auto status = kor::statusOf(file->descriptor(), "", true);
    if (!status) return kor::failWithErrno();
    if (creation) *creation = status->creation;
    if (access) *access = status->access;
    if (write) *write = status->write;
    return TRUE;
}

KORPLATFORM_API BOOL WINAPI SetFileTime(HANDLE handle, const FILETIME*, const FILETIME* access,
                                        const FILETIME* write) {
    const auto file = kor::openedFile(handle, kor::kWritesAttributes);
    if (!file) return FALSE;
    const timespec times[2] = {timeToSet(access), timeToSet(write)};
    return futimens(file->descriptor(), times) == 0 || kor::failWithErrno();
}

KORPLATFORM_API BOOL WINAPI GetFileInformationByHandle(HANDLE handle,
                                                       BY_HANDLE_FILE_INFORMATION* information) {
    const auto file = kor::openedFile(handle);
    if (!file) return FALSE;
    const auto status = kor::statusOf(file->descriptor(), "", true);
    if (!status) return kor::failWithErrno();
    information->dwFileAttributes = kor::attributesOf(status->mode, file->native());
    information->ftCreationTime = status->creation;
    information->ftLastAccessTime = status->access;
    information->ftLastWriteTime = status->write;
    information->dwVolumeSerialNumber = status->device;
    information->nFileSizeHigh = static_cast<DWORD>(status->size >> 32);
    information->nFileSizeLow = static_cast<DWORD>(status->size & 0xFFFFFFFF);
    information->nNumberOfLinks = status->links;
    information->nFileIndexHigh = static_cast<DWORD>(status->inode >> 32);
    information->nFileIndexLow = static_cast<DWORD>(status->inode & 0xFFFFFFFF);
    return TRUE;
}
