// The status of a file, its right to be written, and deleting it.
#include "files/file_seconds.h"
#include "files/read_only.h"
#include "korutil/file_system.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

int failed(DWORD code) {
    SetLastError(code);
    return 0;
}

// What a handle tells of a file, opened for nothing but that.
bool informationOf(const char* path, BY_HANDLE_FILE_INFORMATION& information) {
    HANDLE file = CreateFileA(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const bool done = GetFileInformationByHandle(file, &information) != FALSE;
    const DWORD code = GetLastError();
    CloseHandle(file);
    SetLastError(code);
    return done;
}

DWORD modeOf(DWORD attributes) {
    const bool writable = !(attributes & FILE_ATTRIBUTE_READONLY);
    const bool folder = attributes & FILE_ATTRIBUTE_DIRECTORY;
    return static_cast<DWORD>(kModeRead | (writable ? kModeWrite : 0) | (folder ? kModeFolder : kModeFile));
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysFileStatus(const char* path, SysFileStatus* status) {
    if (!path || !status) return kor::failed(ERROR_INVALID_PARAMETER);
    const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
    BY_HANDLE_FILE_INFORMATION information{};
    if (!kor::informationOf(path, information)) return 0;
    const ULONGLONG size = ULONGLONG{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
    const bool folder = information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
    *status = {folder ? 0 : static_cast<LONGLONG>(size),
               kor::secondsOf(information.ftCreationTime),
               kor::secondsOf(information.ftLastAccessTime),
               kor::secondsOf(information.ftLastWriteTime),
               information.dwFileAttributes,
               kor::modeOf(information.dwFileAttributes)};
    return 1;
}

int KORUTIL_CALL sysChmod(const char* path, int mode) {
    if (!path) return kor::failed(ERROR_INVALID_PARAMETER);
    const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
    const DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) return 0;
    const DWORD others = attributes & ~FILE_ATTRIBUTE_READONLY;
    const DWORD wanted = (mode & kModeWrite) ? others : others | FILE_ATTRIBUTE_READONLY;
    return SetFileAttributesA(path, wanted) != FALSE;
}

int KORUTIL_CALL sysDeleteFileEx(const char* path, DWORD options) {
    if (!path) return kor::failed(ERROR_INVALID_PARAMETER);
    const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
    if (DeleteFileA(path)) return 1;
    const DWORD code = GetLastError();
    if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) return (options & kDeleteMissing) != 0;
    const bool tryAgain = code == ERROR_ACCESS_DENIED && (options & kDeleteReadOnly);
    return tryAgain ? kor::removeReadOnly(path, DeleteFileA) : kor::failed(code);
}
