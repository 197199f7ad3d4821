#include "korutil/framework/exception.h"

#include "platform/win32.h"

IMPLEMENT_DYNAMIC(CException, CObject)

namespace {

constexpr UINT kNoTextId = 0xF108;
constexpr char kNoText[] = "No error message is available.";

void loadPrompt(UINT id, char* buffer, int size) {
    const HMODULE library = GetModuleHandleA("KorUtil.dll");
    if (id != 0 && LoadStringA(library, id, buffer, size) > 0) return;
    if (LoadStringA(library, kNoTextId, buffer, size) > 0) return;
    lstrcpynA(buffer, kNoText, size);
}

}  // namespace

CException::CException() : m_bAutoDelete(TRUE) {}
CException::CException(BOOL autoDelete) : m_bAutoDelete(autoDelete) {}
CException::~CException() = default;

BOOL CException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) {
    if (helpContext != nullptr) *helpContext = 0;
    if (buffer != nullptr && size > 0) *buffer = '\0';
    return FALSE;
}

int CException::ReportError(UINT type, UINT messageId) {
    char text[512];
    if (!GetErrorMessage(text, sizeof text)) loadPrompt(messageId, text, sizeof text);
    if ((type & MB_ICONMASK) == 0) type |= MB_ICONEXCLAMATION;
    return MessageBoxA(nullptr, text, nullptr, type);
}

void CException::Delete() {
    if (m_bAutoDelete) delete this;
}
