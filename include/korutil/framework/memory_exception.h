#pragma once
/// The exception for memory that could not be had.

#include "korutil/framework/exception.h"

class KORUTIL_CLASS CMemoryException : public CException {
    DECLARE_DYNAMIC(CMemoryException)
  public:
    CMemoryException();
    explicit CMemoryException(BOOL autoDelete);
    ~CMemoryException() override;

    /// "Out of memory."; needs no memory itself.
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) override;
};

/// Throws the process's one memory exception, a `CMemoryException*` that exists beforehand, so that nothing
/// is allocated. Its `Delete` does nothing.
KORUTIL_API void KORUTIL_CALL AfxThrowMemoryException [[noreturn]] ();
