#include "korutil/framework/mem_file.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"
#include "platform/win32.h"

IMPLEMENT_DYNAMIC(CMemFile, CFile)

namespace {

// No block of memory is larger.
constexpr SIZE_T kMost = std::numeric_limits<SIZE_T>::max() / 2;

[[noreturn]] void throwNotSupported(const char* fileName) {
    AfxThrowFileException(CFileException::generic, ERROR_NOT_SUPPORTED, fileName);
}

// The sum, or an exception when no block could have that size.
SIZE_T checkedSum(SIZE_T first, SIZE_T second) {
    if (first > kMost || second > kMost - first) AfxThrowMemoryException();
    return first + second;
}

// The smallest multiple of `unit` that is not below the value; the value itself when there is none.
SIZE_T roundedUp(SIZE_T value, SIZE_T unit) {
    const SIZE_T missing = (unit - value % unit) % unit;
    return missing <= kMost - value ? value + missing : value;
}

// How many of the bytes that are wanted stand behind the position.
UINT readable(SIZE_T position, SIZE_T size, UINT wanted) {
    if (position >= size) return 0;
    return static_cast<UINT>(std::min<SIZE_T>(wanted, size - position));
}

// Bytes were written at the position, and the room was there: moves behind them.
void advance(BYTE* block, SIZE_T& position, SIZE_T& size, SIZE_T count) {
    if (count == 0) return;
    if (position > size) std::memset(block + size, 0, position - size);
    position += count;
    size = std::max(size, position);
}

}  // namespace

CMemFile::CMemFile(UINT growBytes)
    : m_nGrowBytes(growBytes),
      m_nPosition(0),
      m_nBufferSize(0),
      m_nFileSize(0),
      m_lpBuffer(nullptr),
      m_bAutoDelete(TRUE) {}

CMemFile::CMemFile(BYTE* buffer, UINT bufferSize, UINT growBytes) : CMemFile(growBytes) {
    CMemFile::Attach(buffer, bufferSize, growBytes);
}

CMemFile::~CMemFile() { CMemFile::Close(); }

void CMemFile::Attach(BYTE* buffer, UINT bufferSize, UINT growBytes) {
    Close();
    m_nGrowBytes = growBytes;
    m_nBufferSize = buffer != nullptr ? bufferSize : 0;
    m_nFileSize = growBytes == 0 ? m_nBufferSize : 0;
    m_lpBuffer = buffer;
    m_bAutoDelete = FALSE;
}

BYTE* CMemFile::Detach() {
    m_nPosition = m_nBufferSize = m_nFileSize = 0;
    m_bAutoDelete = TRUE;
    return std::exchange(m_lpBuffer, nullptr);
}

void CMemFile::Close() {
    const BOOL own = m_bAutoDelete;
    BYTE* block = Detach();
    if (own && block != nullptr) Free(block);
}

void CMemFile::Abort() { Close(); }
void CMemFile::Flush() {}

ULONGLONG CMemFile::GetPosition() const { return m_nPosition; }
ULONGLONG CMemFile::GetLength() const { return m_nFileSize; }

BOOL CMemFile::Open(const char* fileName, UINT, CFileException* error) {
    if (error != nullptr) {
        error->m_cause = CFileException::generic;
        error->m_lOsError = ERROR_NOT_SUPPORTED;
        error->m_strFileName = fileName;
    }
    return FALSE;
}

CFile* CMemFile::Duplicate() const { throwNotSupported(m_strFileName); }
void CMemFile::LockRange(ULONGLONG, ULONGLONG) { throwNotSupported(m_strFileName); }
void CMemFile::UnlockRange(ULONGLONG, ULONGLONG) { throwNotSupported(m_strFileName); }

ULONGLONG CMemFile::Seek(LONGLONG offset, UINT from) {
    const SIZE_T bases[] = {0, m_nPosition, m_nFileSize};
    if (from > end) AfxThrowFileException(CFileException::badSeek, ERROR_INVALID_PARAMETER, m_strFileName);
    const ULONGLONG base = bases[from];
    const ULONGLONG distance =
        offset < 0 ? 0 - static_cast<ULONGLONG>(offset) : static_cast<ULONGLONG>(offset);
    if (offset < 0 && distance > base)
        AfxThrowFileException(CFileException::badSeek, ERROR_NEGATIVE_SEEK, m_strFileName);
    if (offset >= 0 && distance > std::max<ULONGLONG>(kMost, base) - base)
        AfxThrowFileException(CFileException::badSeek, ERROR_INVALID_PARAMETER, m_strFileName);
    m_nPosition = static_cast<SIZE_T>(offset < 0 ? base - distance : base + distance);
    return m_nPosition;
}

void CMemFile::SetLength(ULONGLONG newLength) {
    if (newLength > kMost) AfxThrowMemoryException();
    const SIZE_T length = static_cast<SIZE_T>(newLength);
    if (length > m_nBufferSize) makeRoom(length);
    if (length > m_nFileSize) std::memset(m_lpBuffer + m_nFileSize, 0, length - m_nFileSize);
    m_nFileSize = length;
    m_nPosition = std::min(m_nPosition, m_nFileSize);
}

UINT CMemFile::Read(void* buffer, UINT count) {
    const UINT there = readable(m_nPosition, m_nFileSize, count);
    if (there == 0) return 0;
    Memcpy(static_cast<BYTE*>(buffer), m_lpBuffer + m_nPosition, there);
    m_nPosition += there;
    return there;
}

void CMemFile::Write(const void* buffer, UINT count) {
    if (count == 0) return;
    const SIZE_T needed = checkedSum(m_nPosition, count);
    if (needed > m_nBufferSize) makeRoom(needed);
    Memcpy(m_lpBuffer + m_nPosition, static_cast<const BYTE*>(buffer), count);
    advance(m_lpBuffer, m_nPosition, m_nFileSize, count);
}

UINT CMemFile::GetBufferPtr(UINT command, UINT count, void** bufferStart, void** bufferEnd) {
    if (command == bufferCheck) return 1;
    if (command == bufferCommit) {
        const SIZE_T room = m_nBufferSize - std::min(m_nBufferSize, m_nPosition);
        advance(m_lpBuffer, m_nPosition, m_nFileSize, std::min<SIZE_T>(count, room));
        return 0;
    }
    if ((command != bufferRead && command != bufferWrite) || bufferStart == nullptr || bufferEnd == nullptr)
        return 0;
    *bufferStart = *bufferEnd = nullptr;
    if (command == bufferRead) count = readable(m_nPosition, m_nFileSize, count);
    if (count == 0) return 0;
    const SIZE_T needed = checkedSum(m_nPosition, count);
    if (command == bufferWrite && needed > m_nBufferSize) makeRoom(needed);
    *bufferStart = m_lpBuffer + m_nPosition;
    *bufferEnd = m_lpBuffer + m_nPosition + count;
    if (command == bufferRead) m_nPosition += count;
    return count;
}

void CMemFile::makeRoom(SIZE_T length) {
    GrowFile(length);
    if (length > m_nBufferSize) AfxThrowMemoryException();
}

void CMemFile::GrowFile(SIZE_T newLength) {
    if (newLength <= m_nBufferSize) return;
    if (m_nGrowBytes == 0) AfxThrowMemoryException();
    const SIZE_T half = m_nBufferSize / 2;
    const SIZE_T ample =
        half <= kMost - m_nBufferSize ? std::max(newLength, m_nBufferSize + half) : newLength;
    for (const SIZE_T size : {roundedUp(ample, m_nGrowBytes), newLength}) {
        BYTE* block = m_lpBuffer != nullptr ? Realloc(m_lpBuffer, size) : Alloc(size);
        if (block == nullptr) continue;
        m_lpBuffer = block;
        m_nBufferSize = size;
        return;
    }
    AfxThrowMemoryException();
}

BYTE* CMemFile::Alloc(SIZE_T bytes) { return static_cast<BYTE*>(std::malloc(bytes)); }
BYTE* CMemFile::Realloc(BYTE* block, SIZE_T bytes) { return static_cast<BYTE*>(std::realloc(block, bytes)); }
void CMemFile::Free(BYTE* block) { std::free(block); }

BYTE* CMemFile::Memcpy(BYTE* target, const BYTE* source, SIZE_T bytes) {
    std::memcpy(target, source, bytes);
    return target;
}
