// CopyFileA.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/transfer.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

class OpenedHandle {
  public:
    explicit OpenedHandle(HANDLE handle) : handle_(handle) {}
    ~OpenedHandle() { close(); }
    OpenedHandle(const OpenedHandle&) = delete;
    OpenedHandle& operator=(const OpenedHandle&) = delete;

    void close() {
        if (isOpen()) CloseHandle(handle_);
        handle_ = INVALID_HANDLE_VALUE;
    }
    bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    int descriptor() const { return kor::openedFile(handle_)->descriptor(); }

  private:
    HANDLE handle_;
};

// @return 0 or the errno of what failed
int copyContents(int from, int to) {
    std::array<char, 65536> block;
    for (;;) {
        const auto in =
            kor::transferAll([from](char* data, std::size_t size) { return read(from, data, size); },
                             block.data(), block.size());
        if (in.error != 0 || in.done == 0) return in.error;
        const auto out =
            kor::transferAll([to](const char* data, std::size_t size) { return write(to, data, size); },
                             std::as_const(block).data(), in.done);
        if (out.error != 0 || out.done < in.done) return out.error != 0 ? out.error : ENOSPC;
    }
}

// The target keeps its own rights but for the one that READONLY means. @return 0 or errno
int copyAttributes(int from, int to) {
    struct stat source {};
    struct stat target {};
    if (fstat(from, &source) != 0 || fstat(to, &target) != 0) return errno;
    if (!S_ISREG(target.st_mode)) return 0;
    const timespec times[2] = {{0, UTIME_OMIT}, source.st_mtim};
    if (futimens(to, times) != 0) return errno;
    const bool readOnly = kor::isReadOnly(source.st_mode);
    return readOnly && fchmod(to, target.st_mode & 07777 & ~mode_t{0222}) != 0 ? errno : 0;
}

}  // namespace

KORPLATFORM_API BOOL WINAPI CopyFileA(LPCSTR from, LPCSTR to, BOOL failIfExists) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const OpenedHandle source(CreateFileA(from, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
        if (!source.isOpen()) return FALSE;
        OpenedHandle target(CreateFileA(to, GENERIC_WRITE, 0, nullptr,
                                        failIfExists ? CREATE_NEW : CREATE_ALWAYS, 0, nullptr));
        if (!target.isOpen()) return FALSE;
        int error = copyContents(source.descriptor(), target.descriptor());
        if (error == 0) error = copyAttributes(source.descriptor(), target.descriptor());
        if (error == 0) return TRUE;
        target.close();
        DeleteFileA(to);
        return kor::failWith(kor::errorFromErrno(error));
    });
}
