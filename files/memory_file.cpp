#include "files/memory_file.h"

#include <cstring>
#include <limits>

#include "files/buffered_file_message.h"
#include "files/buffered_file_record.h"
#include "platform/win32.h"
#include "resources/ids.h"

namespace kor {
namespace {

constexpr DWORD kFirstCapacity = 8192;
constexpr DWORD kGrowth = 65536;
constexpr ULONGLONG kMost = std::numeric_limits<DWORD>::max();

ULONGLONG endOf(const FileData& file, DWORD count) { return ULONGLONG{file.m_dwPosition} + count; }

bool failWith(UINT textId) {
    showFileMessage(textId);
    return false;
}

bool grow(FileData& file, ULONGLONG end) {
    const ULONGLONG capacity = end + kGrowth;
    if (capacity > kMost) return false;
    const HGLOBAL block =
        GlobalReAlloc(file.m_hBuffer, static_cast<SIZE_T>(capacity), GMEM_MOVEABLE | GMEM_ZEROINIT);
    if (!block) return false;
    file.m_hBuffer = block;
    file.m_dwCapacity = static_cast<DWORD>(capacity);
    return true;
}

}  // namespace

int openMemoryFileForWriting(FileData& file) {
    resetFile(file);
    file.m_hBuffer = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT | GMEM_SHARE, kFirstCapacity);
    file.m_bMessages = 1;
    if (!file.m_hBuffer) {
        failWith(text::kFileNoMemory);
        return kNoFile;
    }
    file.m_dwCapacity = kFirstCapacity;
    return file.m_iHandle = kMemoryFile;
}

int openMemoryFileForReading(FileData& file, HGLOBAL block) {
    resetFile(file);
    file.m_bReadOnly = 1;
    if (!block) return file.m_iHandle;
    const SIZE_T size = GlobalSize(block);
    file.m_hBuffer = block;
    file.m_dwCapacity = static_cast<DWORD>(size < kMost ? size : kMost);
    file.m_dwLength = file.m_dwCapacity;
    return file.m_iHandle = kMemoryFile;
}

HGLOBAL closeMemoryFile(FileData& file) {
    if (file.m_iHandle == kNoFile) return nullptr;
    HGLOBAL block = file.m_hBuffer;
    if (block && !file.m_bReadOnly) {
        if (const HGLOBAL shrunk = GlobalReAlloc(block, file.m_dwLength, GMEM_MOVEABLE)) block = shrunk;
    }
    resetFile(file);
    return block;
}

bool readMemoryFile(FileData& file, void* data, DWORD count) {
    if (endOf(file, count) > file.m_dwCapacity || (!data && count != 0))
        return failWith(text::kFileReadDenied);
    // Never unlocked, which is required: the lock count has no effect on a block that is only read.
    const void* block = GlobalLock(file.m_hBuffer);
    if (!block) return failWith(text::kFileNoMemory);
    if (count != 0) std::memcpy(data, static_cast<const char*>(block) + file.m_dwPosition, count);
    file.m_dwPosition += count;
    return true;
}

bool writeMemoryFile(FileData& file, const void* data, DWORD count) {
    if (file.m_bReadOnly || (!data && count != 0)) return failWith(text::kFileWriteDenied);
    const ULONGLONG end = endOf(file, count);
    if (end > file.m_dwCapacity && !grow(file, end)) return failWith(text::kFileNoMemory);
    void* block = GlobalLock(file.m_hBuffer);
    if (!block) return failWith(text::kFileNoMemory);
    if (count != 0) std::memcpy(static_cast<char*>(block) + file.m_dwPosition, data, count);
    file.m_dwPosition += count;
    if (file.m_dwPosition > file.m_dwLength) file.m_dwLength = file.m_dwPosition;
    GlobalUnlock(file.m_hBuffer);
    return true;
}

bool seekMemoryFile(FileData& file, LONG offset) {
    if (offset < 0 || static_cast<DWORD>(offset) > file.m_dwCapacity) return failWith(text::kFileReadDenied);
    file.m_dwPosition = static_cast<DWORD>(offset);
    return true;
}

}  // namespace kor
