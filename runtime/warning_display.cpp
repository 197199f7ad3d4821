#include "runtime/warning_display.h"

#include "korutil/host.h"
#include "platform/win32.h"
#include "runtime/process_state.h"

namespace kor {
namespace {

int alertGuards = 0;

}  // namespace

HWND defaultParent() {
    const HWND window = processState().mainWindow;
    return window && IsWindow(window) ? window : nullptr;
}

int displayWarning(UtlWarningRecord& record) {
    // Whoever ends the hook's chain does not silence the warnings.
    const bool isHooked = processState().displayHook && menuGetFirstHook(kWarningHook);
    return isHooked ? menuCallFirstHook(kWarningHook, &record) : utlShowWarningProc(&record);
}

}  // namespace kor

int KORUTIL_CALL utlShowWarningProc(UtlWarningRecord* record) {
    if (!record) return 0;
    switch (record->kind) {
        case kWarningFile:
        case kWarningText:
        case kWarningExtended:
        case kWarningSystemError:
        case kWarningReserved:
        case kWarningNotImplemented:
            return MessageBoxA(record->parent, record->text, record->caption,
                               static_cast<UINT>(record->style));
        case kWarningDialog:
            return kor::showWarningDialog(*record);
        case kWarningIndirect:
            return record->instance ? MessageBoxIndirectA(static_cast<MSGBOXPARAMSA*>(record->instance)) : 0;
        default:
            return 0;
    }
}

BOOL KORUTIL_CALL appAlertIfInactive(UINT beep) {
    if (!kor::defaultParent()) return 0;
    const HWND active = GetActiveWindow();
    if (active && GetForegroundWindow() == active) return 0;
    MessageBeep(beep);
    return 1;
}

CKorAlertIfInactive::CKorAlertIfInactive() {
    if (kor::alertGuards++ == 0) appAlertIfInactive(0);
}

CKorAlertIfInactive::~CKorAlertIfInactive() { --kor::alertGuards; }
