#pragma once
/// The exception for a file that could not be opened, read, written or moved in: what went wrong, the
/// system's own error code, and the file.

#include "korutil/framework/exception.h"
#include "korutil/framework/string.h"

class KORUTIL_CLASS CFileException : public CException {
    DECLARE_DYNAMIC(CFileException)
  public:
    enum {
        none = 0,               ///< no error
        generic = 1,            ///< an error of no other kind
        fileNotFound = 2,       ///< the file does not exist
        badPath = 3,            ///< all or part of the path is invalid
        tooManyOpenFiles = 4,   ///< the process has no file handle left
        accessDenied = 5,       ///< the file may not be used in this way
        invalidFile = 6,        ///< an invalid file handle was used
        removeCurrentDir = 7,   ///< the current folder cannot be removed
        directoryFull = 8,      ///< the folder has no room for another entry
        badSeek = 9,            ///< the position is before the start, or the file has none
        hardIO = 10,            ///< the device failed
        sharingViolation = 11,  ///< somebody else has the file open and does not share it
        lockViolation = 12,     ///< the region is locked already, or was not locked
        diskFull = 13,          ///< the disk is full
        endOfFile = 14,         ///< the end of the file was reached
    };

    int m_cause;            ///< one of the values above
    LONG m_lOsError;        ///< the system's error code; -1 when there is none
    CString m_strFileName;  ///< the file; may be empty

    explicit CFileException(int cause = none, LONG osError = -1, const char* fileName = nullptr);
    ~CFileException() override;

    /// The file's name when there is one, the reason in English and the system error when there is one, as in
    /// "Z:\data\a.kor: Access was denied. (system error 5)".
    /// @return TRUE, also for a cause that is not in the list
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) override;

    /// The cause that a system error code stands for; `generic` for a code that stands for no other, `none`
    /// for 0.
    static int OsErrorToException(LONG osError);
    /// The cause that an `errno` value of the C runtime stands for.
    static int ErrnoToException(int error);
    /// Throws a `CFileException*` for a system error code (`GetLastError`).
    static void ThrowOsError [[noreturn]] (LONG osError, const char* fileName = nullptr);
    /// Throws a `CFileException*` for an `errno` value, which becomes its system error.
    static void ThrowErrno [[noreturn]] (int error, const char* fileName = nullptr);
};

/// Throws a new `CFileException*`; a `CMemoryException*` when there is no memory for it.
KORUTIL_API void KORUTIL_CALL AfxThrowFileException
    [[noreturn]] (int cause, LONG osError = -1, const char* fileName = nullptr);
