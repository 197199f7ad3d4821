// The exception that carries an error.

#include "korutil/error.h"

IMPLEMENT_DYNAMIC(CKorException, CException)

CKorException::CKorException() : m_pError(nullptr) {}

CKorException::CKorException(const CKorError& error) : m_pError(nullptr) {
    try {
        m_pError = error.Duplicate();
    } catch (CException* exception) {
        appWarningNoMemory();
        exception->Delete();
    }
}

CKorException::~CKorException() {
    if (m_pError) m_pError->Delete();
}

DWORD CKorException::GetErrorCode() const { return m_pError ? m_pError->GetErrorCode() : 0; }

DWORD CKorException::GetErrorLocation() const { return m_pError ? m_pError->GetErrorLocation() : 0; }

CKorError* CKorException::GetErrorObject() const { return m_pError; }

BOOL CKorException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) {
    if (helpContext) *helpContext = 0;
    if (!buffer || size == 0) return 0;
    buffer[0] = '\0';
    if (m_pError) m_pError->GetErrorMessage(buffer, size, helpContext);
    return buffer[0] != '\0';
}

BOOL CKorException::SetErrorMessage(const char* text, void* arguments, UINT helpContext, HINSTANCE instance) {
    if (!m_pError || !m_pError->IsKindOf(RUNTIME_CLASS(CGeneralError))) return 0;
    static_cast<CGeneralError*>(m_pError)->SetErrorMessage(text, arguments, helpContext, instance);
    return 1;
}
