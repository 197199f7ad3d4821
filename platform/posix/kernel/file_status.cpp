#include "platform/posix/kernel/file_status.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>

#include "platform/posix/kernel/file_time.h"

namespace kor {
namespace {

FILETIME fileTimeOf(const statx_timestamp& time) {
    return kor::fileTimeOf(timespec{time.tv_sec, time.tv_nsec});
}

}  // namespace

std::optional<FileStatus> statusOf(int folder, const char* name, bool follow) {
    struct statx native {};
    const int flags = AT_EMPTY_PATH | AT_NO_AUTOMOUNT | (follow ? 0 : AT_SYMLINK_NOFOLLOW);
    if (statx(folder, name, flags, STATX_BASIC_STATS | STATX_BTIME, &native) != 0) return std::nullopt;
    FileStatus status{};
    status.mode = native.stx_mode;
    status.access = fileTimeOf(native.stx_atime);
    status.write = fileTimeOf(native.stx_mtime);
    if (native.stx_mask & STATX_BTIME) {
        status.creation = fileTimeOf(native.stx_btime);
    } else {
        status.creation = fileTime(std::min(unitsOf(status.write), unitsOf(fileTimeOf(native.stx_ctime))));
    }
    status.size = S_ISREG(native.stx_mode) ? native.stx_size : 0;
    status.inode = native.stx_ino;
    status.device = static_cast<DWORD>(makedev(native.stx_dev_major, native.stx_dev_minor));
    status.links = native.stx_nlink;
    return status;
}

}  // namespace kor
