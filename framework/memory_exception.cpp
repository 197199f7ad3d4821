#include "korutil/framework/memory_exception.h"

#include "framework/bounded_text.h"

IMPLEMENT_DYNAMIC(CMemoryException, CException)

CMemoryException::CMemoryException() = default;
CMemoryException::CMemoryException(BOOL autoDelete) : CException(autoDelete) {}
CMemoryException::~CMemoryException() = default;

BOOL CMemoryException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) {
    if (helpContext != nullptr) *helpContext = 0;
    kor::BoundedText(buffer, size).append("Out of memory.");
    return TRUE;
}

void KORUTIL_CALL AfxThrowMemoryException() {
    // Never destroyed: memory may run out while the process ends.
    alignas(CMemoryException) static std::byte place[sizeof(CMemoryException)];
    static CMemoryException* const instance = ::new (place) CMemoryException(FALSE);
    throw instance;
}
