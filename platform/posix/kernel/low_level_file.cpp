#include "platform/posix/kernel/low_level_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <map>
#include <mutex>
#include <new>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/transfer.h"
#include "platform/posix/kernel/with_memory.h"

namespace kor {
namespace {

// The handles of the descriptors that were opened here. A native close() behind our back leaves an entry,
// which the next file of that number replaces.
class Descriptors {
  public:
    using Files = std::map<int, HANDLE>;
    using Place = Files::node_type;

    static Descriptors& instance() {
        // Never destroyed: other objects' destructors may close files later.
        alignas(Descriptors) static std::byte storage[sizeof(Descriptors)];
        static Descriptors& descriptors = *new (storage) Descriptors;
        return descriptors;
    }

    static Place makePlace() {
        Files files;
        files.emplace(0, nullptr);
        return files.extract(files.begin());
    }

    void fill(Place place, int descriptor, HANDLE handle) {
        const std::lock_guard lock(mutex_);
        files_.erase(descriptor);
        place.key() = descriptor;
        place.mapped() = handle;
        files_.insert(std::move(place));
    }

    /// @return null for a descriptor that was opened elsewhere
    HANDLE find(int descriptor) {
        const std::lock_guard lock(mutex_);
        const auto found = files_.find(descriptor);
        return found != files_.end() ? found->second : nullptr;
    }

    HANDLE remove(int descriptor) {
        const std::lock_guard lock(mutex_);
        const Place place = files_.extract(descriptor);
        return place ? place.mapped() : nullptr;
    }

  private:
    std::mutex mutex_;
    Files files_;
};

struct Pair {
    DWORD code;
    int number;
};

constexpr Pair kPairs[] = {
    {ERROR_FILE_NOT_FOUND, ENOENT},       {ERROR_PATH_NOT_FOUND, ENOENT}, {ERROR_TOO_MANY_OPEN_FILES, EMFILE},
    {ERROR_ACCESS_DENIED, EACCES},        {ERROR_INVALID_HANDLE, EBADF},  {ERROR_NOT_ENOUGH_MEMORY, ENOMEM},
    {ERROR_INVALID_DRIVE, ENOENT},        {ERROR_WRITE_PROTECT, EACCES},  {ERROR_NOT_READY, EACCES},
    {ERROR_SHARING_VIOLATION, EACCES},    {ERROR_LOCK_VIOLATION, EACCES}, {ERROR_BAD_NETPATH, ENOENT},
    {ERROR_FILE_EXISTS, EEXIST},          {ERROR_BROKEN_PIPE, EPIPE},     {ERROR_DISK_FULL, ENOSPC},
    {ERROR_SEEK_ON_DEVICE, EACCES},       {ERROR_BAD_PATHNAME, ENOENT},   {ERROR_ALREADY_EXISTS, EEXIST},
    {ERROR_FILENAME_EXCED_RANGE, ENOENT},
};

int failed(int number) {
    errno = number;
    return -1;
}

// Sets errno for the last error. Everything that the runtime does not know is a wrong argument to it.
int failedByLastError() {
    const DWORD code = GetLastError();
    for (const Pair& pair : kPairs) {
        if (pair.code == code) return failed(pair.number);
    }
    return failed(EINVAL);
}

// For reading and writing, where a refused access means the wrong kind of descriptor.
int transferFailed() { return GetLastError() == ERROR_ACCESS_DENIED ? failed(EBADF) : failedByLastError(); }

// For a native call that set errno.
int failedByErrno() {
    const int number = errno;
    SetLastError(errorFromErrno(number));
    return failed(number);
}

DWORD accessOf(int flags) {
    constexpr DWORD kAccess[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
    return kAccess[flags & 3] | (flags & _O_TEMPORARY ? DELETE : 0);
}

DWORD dispositionOf(int flags) {
    if ((flags & _O_CREAT) && (flags & _O_EXCL)) return CREATE_NEW;
    if (flags & _O_CREAT) return flags & _O_TRUNC ? CREATE_ALWAYS : OPEN_ALWAYS;
    return flags & _O_TRUNC ? TRUNCATE_EXISTING : OPEN_EXISTING;
}

bool appendAlways(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_APPEND) == 0;
}

int openDescriptor(const char* name, int flags, mode_t mode) {
    if ((flags & 3) == 3) return failed(EINVAL);
    // What needs memory comes first: what is made or emptied cannot be undone.
    Descriptors::Place place = Descriptors::makePlace();
    const bool temporary = (flags & _O_TEMPORARY) != 0;
    const bool readOnly = (flags & _O_CREAT) && !(mode & _S_IWRITE);
    const HANDLE handle = createFile(name, accessOf(flags),
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | (temporary ? FILE_SHARE_DELETE : 0),
                                     dispositionOf(flags),
                                     (readOnly ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL) |
                                         (temporary ? FILE_FLAG_DELETE_ON_CLOSE : 0),
                                     mode & 0666);
    if (handle == INVALID_HANDLE_VALUE) return failedByLastError();
    const int descriptor = openedFile(handle)->descriptor();
    if ((flags & _O_APPEND) && !appendAlways(descriptor)) {
        const int number = errno;
        CloseHandle(handle);
        errno = number;
        return failedByErrno();
    }
    Descriptors::instance().fill(std::move(place), descriptor, handle);
    return descriptor;
}

LONGLONG seek(int descriptor, LONGLONG offset, int origin) {
    if (origin < 0 || origin > 2) return failed(EINVAL);
    LARGE_INTEGER place{};
    if (const HANDLE handle = Descriptors::instance().find(descriptor)) {
        place.QuadPart = offset;
        if (SetFilePointerEx(handle, place, &place, static_cast<DWORD>(origin))) return place.QuadPart;
        return failedByLastError();
    }
    const off_t position = lseek(descriptor, offset, origin);
    return position >= 0 ? position : failedByErrno();
}

int countOf(const Transfer& transfer) {
    if (transfer.error == 0) return static_cast<int>(transfer.done);
    errno = transfer.error;
    return failedByErrno();
}

}  // namespace
}  // namespace kor

using namespace kor;

KORPLATFORM_API int _open(const char* name, int flags, ...) {
    mode_t mode = 0;
    if (flags & _O_CREAT) {
        va_list list;
        va_start(list, flags);
        mode = static_cast<mode_t>(va_arg(list, int));
        va_end(list);
    }
    try {
        return openDescriptor(name, flags, mode);
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failed(ENOMEM);
    }
}

KORPLATFORM_API int _close(int descriptor) {
    if (const HANDLE handle = Descriptors::instance().remove(descriptor)) {
        return CloseHandle(handle) ? 0 : failedByLastError();
    }
    return close(descriptor) == 0 ? 0 : failedByErrno();
}

KORPLATFORM_API int _read(int descriptor, void* data, unsigned count) {
    if (count > INT_MAX) return failed(EINVAL);
    if (const HANDLE handle = Descriptors::instance().find(descriptor)) {
        DWORD done = 0;
        if (!ReadFile(handle, data, count, &done, nullptr)) return transferFailed();
        return static_cast<int>(done);
    }
    const auto raw = [descriptor](void* to, std::size_t size) { return read(descriptor, to, size); };
    return countOf(transferAll(raw, static_cast<char*>(data), count, true));
}

KORPLATFORM_API int _write(int descriptor, const void* data, unsigned count) {
    if (count > INT_MAX) return failed(EINVAL);
    if (const HANDLE handle = Descriptors::instance().find(descriptor)) {
        DWORD done = 0;
        if (!WriteFile(handle, data, count, &done, nullptr)) return transferFailed();
        return static_cast<int>(done);
    }
    const auto raw = [descriptor](const void* from, std::size_t size) {
        return write(descriptor, from, size);
    };
    return countOf(transferAll(raw, static_cast<const char*>(data), count));
}

KORPLATFORM_API LONGLONG _lseeki64(int descriptor, LONGLONG offset, int origin) {
    return seek(descriptor, offset, origin);
}

KORPLATFORM_API LONGLONG _telli64(int descriptor) { return seek(descriptor, 0, FILE_CURRENT); }

KORPLATFORM_API LONGLONG _filelengthi64(int descriptor) {
    if (const HANDLE handle = Descriptors::instance().find(descriptor)) {
        LARGE_INTEGER size{};
        return GetFileSizeEx(handle, &size) ? size.QuadPart : failedByLastError();
    }
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return failedByErrno();
    return S_ISREG(status.st_mode) ? status.st_size : 0;
}
