// The calls that serve files on disk and in memory alike.
#include "korutil/buffered_file.h"

#include <limits>

#include "files/buffered_file_record.h"
#include "files/disk_file.h"
#include "files/memory_file.h"

namespace kor {
namespace {

constexpr LONG kNoValue = -1;

LONG asResult(LONGLONG value) {
    using Limits = std::numeric_limits<LONG>;
    return value >= Limits::min() && value <= Limits::max() ? static_cast<LONG>(value) : kNoValue;
}

LONGLONG positionOf(int handle) {
    return handle == kMemoryFile ? currentFile().m_dwPosition : diskFilePosition(handle);
}

LONGLONG lengthOf(int handle) {
    return handle == kMemoryFile ? currentFile().m_dwLength : diskFileLength(handle);
}

}  // namespace
}  // namespace kor

using namespace kor;

int KORUTIL_CALL fileDoOpen(const char* name, int flags) {
    FileData& file = currentFile();
    const CString former = file.m_strName;  // which may be what `name` points into
    file.m_bMessages = 1;
    fileSetName(name);
    return openDiskFile(file, name ? name : "", flags);
}

int KORUTIL_CALL fileDoClose(int handle) {
    if (handle == kNoFile) return kNoFile;
    if (handle != kMemoryFile) closeDiskFile(handle);
    resetFile(currentFile());
    return 1;
}

int KORUTIL_CALL fileOpenWriteBuffer() { return openMemoryFileForWriting(currentFile()); }

HGLOBAL KORUTIL_CALL fileCloseWriteBuffer() { return closeMemoryFile(currentFile()); }

HGLOBAL KORUTIL_CALL fileGetWriteBuffer() { return currentFile().m_hBuffer; }

int KORUTIL_CALL fileOpenReadBuffer(HGLOBAL block) { return openMemoryFileForReading(currentFile(), block); }

BOOL KORUTIL_CALL file_hread(int handle, void* data, DWORD count) {
    return handle == kMemoryFile ? readMemoryFile(currentFile(), data, count)
                                 : readDiskFile(handle, data, count);
}

BOOL KORUTIL_CALL file_hwrite(int handle, const void* data, DWORD count) {
    return handle == kMemoryFile ? writeMemoryFile(currentFile(), data, count)
                                 : writeDiskFile(handle, data, count);
}

BOOL KORUTIL_CALL fileGotoOffset(int handle, LONG offset) {
    return handle == kMemoryFile ? seekMemoryFile(currentFile(), offset) : seekDiskFile(handle, offset);
}

LONG KORUTIL_CALL fileGetPosition(int handle) { return asResult(positionOf(handle)); }

LONG KORUTIL_CALL fileGetLength(int handle) { return asResult(lengthOf(handle)); }

LONG KORUTIL_CALL fileGetAvailable(int handle) {
    // Of no file it is the difference of two failures.
    if (handle == kNoFile) return 0;
    const LONGLONG length = lengthOf(handle);
    const LONGLONG position = positionOf(handle);
    return length < 0 || position < 0 ? kNoValue : asResult(length - position);
}
