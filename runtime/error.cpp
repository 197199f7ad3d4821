// The error objects, up to what shows them.

#include "korutil/error.h"
#include "framework/bounded_text.h"
#include "host/bql.h"
#include "host/format.h"
#include "resources/ids.h"
#include "runtime/error_ring.h"
#include "runtime/text_argument.h"

namespace {

constexpr std::size_t kTextRoom = 4096;
constexpr std::size_t kHeaderRoom = 41;

// Shown when memory is too short even for loading the text.
constexpr char kNoMemoryText[] = "There is not enough memory.";

constexpr DWORD kTextNotLoaded = 1000437;
constexpr DWORD kTextNotFormatted = 1000450;

std::string_view textOf(const CString& text) { return static_cast<const char*>(text); }

void placeTextError(DWORD location) {
    appPlaceError(kErrorNoText, location, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
}

}  // namespace

IMPLEMENT_DYNAMIC(CKorError, CObject)
IMPLEMENT_DYNAMIC(CMemError, CKorError)
IMPLEMENT_DYNAMIC(CGeneralError, CKorError)

// ------------------------------------------------------------------------------------------------ CKorError

CKorError::CKorError() : m_dwErrorCode(0), m_dwErrorLocation(0) {}

CKorError::~CKorError() = default;

DWORD CKorError::GetErrorCode() const { return m_dwErrorCode; }

DWORD CKorError::GetErrorLocation() const { return m_dwErrorLocation; }

void CKorError::SetError(DWORD code, DWORD location) {
    if (code) m_dwErrorCode = code;
    if (location) m_dwErrorLocation = location;
}

// ------------------------------------------------------------------------------------------------ CMemError

CMemError::CMemError() : m_szMessage{} { m_dwErrorCode = kErrorNoMemory; }

CMemError::~CMemError() = default;

CKorError* CMemError::Duplicate() const { return const_cast<CMemError*>(this); }

void CMemError::Delete() {}

BOOL CMemError::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) {
    if (helpContext) *helpContext = 0;
    CheckMessage();
    kor::BoundedText(buffer, size).append(m_szMessage);
    return 1;
}

void CMemError::GetDebugMessage(char* buffer, UINT size) {
    CheckMessage();
    kor::BoundedText(buffer, size).append(m_szMessage);
}

void CMemError::CheckMessage() {
    if (m_szMessage[0] == '\0') kor::loadOwnText(kor::text::kOutOfMemory, m_szMessage);
    if (m_szMessage[0] == '\0') kor::BoundedText(m_szMessage, sizeof(m_szMessage)).append(kNoMemoryText);
    m_szMessage[sizeof(m_szMessage) - 1] = '\0';
}

// -------------------------------------------------------------------------------------------- CGeneralError

CGeneralError::CGeneralError(DWORD code) : m_nHelpContext(0) { m_dwErrorCode = code; }

CGeneralError::~CGeneralError() = default;

CKorError* CGeneralError::Duplicate() const {
    auto* copy = new CGeneralError(m_dwErrorCode);
    copy->m_dwErrorLocation = m_dwErrorLocation;
    copy->m_strErrorMessage = m_strErrorMessage;  // shared: nothing here can fail
    copy->m_strDebugMessage = m_strDebugMessage;
    copy->m_nHelpContext = m_nHelpContext;
    return copy;
}

void CGeneralError::Delete() { delete this; }

BOOL CGeneralError::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) {
    if (helpContext) *helpContext = m_nHelpContext;
    kor::BoundedText(buffer, size).append(textOf(m_strErrorMessage));
    return m_strErrorMessage.IsEmpty() ? 0 : 1;
}

void CGeneralError::GetDebugMessage(char* buffer, UINT size) {
    if (!buffer || size == 0) return;
    char room[kHeaderRoom];
    const char* format = kor::loadOwnText(kor::text::kDebugHeader, room, "ii");
    const auto used =
        static_cast<UINT>(kor::printText(buffer, size, format, m_dwErrorCode, m_dwErrorLocation));
    // A debug text that does not fit is not replaced by the user's text: required.
    const CString& text = m_strDebugMessage.IsEmpty() ? m_strErrorMessage : m_strDebugMessage;
    if (size - used > static_cast<UINT>(text.GetLength())) {
        kor::BoundedText(buffer + used, size - used).append(textOf(text));
    }
}

void CGeneralError::SetErrorMessage(const char* text, void* arguments, UINT helpContext, HINSTANCE instance) {
    SetString(text, instance, arguments, 1);
    m_nHelpContext = helpContext;
}

void CGeneralError::SetDebugMessage(UINT number, const char* text, void* arguments, HINSTANCE instance) {
    m_dwErrorLocation = number;
    if (kor::isTextNumber(text) || (text && *text)) SetString(text, instance, arguments, 0);
}

void CGeneralError::SetString(const char* text, HINSTANCE instance, void* arguments, int toErrorMessage) {
    CString& target = toErrorMessage ? m_strErrorMessage : m_strDebugMessage;
    char loaded[kTextRoom];
    char formatted[kTextRoom];
    const bool isNumber = kor::isTextNumber(text);
    text = kor::resolveText(text, instance, loaded);
    if (!text) {
        if (isNumber && instance) placeTextError(kTextNotLoaded);
    } else if (arguments) {
        const int length = kor::Bql_vszprintf(formatted, sizeof(formatted), text, arguments);
        text = length > 0 ? formatted : nullptr;
        if (!text) placeTextError(kTextNotFormatted);
    }
    target = text;
}
