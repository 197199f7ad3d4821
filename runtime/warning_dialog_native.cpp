// Without a screen the warning dialog is a message box.

#include "platform/win32.h"
#include "runtime/warning_display.h"

int kor::showWarningDialog(const UtlWarningRecord& record) {
    return MessageBoxA(record.parent, record.text, record.caption, static_cast<UINT>(record.style));
}
