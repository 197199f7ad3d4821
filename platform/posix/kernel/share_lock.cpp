#include "platform/posix/kernel/share_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <thread>

#include "platform/posix/kernel/open_file.h"

namespace kor {
namespace {

constexpr std::int64_t kUses = INT64_MAX - 15;   // one byte per kind of access that is in use
constexpr std::int64_t kDenies = INT64_MAX - 7;  // one byte per kind that is denied to others
constexpr unsigned kKinds[] = {kReads, kWrites, kDeletes};

struct flock lockOf(short type, std::int64_t byte) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

bool hold(int descriptor, std::int64_t byte) {
    struct flock lock = lockOf(F_RDLCK, byte);
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
}

bool isHeldByOthers(int descriptor, std::int64_t byte) {
    struct flock lock = lockOf(F_WRLCK, byte);
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Lets one opening at a time claim and check, so that of two only one is refused. Somebody else's lock on the
// file must not hold us up for ever.
class Turn {
  public:
    explicit Turn(int descriptor) : descriptor_(descriptor) {
        for (int tries = 0; tries < 500 && flock(descriptor_, LOCK_EX | LOCK_NB) != 0; ++tries) {
            if (errno != EWOULDBLOCK && errno != EINTR) return;  // a file system without locks
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    ~Turn() { flock(descriptor_, LOCK_UN); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

  private:
    int descriptor_;
};

}  // namespace

bool claimShare(int descriptor, unsigned access, unsigned share) {
    const Turn turn(descriptor);
    for (std::int64_t index = 0; const unsigned kind : kKinds) {
        if ((access & kind) && isHeldByOthers(descriptor, kDenies + index)) return false;
        if (!(share & kind) && isHeldByOthers(descriptor, kUses + index)) return false;
        ++index;
    }
    for (std::int64_t index = 0; const unsigned kind : kKinds) {
        if (access & kind) hold(descriptor, kUses + index);
        if (!(share & kind)) hold(descriptor, kDenies + index);
        ++index;
    }
    return true;
}

bool deletionIsShared(const char* native) {
    const Descriptor file(open(native, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    return !file.isOpen() || !isHeldByOthers(file.get(), kDenies + 2);
}

}  // namespace kor
