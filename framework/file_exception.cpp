#include "korutil/framework/file_exception.h"

#include <array>
#include <cerrno>

#include "framework/bounded_text.h"

IMPLEMENT_DYNAMIC(CFileException, CException)

namespace {

constexpr std::array<std::string_view, 15> kTexts = {
    "No error occurred.",
    "The file could not be used.",
    "The file does not exist.",
    "The path is invalid.",
    "Too many files are open.",
    "Access was denied.",
    "The file handle is not valid.",
    "The current folder cannot be removed.",
    "The folder cannot take another entry.",
    "The position in the file cannot be reached.",
    "The device failed.",
    "Another program is using the file.",
    "A part of the file is locked, or was not locked.",
    "The disk is full.",
    "The file ended unexpectedly.",
};

struct CauseRange {
    LONG first;
    LONG last;
    int cause;
};

// The system's error codes that stand for a cause; all others are `generic`.
constexpr CauseRange kSystemCauses[] = {
    {0, 0, CFileException::none},
    {2, 2, CFileException::fileNotFound},
    {3, 3, CFileException::badPath},  // path not found
    {4, 4, CFileException::tooManyOpenFiles},
    {5, 5, CFileException::accessDenied},
    {6, 6, CFileException::invalidFile},
    {12, 12, CFileException::accessDenied},  // invalid access
    {15, 15, CFileException::badPath},       // invalid drive
    {16, 16, CFileException::removeCurrentDir},
    {17, 17, CFileException::badPath},       // not the same device
    {18, 18, CFileException::fileNotFound},  // no more files
    {19, 19, CFileException::accessDenied},  // write protected
    {20, 20, CFileException::hardIO},        // unknown device
    {21, 24, CFileException::hardIO},        // not ready, bad command, bad checksum, bad length
    {25, 25, CFileException::badSeek},
    {26, 31, CFileException::hardIO},  // not a disk of the system ... general failure
    {32, 32, CFileException::sharingViolation},
    {33, 33, CFileException::lockViolation},
    {36, 36, CFileException::sharingViolation},  // too many files shared
    {38, 38, CFileException::endOfFile},
    {39, 39, CFileException::diskFull},
    {53, 53, CFileException::badPath},        // network path not found
    {55, 55, CFileException::badPath},        // device gone
    {65, 65, CFileException::accessDenied},   // network access denied
    {67, 67, CFileException::badPath},        // network name not found
    {80, 80, CFileException::accessDenied},   // file exists
    {82, 82, CFileException::directoryFull},  // cannot make the entry
    {112, 112, CFileException::diskFull},
    {123, 123, CFileException::badPath},        // invalid name
    {130, 130, CFileException::accessDenied},   // direct disk access
    {131, 132, CFileException::badSeek},        // before the beginning, on a device
    {158, 158, CFileException::lockViolation},  // not locked
    {161, 161, CFileException::badPath},
    {167, 167, CFileException::lockViolation},
    {183, 183, CFileException::accessDenied},  // already exists
    {206, 206, CFileException::badPath},       // name too long
    {223, 223, CFileException::diskFull},      // larger than the file system allows
    {267, 267, CFileException::badPath},       // not a folder
    {1117, 1117, CFileException::hardIO},
};

}  // namespace

CFileException::CFileException(int cause, LONG osError, const char* fileName)
    : m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}
CFileException::~CFileException() = default;

BOOL CFileException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) {
    if (helpContext != nullptr) *helpContext = 0;
    kor::BoundedText text(buffer, size);
    if (!m_strFileName.IsEmpty()) text.append(static_cast<const char*>(m_strFileName)).append(": ");
    const bool known = m_cause >= 0 && static_cast<std::size_t>(m_cause) < kTexts.size();
    text.append(kTexts[static_cast<std::size_t>(known ? m_cause : generic)]);
    if (m_lOsError > 0) text.append(" (system error ").append(m_lOsError).append(")");
    return TRUE;
}

int CFileException::OsErrorToException(LONG osError) {
    for (const CauseRange& range : kSystemCauses)
        if (osError >= range.first && osError <= range.last) return range.cause;
    return generic;
}

int CFileException::ErrnoToException(int error) {
    switch (error) {
        case 0:
            return none;
        case EPERM:
        case EACCES:
        case EEXIST:
        case EROFS:
            return accessDenied;
        case EBADF:
            return invalidFile;
        case ENOENT:
            return fileNotFound;
        case ENOTDIR:
        case ENAMETOOLONG:
            return badPath;
        case EMFILE:
        case ENFILE:
            return tooManyOpenFiles;
        case ENOSPC:
        case EFBIG:
            return diskFull;
        case EIO:
            return hardIO;
        case ESPIPE:
            return badSeek;
        case EDEADLK:
            return lockViolation;
        default:
            return generic;
    }
}

void CFileException::ThrowOsError(LONG osError, const char* fileName) {
    AfxThrowFileException(OsErrorToException(osError), osError, fileName);
}

void CFileException::ThrowErrno(int error, const char* fileName) {
    AfxThrowFileException(ErrnoToException(error), static_cast<LONG>(error), fileName);
}

void KORUTIL_CALL AfxThrowFileException(int cause, LONG osError, const char* fileName) {
    throw new CFileException(cause, osError, fileName);
}
