#include "platform/posix/kernel/profile_identity.h"

#include <cstdint>
#include <ctime>

namespace kor {
namespace {

bool isSame(const timespec& a, const timespec& b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }

// Whether a time lies before another one by so much that a change after the second one has a newer time.
bool isLongBefore(const timespec& time, const timespec& other) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    constexpr std::int64_t kTick = 20'000'000;
    const std::int64_t seconds = std::int64_t{other.tv_sec} - time.tv_sec;
    if (seconds < 0 || seconds > 1) return seconds > 1;
    return seconds * kSecond + (other.tv_nsec - time.tv_nsec) >= kTick;
}

}  // namespace

timespec ProfileIdentity::now() {
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return time;
}

// The time of the last change is the one that nobody can set; a modification time in the future says nothing.
ProfileIdentity::ProfileIdentity(const struct stat& status, const timespec& seen)
    : device_(status.st_dev),
      inode_(status.st_ino),
      size_(status.st_size),
      modified_(status.st_mtim),
      changed_(status.st_ctim),
      isSettled_(isLongBefore(status.st_ctim, seen)) {}

bool ProfileIdentity::isSameState(const struct stat& status) const {
    return device_ == status.st_dev && inode_ == status.st_ino && size_ == status.st_size &&
           isSame(modified_, status.st_mtim) && isSame(changed_, status.st_ctim);
}

}  // namespace kor
