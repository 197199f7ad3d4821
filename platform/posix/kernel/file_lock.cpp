// LockFile and UnlockFile: kernel locks of the open file, and a list of them, since a range is taken back
// only as it was set and the kernel does not mind a second lock of the same file.
#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::failWith;
using Range = kor::OpenFile::Range;

// The kernel counts to 2^63; the last places are the share modes'. What lies behind is kept in the list only.
constexpr std::uint64_t kLastPlace = INT64_MAX - 32;

constexpr std::uint64_t whole(DWORD low, DWORD high) { return std::uint64_t{high} << 32 | low; }

// @param count  not 0. @return false when the range runs past 2^64
bool makeRange(std::uint64_t first, std::uint64_t count, Range& range) {
    range.first = first;
    return !__builtin_add_overflow(first, count - 1, &range.last);
}

bool setKernelLock(int descriptor, short type, const Range& range) {
    if (range.first > kLastPlace) return true;
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(range.first);
    lock.l_len = static_cast<off_t>(std::min(range.last, kLastPlace) - range.first + 1);
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
}

}  // namespace

KORPLATFORM_API BOOL WINAPI LockFile(HANDLE handle, DWORD low, DWORD high, DWORD countLow, DWORD countHigh) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const auto file = kor::openedFile(handle, kor::kReads | kor::kWrites | kor::kAppends);
        if (!file) return FALSE;
        // An empty range is in nobody's way.
        const std::uint64_t count = whole(countLow, countHigh);
        if (count == 0) return TRUE;
        Range range{};
        if (!makeRange(whole(low, high), count, range)) return failWith(ERROR_INVALID_PARAMETER);
        const std::lock_guard guard(file->rangesMutex);
        const bool overlaps = std::any_of(
            file->ranges.begin(), file->ranges.end(),
            [&range](const Range& other) { return range.first <= other.last && other.first <= range.last; });
        if (overlaps) return failWith(ERROR_LOCK_VIOLATION);
        // A file that is open for reading only can keep others from writing locks of the range, no more.
        const bool writes = (fcntl(file->descriptor(), F_GETFL) & O_ACCMODE) != O_RDONLY;
        file->ranges.push_back(range);
        if (setKernelLock(file->descriptor(), writes ? F_WRLCK : F_RDLCK, range)) return TRUE;
        file->ranges.pop_back();
        return failWith(errno == EAGAIN || errno == EACCES ? ERROR_LOCK_VIOLATION
                                                           : kor::errorFromErrno(errno));
    });
}

KORPLATFORM_API BOOL WINAPI UnlockFile(HANDLE handle, DWORD low, DWORD high, DWORD countLow,
                                       DWORD countHigh) {
    const auto file = kor::openedFile(handle, kor::kReads | kor::kWrites | kor::kAppends);
    if (!file) return FALSE;
    const std::uint64_t count = whole(countLow, countHigh);
    if (count == 0) return TRUE;
    Range range{};
    if (!makeRange(whole(low, high), count, range)) return failWith(ERROR_NOT_LOCKED);
    const std::lock_guard guard(file->rangesMutex);
    const auto found = std::find(file->ranges.begin(), file->ranges.end(), range);
    if (found == file->ranges.end()) return failWith(ERROR_NOT_LOCKED);
    if (!setKernelLock(file->descriptor(), F_UNLCK, range)) return kor::failWithErrno();
    file->ranges.erase(found);
    return TRUE;
}
