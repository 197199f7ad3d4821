// What shows an error object, to the user or in the host's debug log.

#include "host/log.h"
#include "korutil/error.h"
#include "korutil/warning.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "runtime/error_ring.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"
#include "runtime/warning_display.h"

namespace {

constexpr std::size_t kMessageRoom = 520;
constexpr std::size_t kDebugRoom = 4096;
constexpr std::size_t kFrameRoom = 101;

}  // namespace

BOOL CKorError::ShowErrorMessage() {
    if (IsKindOf(RUNTIME_CLASS(CMemError))) {
        auto* error = static_cast<CMemError*>(this);
        error->CheckMessage();
        MessageBoxA(kor::defaultParent(), error->m_szMessage, kor::processState().caption, MB_ICONSTOP);
        return 1;
    }
    char text[kMessageRoom];
    GetErrorMessage(text, sizeof(text), nullptr);
    if (text[0] == '\0') return 0;
    // The text is complete: a '%' in it, perhaps of a file name, is no conversion.
    utlWarning(nullptr, nullptr, "%s", MB_ICONSTOP, text);
    return 1;
}

BOOL CKorError::OutputDebugMessage() {
    if (IsKindOf(RUNTIME_CLASS(CMemError))) return 1;
    char text[kDebugRoom];
    GetDebugMessage(text, sizeof(text));
    if (text[0] == '\0') return 0;
    char frame[kFrameRoom];
    const char* format = kor::loadOwnText(kor::text::kDebugFrame, frame, "s");
    kor::printLog(kDebugLogErrors, *format ? format : "%s", text);
    return 1;
}

BOOL KORUTIL_CALL appShowLastError() {
    CKorError* error = appGetLastErrorObject();
    if (!error) return 0;
    error->ShowErrorMessage();
    return 1;
}

BOOL KORUTIL_CALL appWarningNoMemory() { return kor::memoryError().ShowErrorMessage(); }

BOOL KORUTIL_CALL OutOfMemoryError() { return appWarningNoMemory(); }

BOOL KORUTIL_CALL appPlaceMemoryError() {
    try {
        return appPlaceErrorObject(kor::memoryError());
    } catch (CException* exception) {
        appWarningNoMemory();
        exception->Delete();
        return 0;
    }
}
