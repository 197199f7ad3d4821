#include "tests/support/failing_files_native.h"

#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <utility>

#define INTERPOSED extern "C" __attribute__((visibility("default")))

namespace {

using kor::test::FileFault;

enum class Kind { make, write, flush, rename, other };

struct State {
    bool counts = false;
    int nth = 0;
    FileFault fault = FileFault::fails;
    kor::test::FileCalls calls{};
};
constinit thread_local State state;
thread_local std::function<void()> atFlush;
std::atomic<bool> bareDisk{false};

[[noreturn]] void endProcess() {
    for (;;)
        syscall(SYS_kill, syscall(SYS_getpid), SIGKILL);
}

// @return whether the call is to fail, with errno set
bool failsNow(Kind kind) {
    if (!state.counts || ++state.calls.made != state.nth) return false;
    if (state.fault == FileFault::kills) endProcess();
    if (state.fault != FileFault::fails) return false;  // no write of two bytes or more
    state.calls.reported = kind == Kind::write || kind == Kind::flush || kind == Kind::rename;
    state.calls.full = kind == Kind::make || kind == Kind::write;
    errno = state.calls.full ? ENOSPC : EIO;
    return true;
}

// Half of a write has been made; what comes after it has the fault.
std::size_t cutNow(std::size_t size) {
    if (!state.counts || size < 2 || state.calls.made + 1 != state.nth) return size;
    if (state.fault != FileFault::writesAndFails && state.fault != FileFault::writesAndKills) return size;
    state.fault = state.fault == FileFault::writesAndFails ? FileFault::fails : FileFault::kills;
    ++state.nth;
    ++state.calls.made;
    return size / 2;
}

template <class... Arguments>
auto call(Kind kind, int number, Arguments... arguments) {
    return failsNow(kind) ? -1 : syscall(number, arguments...);
}

int refused() {
    errno = EOPNOTSUPP;
    return -1;
}

int flushed() {
    if (const auto action = std::exchange(atFlush, nullptr)) action();
    return failsNow(Kind::flush) ? -1 : 0;
}

int opened(int folder, const char* name, int flags, mode_t mode) {
    if (bareDisk && (flags & O_TMPFILE) == O_TMPFILE) return refused();
    const bool makes = (flags & (O_CREAT | O_TRUNC)) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    if (makes && failsNow(Kind::make)) return -1;
    return static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
}

int replaced(long result) {
    if (result == 0) state.calls.afterReplace = true;
    return static_cast<int>(result);
}

std::atomic<long> timeTick{1};

int told(long result, struct stat* status) {
    const long tick = timeTick;
    if (result == 0) status->st_mtim.tv_nsec -= status->st_mtim.tv_nsec % tick;
    if (result == 0) status->st_ctim.tv_nsec -= status->st_ctim.tv_nsec % tick;
    return static_cast<int>(result);
}

mode_t modeOf(int flags, va_list arguments) {
    const bool makes = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return makes ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

#define OPENS(NAME, ...)                               \
    INTERPOSED int NAME(__VA_ARGS__, int flags, ...) { \
        va_list arguments;                             \
        va_start(arguments, flags);                    \
        const mode_t mode = modeOf(flags, arguments);  \
        va_end(arguments);                             \
        return opened(OPEN_AT, name, flags, mode);     \
    }
#define OPEN_AT AT_FDCWD
OPENS(open, const char* name)
OPENS(open64, const char* name)
#undef OPEN_AT
#define OPEN_AT folder
OPENS(openat, int folder, const char* name)
OPENS(openat64, int folder, const char* name)
#undef OPEN_AT

INTERPOSED int fstatat(int folder, const char* name, struct stat* status, int flags) {
    return told(syscall(SYS_newfstatat, folder, name, status, flags), status);
}
INTERPOSED int stat(const char* name, struct stat* status) { return fstatat(AT_FDCWD, name, status, 0); }
INTERPOSED int lstat(const char* name, struct stat* status) {
    return fstatat(AT_FDCWD, name, status, AT_SYMLINK_NOFOLLOW);
}
INTERPOSED int fstat(int file, struct stat* status) { return told(syscall(SYS_fstat, file, status), status); }

INTERPOSED ssize_t write(int file, const void* data, std::size_t size) {
    const std::size_t half = cutNow(size);
    if (half != size) return syscall(SYS_write, file, data, half);
    return call(Kind::write, SYS_write, file, data, size);
}
INTERPOSED ssize_t pwrite(int file, const void* data, std::size_t size, off_t place) {
    const std::size_t half = cutNow(size);
    if (half != size) return syscall(SYS_pwrite64, file, data, half, place);
    return call(Kind::write, SYS_pwrite64, file, data, size, place);
}
INTERPOSED ssize_t writev(int file, const iovec* parts, int count) {
    return call(Kind::write, SYS_writev, file, parts, count);
}
INTERPOSED int fsync(int) { return flushed(); }
INTERPOSED int fdatasync(int) { return flushed(); }
// The name is a type's too, which a function may not hide.
extern "C" __attribute__((visibility("default"))) int lockFile(int file, int operation) __asm__("flock");
int lockFile(int file, int operation) {
    struct stat status {};
    const bool isFolder = fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
    return bareDisk && isFolder ? refused() : static_cast<int>(syscall(SYS_flock, file, operation));
}
INTERPOSED int rename(const char* from, const char* to) {
    return replaced(call(Kind::rename, SYS_rename, from, to));
}
INTERPOSED int renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    return replaced(call(Kind::rename, SYS_renameat, fromFolder, from, toFolder, to));
}
INTERPOSED int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    return replaced(call(Kind::rename, SYS_renameat2, fromFolder, from, toFolder, to, flags));
}
INTERPOSED int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    return static_cast<int>(call(Kind::rename, SYS_linkat, fromFolder, from, toFolder, to, flags));
}
INTERPOSED int unlinkat(int folder, const char* name, int flags) {
    return static_cast<int>(call(Kind::other, SYS_unlinkat, folder, name, flags));
}
INTERPOSED int unlink(const char* name) { return static_cast<int>(call(Kind::other, SYS_unlink, name)); }
INTERPOSED int ftruncate(int file, off_t size) {
    return static_cast<int>(call(Kind::write, SYS_ftruncate, file, size));
}
INTERPOSED int fchmod(int file, mode_t mode) {
    return static_cast<int>(call(Kind::other, SYS_fchmod, file, mode));
}
INTERPOSED int fchown(int file, uid_t user, gid_t group) {
    return static_cast<int>(call(Kind::other, SYS_fchown, file, user, group));
}

namespace kor::test {

void setFileFault(int nth, FileFault fault) { state = {true, nth, fault, {}}; }

void setFileTimeTick(long nanoseconds) { timeTick = nanoseconds; }

void setBareDisk(bool bare) { bareDisk = bare; }

void setAtFlush(std::function<void()> action) { atFlush = std::move(action); }

FileCalls takeFileCalls() {
    state.counts = false;
    return state.calls;
}

}  // namespace kor::test
