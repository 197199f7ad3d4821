#include "files/disk_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>

#include "files/buffered_file_message.h"
#include "files/transfer_loop.h"
#include "platform/win32.h"
#include "resources/ids.h"

namespace kor {
namespace {

constexpr int kAccessFlags = _O_RDONLY | _O_WRONLY | _O_RDWR;

bool isMarkedReadOnly(const char* name) {
    const DWORD attributes = GetFileAttributesA(name);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
}

// Any other failure of an open for writing shows nothing, which is required.
void showOpenFailure(const char* name, int flags, bool inUse) {
    if (inUse) {
        showFileMessage(text::kFileInUse);
    } else if ((flags & kAccessFlags) == _O_RDONLY) {
        showFileMessage(text::kFileFailed);
    } else if (isMarkedReadOnly(name)) {
        showFileMessage(text::kFileReadOnly);
    }
}

bool failWith(UINT textId) {
    showFileMessage(textId);
    return false;
}

// The runtime may end the process over a descriptor that cannot be one.
bool isDescriptor(int number) { return number >= 0; }

}  // namespace

int openDiskFile(FileData& file, const char* name, int flags) {
    file.m_dwLength = 0;
    file.m_iHandle = _open(name, flags, _S_IREAD | _S_IWRITE);
    if (file.m_iHandle < 0) {
        const bool inUse = errno == EACCES && GetLastError() == ERROR_SHARING_VIOLATION;
        file.m_iHandle = kNoFile;
        showOpenFailure(name, flags, inUse);
        return kNoFile;
    }
    const LONGLONG length = std::max(diskFileLength(file.m_iHandle), LONGLONG{0});
    constexpr LONGLONG kMost = std::numeric_limits<DWORD>::max();
    file.m_dwLength = static_cast<DWORD>(std::min(length, kMost));
    return file.m_iHandle;
}

void closeDiskFile(int descriptor) {
    if (isDescriptor(descriptor)) _close(descriptor);
}

bool readDiskFile(int descriptor, void* data, DWORD count) {
    const auto raw = [descriptor](void* to, unsigned size) { return _read(descriptor, to, size); };
    const bool possible = isDescriptor(descriptor) && (data || count == 0);
    return (possible && transfersAll(raw, static_cast<char*>(data), count)) ||
           failWith(text::kFileReadDenied);
}

bool writeDiskFile(int descriptor, const void* data, DWORD count) {
    const auto raw = [descriptor](const void* from, unsigned size) { return _write(descriptor, from, size); };
    const bool possible = isDescriptor(descriptor) && (data || count == 0);
    return (possible && transfersAll(raw, static_cast<const char*>(data), count)) ||
           failWith(text::kFileWriteDenied);
}

bool seekDiskFile(int descriptor, LONG offset) {
    return (isDescriptor(descriptor) && offset >= 0 && _lseeki64(descriptor, offset, SEEK_SET) >= 0) ||
           failWith(text::kFileReadDenied);
}

LONGLONG diskFilePosition(int descriptor) { return isDescriptor(descriptor) ? _telli64(descriptor) : -1; }

LONGLONG diskFileLength(int descriptor) { return isDescriptor(descriptor) ? _filelengthi64(descriptor) : -1; }

}  // namespace kor
