// The warning dialog on a screen.

#include "platform/win32.h"
#include "resources/ids.h"
#include "runtime/process_state.h"
#include "runtime/warning_display.h"

namespace kor {
namespace {

// The system's icon that goes with a message-box style; null for none.
HICON iconOf(UINT_PTR style) {
    switch (style & MB_ICONMASK) {
        case MB_ICONSTOP:
            return LoadIconA(nullptr, IDI_HAND);
        case MB_ICONQUESTION:
            return LoadIconA(nullptr, IDI_QUESTION);
        case MB_ICONEXCLAMATION:
            return LoadIconA(nullptr, IDI_EXCLAMATION);
        case MB_ICONINFORMATION:
            return LoadIconA(nullptr, IDI_ASTERISK);
        default:
            return nullptr;
    }
}

void fill(HWND dialog, const UtlWarningRecord& record) {
    SetWindowTextA(dialog, record.caption ? record.caption : processState().caption);
    SetDlgItemTextA(dialog, resource::kWarningDialogText, record.text ? record.text : "");
    const LPARAM icon = reinterpret_cast<LPARAM>(iconOf(record.style));
    SendDlgItemMessageA(dialog, resource::kWarningDialogIcon, STM_SETICON, static_cast<WPARAM>(icon), 0);
}

INT_PTR CALLBACK warningDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            fill(dialog, *reinterpret_cast<const UtlWarningRecord*>(lParam));
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) != IDOK && LOWORD(wParam) != IDCANCEL) return FALSE;
            EndDialog(dialog, LOWORD(wParam));
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

int showWarningDialog(const UtlWarningRecord& record) {
    const LPCSTR name = MAKEINTRESOURCEA(resource::kWarningDialog);
    HINSTANCE module = resourceModule();
    if (!FindResourceA(module, name, RT_DIALOG)) module = processState().library;
    const INT_PTR button =
        DialogBoxParamA(module, name, record.parent, warningDialog, reinterpret_cast<LPARAM>(&record));
    return button > 0 ? static_cast<int>(button) : 0;
}

}  // namespace kor
