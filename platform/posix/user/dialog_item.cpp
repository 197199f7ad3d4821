// The controls of a dialog by their numbers.
#include "korutil/platform/control.h"

LRESULT WINAPI SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND item = GetDlgItem(dialog, id);
    return item ? SendMessageA(item, message, wParam, lParam) : 0;
}

BOOL WINAPI SetDlgItemTextA(HWND dialog, int id, LPCSTR text) {
    const HWND item = GetDlgItem(dialog, id);
    return item && SetWindowTextA(item, text);
}

UINT WINAPI GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size) {
    if (buffer && size > 0) buffer[0] = '\0';
    const HWND item = GetDlgItem(dialog, id);
    return item ? static_cast<UINT>(GetWindowTextA(item, buffer, size)) : 0;
}

UINT WINAPI IsDlgButtonChecked(HWND dialog, int id) {
    return static_cast<UINT>(SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0));
}

BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check) {
    const HWND item = GetDlgItem(dialog, id);
    if (item) SendMessageA(item, BM_SETCHECK, check, 0);
    return item != nullptr;
}

BOOL WINAPI CheckRadioButton(HWND dialog, int first, int last, int checked) {
    if (!IsWindow(dialog)) return FALSE;
    for (HWND item = GetWindow(dialog, GW_CHILD); item; item = GetWindow(item, GW_HWNDNEXT)) {
        const int id = GetDlgCtrlID(item);
        const bool isRadio = (SendMessageA(item, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
        if (id < first || id > last || !isRadio) continue;
        SendMessageA(item, BM_SETCHECK, id == checked ? BST_CHECKED : BST_UNCHECKED, 0);
    }
    return TRUE;
}
