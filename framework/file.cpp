#include "korutil/framework/file.h"

#include <algorithm>
#include <climits>
#include <memory>

#include "korutil/framework/file_exception.h"
#include "platform/win32.h"

IMPLEMENT_DYNAMIC(CFile, CObject)

const HANDLE CFile::hFileNull = INVALID_HANDLE_VALUE;

namespace {

constexpr DWORD kAlreadyInitialized = 1247;

[[noreturn]] void throwLastError(const char* fileName) {
    CFileException::ThrowOsError(static_cast<LONG>(GetLastError()), fileName);
}

CString fullPathOf(const char* fileName) {
    char path[MAX_PATH];
    const DWORD length = fileName != nullptr ? GetFullPathNameA(fileName, MAX_PATH, path, nullptr) : 0;
    if (length == 0) return fileName;
    if (length < MAX_PATH) return CString(path, static_cast<int>(length));
    CString longPath;
    const DWORD got =
        GetFullPathNameA(fileName, length, longPath.GetBuffer(static_cast<int>(length)), nullptr);
    longPath.ReleaseBuffer(got < length ? static_cast<int>(got) : 0);
    return longPath;
}

struct OpenMode {
    DWORD access;
    DWORD share;
    DWORD disposition;
};

// What the flags mean to the system; FALSE for a combination that means nothing.
bool translate(UINT flags, OpenMode& mode) {
    constexpr DWORD kAccess[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
    constexpr DWORD kShare[] = {0, 0, FILE_SHARE_READ, FILE_SHARE_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE};
    const UINT access = flags & 0x3;
    const UINT share = (flags & 0x70) >> 4;
    if (access >= std::size(kAccess) || share >= std::size(kShare)) return false;
    mode.access = kAccess[access];
    mode.share = kShare[share];
    const bool keep = (flags & CFile::modeNoTruncate) != 0;
    mode.disposition = (flags & CFile::modeCreate) == 0 ? OPEN_EXISTING : keep ? OPEN_ALWAYS : CREATE_ALWAYS;
    return true;
}

// Opens a file; on failure the handle is `hFileNull` and the last error says why.
HANDLE openHandle(const char* path, UINT flags) {
    OpenMode mode{};
    if (!translate(flags, mode)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return CFile::hFileNull;
    }
    return CreateFileA(path, mode.access, mode.share, nullptr, mode.disposition, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
}

// The halves of a position, as the system's lock functions take them.
DWORD low(ULONGLONG value) { return static_cast<DWORD>(value & 0xFFFFFFFF); }
DWORD high(ULONGLONG value) { return static_cast<DWORD>(value >> 32); }

// INVALID_HANDLE_VALUE is also the handle of the current process: it must not reach every function of the
// system.
HANDLE openHandleOf(const CFile& file, const char* fileName) {
    if (file.m_hFile == CFile::hFileNull) CFileException::ThrowOsError(ERROR_INVALID_HANDLE, fileName);
    return file.m_hFile;
}

}  // namespace

CFile::CFile() : m_hFile(INVALID_HANDLE_VALUE), m_bCloseOnDelete(FALSE) {}
CFile::CFile(HANDLE file) : m_hFile(file), m_bCloseOnDelete(FALSE) {}

CFile::CFile(const char* fileName, UINT openFlags) : CFile() {
    CFileException error(CFileException::none);
    if (!CFile::Open(fileName, openFlags, &error))
        AfxThrowFileException(error.m_cause, error.m_lOsError, error.m_strFileName);
}

CFile::~CFile() {
    if (m_bCloseOnDelete) CFile::Abort();
}

BOOL CFile::Open(const char* fileName, UINT openFlags, CFileException* error) {
    CString path = fullPathOf(fileName);
    DWORD code = kAlreadyInitialized;
    if (m_hFile == hFileNull) {
        m_hFile = openHandle(fileName, openFlags);
        if (m_hFile != hFileNull) {
            m_strFileName = path;
            m_bCloseOnDelete = TRUE;
            return TRUE;
        }
        code = GetLastError();
    }
    if (error != nullptr) {
        error->m_cause = CFileException::OsErrorToException(static_cast<LONG>(code));
        error->m_lOsError = static_cast<LONG>(code);
        error->m_strFileName = path;
    }
    return FALSE;
}

CFile* CFile::Duplicate() const {
    auto copy = std::make_unique<CFile>();
    const HANDLE file = openHandleOf(*this, m_strFileName);
    const HANDLE process = GetCurrentProcess();
    copy->m_strFileName = m_strFileName;
    if (!DuplicateHandle(process, file, process, &copy->m_hFile, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
        copy->m_hFile = hFileNull;
        throwLastError(m_strFileName);
    }
    copy->m_bCloseOnDelete = TRUE;
    return copy.release();
}

ULONGLONG CFile::GetPosition() const {
    LARGE_INTEGER none{};
    LARGE_INTEGER position{};
    if (!SetFilePointerEx(openHandleOf(*this, m_strFileName), none, &position, FILE_CURRENT))
        throwLastError(m_strFileName);
    return static_cast<ULONGLONG>(position.QuadPart);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from) {
    static_assert(FILE_BEGIN == begin && FILE_CURRENT == current && FILE_END == end);
    LARGE_INTEGER distance{};
    distance.QuadPart = offset;
    LARGE_INTEGER position{};
    if (!SetFilePointerEx(openHandleOf(*this, m_strFileName), distance, &position, from)) {
        const DWORD code = GetLastError();
        // Whatever the system calls it, a position that cannot be is a bad position.
        if (code == ERROR_INVALID_PARAMETER)
            AfxThrowFileException(CFileException::badSeek, static_cast<LONG>(code), m_strFileName);
        CFileException::ThrowOsError(static_cast<LONG>(code), m_strFileName);
    }
    return static_cast<ULONGLONG>(position.QuadPart);
}

void CFile::SeekToBegin() { Seek(0, begin); }
ULONGLONG CFile::SeekToEnd() { return Seek(0, end); }

void CFile::SetLength(ULONGLONG newLength) {
    Seek(static_cast<LONGLONG>(std::min<ULONGLONG>(newLength, LLONG_MAX)), begin);
    if (!SetEndOfFile(m_hFile)) throwLastError(m_strFileName);
}

ULONGLONG CFile::GetLength() const {
    LARGE_INTEGER length{};
    if (!GetFileSizeEx(openHandleOf(*this, m_strFileName), &length)) throwLastError(m_strFileName);
    return static_cast<ULONGLONG>(length.QuadPart);
}

UINT CFile::Read(void* buffer, UINT count) {
    const HANDLE file = openHandleOf(*this, m_strFileName);
    if (count == 0) return 0;
    DWORD done = 0;
    if (!ReadFile(file, buffer, count, &done, nullptr)) throwLastError(m_strFileName);
    return done;
}

void CFile::Write(const void* buffer, UINT count) {
    const HANDLE file = openHandleOf(*this, m_strFileName);
    if (count == 0) return;
    DWORD done = 0;
    if (!WriteFile(file, buffer, count, &done, nullptr)) throwLastError(m_strFileName);
    if (done != count) AfxThrowFileException(CFileException::diskFull, ERROR_DISK_FULL, m_strFileName);
}

void CFile::LockRange(ULONGLONG position, ULONGLONG count) {
    const HANDLE file = openHandleOf(*this, m_strFileName);
    if (!LockFile(file, low(position), high(position), low(count), high(count)))
        throwLastError(m_strFileName);
}

void CFile::UnlockRange(ULONGLONG position, ULONGLONG count) {
    const HANDLE file = openHandleOf(*this, m_strFileName);
    if (!UnlockFile(file, low(position), high(position), low(count), high(count)))
        throwLastError(m_strFileName);
}

void CFile::Flush() {
    if (m_hFile != hFileNull && !FlushFileBuffers(m_hFile)) throwLastError(m_strFileName);
}

void CFile::Abort() {
    if (m_hFile != hFileNull) CloseHandle(m_hFile);
    m_hFile = hFileNull;
    m_bCloseOnDelete = FALSE;
    m_strFileName.Empty();
}

void CFile::Close() {
    if (m_hFile == hFileNull) return;
    const BOOL closed = CloseHandle(m_hFile);
    const DWORD code = GetLastError();
    const CString name = m_strFileName;
    m_hFile = hFileNull;
    m_bCloseOnDelete = FALSE;
    m_strFileName.Empty();
    if (!closed) CFileException::ThrowOsError(static_cast<LONG>(code), name);
}

UINT CFile::GetBufferPtr(UINT, UINT, void**, void**) { return 0; }

CString CFile::GetFilePath() const { return m_strFileName; }
void CFile::SetFilePath(const char* newName) { m_strFileName = newName; }

CString CFile::GetFileName() const {
    const int separator = std::max(m_strFileName.ReverseFind('\\'), m_strFileName.ReverseFind('/'));
    return m_strFileName.Mid(std::max(separator, m_strFileName.ReverseFind(':')) + 1);
}

CString CFile::GetFileTitle() const {
    const CString name = GetFileName();
    const int point = name.ReverseFind('.');
    return point > 0 ? name.Left(point) : name;
}

void CFile::Rename(const char* oldName, const char* newName) {
    if (!MoveFileA(oldName, newName)) throwLastError(oldName);
}

void CFile::Remove(const char* fileName) {
    if (!DeleteFileA(fileName)) throwLastError(fileName);
}
