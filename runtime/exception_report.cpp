// How a caught exception is reported to the user.

#include "korutil/error.h"
#include "korutil/framework/memory_exception.h"
#include "korutil/lifecycle.h"
#include "korutil/warning.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"

namespace {

constexpr UINT kNoMessageAvailable = 0xF108;  // the framework's prompt

bool isReserveExhausted(DWORD code) {
    return code == kErrorReserveExhausted || code == kInfoReserveExhausted;
}

BOOL reportKorException(const CKorException& exception) {
    CKorError* error = exception.GetErrorObject();
    BOOL shown = error ? error->ShowErrorMessage() : 0;
    if (!shown && isReserveExhausted(exception.GetErrorCode())) {
        appSetReserveSizeForVirtualAlloc(appGetReserveSizeForVirtualAlloc());
        utlWarning(kor::resourceModule(), nullptr, kor::textNumber(kor::text::kReserveExhausted),
                   MB_ICONSTOP);
        shown = 1;
    }
    if (error) error->OutputDebugMessage();
    return shown;
}

}  // namespace

BOOL KORUTIL_CALL appReportException(CException* exception) {
    if (!exception) return 0;
    if (exception->IsKindOf(RUNTIME_CLASS(CMemoryException))) {
        appWarningNoMemory();
        appPlaceMemoryError();
        return 1;
    }
    if (exception->IsKindOf(RUNTIME_CLASS(CKorException))) {
        return reportKorException(*static_cast<CKorException*>(exception));
    }
    return exception->ReportError(MB_ICONEXCLAMATION, kNoMessageAvailable) ? 1 : 0;
}

BOOL KORUTIL_CALL appHandleException(CException* exception) {
    const BOOL shown = appReportException(exception);
    if (exception) exception->Delete();
    return shown;
}
