// Position and size of open files.
#include <unistd.h>

#include <cerrno>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/open_file.h"

namespace {

using kor::openedFile;

constexpr DWORD lowHalf(std::int64_t value) { return static_cast<DWORD>(value & 0xFFFFFFFF); }
constexpr DWORD highHalf(std::int64_t value) { return static_cast<DWORD>(value >> 32); }

std::int64_t noValue(DWORD code) {
    SetLastError(code);
    return -1;
}

// @return the size, -1 with the last error set
std::int64_t sizeOf(HANDLE handle) {
    const auto file = openedFile(handle);
    if (!file) return -1;
    struct stat status {};
    if (fstat(file->descriptor(), &status) != 0) return noValue(kor::errorFromErrno(errno));
    return S_ISREG(status.st_mode) ? status.st_size : 0;
}

// The file's present position or end, -1 with errno set.
std::int64_t startOf(int descriptor, DWORD method) {
    if (method == FILE_BEGIN) return 0;
    if (method == FILE_CURRENT) return lseek(descriptor, 0, SEEK_CUR);
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? status.st_size : -1;
}

// @param fits  whether the caller can be told a position of more than 32 bits
// @return the new position, -1 with the last error set
std::int64_t moved(HANDLE handle, std::int64_t distance, DWORD method, bool fits) {
    const auto file = openedFile(handle);
    if (!file) return -1;
    if (method > FILE_END) return noValue(ERROR_INVALID_PARAMETER);
    const std::int64_t start = startOf(file->descriptor(), method);
    if (start < 0) return noValue(kor::errorFromErrno(errno));
    std::int64_t target = 0;
    if (__builtin_add_overflow(start, distance, &target)) return noValue(ERROR_INVALID_PARAMETER);
    if (target < 0) return noValue(ERROR_NEGATIVE_SEEK);
    if (!fits && highHalf(target) != 0) return noValue(ERROR_INVALID_PARAMETER);
    if (lseek(file->descriptor(), target, SEEK_SET) < 0) return noValue(kor::errorFromErrno(errno));
    return target;
}

// A low half that looks like the failure value is told from it by the last error.
DWORD lowResult(std::int64_t value) {
    if (value >= 0 && lowHalf(value) == INVALID_FILE_SIZE) SetLastError(NO_ERROR);
    return lowHalf(value);
}

}  // namespace

KORPLATFORM_API DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method) {
    std::int64_t whole = distance;
    if (high)
        whole = static_cast<std::int64_t>(std::uint64_t{static_cast<DWORD>(*high)} << 32 |
                                          static_cast<DWORD>(distance));
    const std::int64_t position = moved(file, whole, method, high != nullptr);
    if (high && position >= 0) *high = static_cast<LONG>(highHalf(position));
    return lowResult(position);
}

KORPLATFORM_API BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position,
                                             DWORD method) {
    const std::int64_t target = moved(file, distance.QuadPart, method, true);
    if (target < 0) return FALSE;
    if (position) position->QuadPart = target;
    return TRUE;
}

KORPLATFORM_API DWORD WINAPI GetFileSize(HANDLE file, LPDWORD high) {
    const std::int64_t size = sizeOf(file);
    if (high && size >= 0) *high = highHalf(size);
    return lowResult(size);
}

KORPLATFORM_API BOOL WINAPI GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
    const std::int64_t value = sizeOf(file);
    if (value < 0) return FALSE;
    size->QuadPart = value;
    return TRUE;
}

KORPLATFORM_API BOOL WINAPI SetEndOfFile(HANDLE handle) {
    const auto file = openedFile(handle, kor::kWrites);
    if (!file) return FALSE;
    const off_t position = lseek(file->descriptor(), 0, SEEK_CUR);
    if (position < 0 || ftruncate(file->descriptor(), position) != 0) return kor::failWithErrno();
    return TRUE;
}

KORPLATFORM_API DWORD WINAPI GetFileType(HANDLE handle) {
    const auto file = openedFile(handle);
    if (!file) return FILE_TYPE_UNKNOWN;
    struct stat status {};
    if (fstat(file->descriptor(), &status) != 0) {
        kor::failWithErrno();
        return FILE_TYPE_UNKNOWN;
    }
    if (S_ISCHR(status.st_mode)) return FILE_TYPE_CHAR;
    return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) ? FILE_TYPE_PIPE : FILE_TYPE_DISK;
}
