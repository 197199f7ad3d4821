// Whether files and folders are there.
#include "korutil/file_system.h"
#include "korutil/path.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

int failed(DWORD code) {
    SetLastError(code);
    return 0;
}

// @return INVALID_FILE_ATTRIBUTES also for a reserved name, which is not asked for
DWORD attributesOf(const char* path) {
    if (!path || sysIsReservedFileName(path)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_FILE_ATTRIBUTES;
    }
    const ErrorModeScope quiet(kNoErrorBoxes);
    return GetFileAttributesA(path);
}

class ReadableFile {
  public:
    explicit ReadableFile(const char* path) {
        const DWORD attributes = attributesOf(path);
        if (attributes == INVALID_FILE_ATTRIBUTES) return;
        if (attributes & FILE_ATTRIBUTE_DEVICE) {
            SetLastError(ERROR_NOT_SUPPORTED);
            return;
        }
        const ErrorModeScope quiet(kNoErrorBoxes);
        // Who writes to the file at the same time does not make it unreadable.
        file_ = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    ~ReadableFile() {
        if (isOpen()) CloseHandle(file_);
    }
    ReadableFile(const ReadableFile&) = delete;
    ReadableFile& operator=(const ReadableFile&) = delete;

    bool isOpen() const { return file_ != INVALID_HANDLE_VALUE; }

    // Of a file on a disk. @param count  receives 1 when there is a first byte, else 0
    bool readFirst(DWORD& count) const {
        if (!isOpen()) return false;
        if (GetFileType(file_) != FILE_TYPE_DISK) return failed(ERROR_NOT_SUPPORTED);
        const ErrorModeScope quiet(kNoErrorBoxes);
        char first = 0;
        return ReadFile(file_, &first, sizeof first, &count, nullptr) != FALSE;
    }

  private:
    HANDLE file_ = INVALID_HANDLE_VALUE;
};

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysExistsDir(const char* path) {
    const DWORD attributes = kor::attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

int KORUTIL_CALL sysExistsPath(const char* path) {
    return kor::attributesOf(path) != INVALID_FILE_ATTRIBUTES;
}

int KORUTIL_CALL sysExistsFile(const char* path) {
    const DWORD attributes = kor::attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

int KORUTIL_CALL sysReadableFile(const char* path) {
    const kor::ReadableFile file(path);
    DWORD count = 0;
    return file.readFirst(count);
}

int KORUTIL_CALL sysReadableFileFast(const char* path) { return kor::ReadableFile(path).isOpen(); }

int KORUTIL_CALL sysIsFileOK(const char* path) {
    const kor::ReadableFile file(path);
    DWORD count = 0;
    if (!file.readFirst(count)) return 0;
    return count == 1 ? 1 : kor::failed(ERROR_HANDLE_EOF);
}
