// Push buttons, check boxes, radio buttons.
#include <algorithm>
#include <iterator>

#include "korutil/platform/control.h"
#include "platform/posix/user/control_procedure.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/window_word.h"

namespace kor {
namespace {

struct Kind {
    UINT states;  // that it can be checked with
    LRESULT dialogCode;
    bool isAutomatic = false;
};

constexpr Kind kKinds[] = {
    {1, DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON},
    {1, DLGC_BUTTON | DLGC_DEFPUSHBUTTON},
    {2, DLGC_BUTTON},
    {2, DLGC_BUTTON, true},
    {2, DLGC_BUTTON | DLGC_RADIOBUTTON},
    {3, DLGC_BUTTON},
    {3, DLGC_BUTTON, true},
    {1, DLGC_STATIC},
    {1, DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON},
    {2, DLGC_BUTTON | DLGC_RADIOBUTTON, true},
};
constexpr Kind kOther = {1, DLGC_BUTTON};

const Kind& kindOf(HWND window) {
    const DWORD type = styleOf(window) & BS_TYPEMASK;
    return type < std::size(kKinds) ? kKinds[type] : kOther;
}

bool isRadio(const Kind& kind) { return (kind.dialogCode & DLGC_RADIOBUTTON) != 0; }

class Button final : public ControlState {
  public:
    UINT check = BST_UNCHECKED;
    bool isPushed = false;
};

void setCheck(HWND window, Button& button, WPARAM wanted) {
    const Kind& kind = kindOf(window);
    if (kind.states == 1) return;
    button.check = static_cast<UINT>(std::min<WPARAM>(wanted, kind.states - 1));
    // Required: the checked radio button is its group's tab stop.
    if (isRadio(kind)) changeStyle(window, button.check ? WS_TABSTOP : 0, button.check ? 0 : WS_TABSTOP);
}

// The neighbour in the group of controls, which ends before a control with WS_GROUP; null at its end.
HWND previousOfGroup(HWND window) {
    const UserLock lock = lockUser();
    const Window* found = findWindow(window);
    if (!found || (found->style & WS_GROUP) || !found->previous) return nullptr;
    return found->previous->handle;
}

HWND nextOfGroup(HWND window) {
    const UserLock lock = lockUser();
    const Window* found = findWindow(window);
    const Window* next = found ? found->next : nullptr;
    return next && !(next->style & WS_GROUP) ? next->handle : nullptr;
}

void checkAloneInGroup(HWND window) {
    HWND member = window;
    while (const HWND previous = previousOfGroup(member))
        member = previous;
    for (; member; member = nextOfGroup(member)) {
        if (member == window || !(deliver(member, WM_GETDLGCODE, 0, LPARAM{0}) & DLGC_RADIOBUTTON)) continue;
        deliver(member, BM_SETCHECK, BST_UNCHECKED, LPARAM{0});
    }
    deliver(window, BM_SETCHECK, BST_CHECKED, LPARAM{0});
}

void release(HWND window, Button& button) {
    if (!button.isPushed) return;
    button.isPushed = false;
    const Kind& kind = kindOf(window);
    if (kind.isAutomatic && isRadio(kind)) {
        checkAloneInGroup(window);
    } else if (kind.isAutomatic) {
        deliver(window, BM_SETCHECK, (button.check + 1) % kind.states, LPARAM{0});
    }
    notifyParent(window, BN_CLICKED);
}

void push(HWND window, Button& button) {
    SetFocus(window);
    button.isPushed = true;
}

LRESULT handle(HWND window, Button& button, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case BM_GETCHECK:
            return button.check;
        case BM_SETCHECK:
            setCheck(window, button, wParam);
            return 0;
        case BM_GETSTATE:
            return button.check | (button.isPushed ? BST_PUSHED : 0) | (GetFocus() == window ? BST_FOCUS : 0);
        case BM_SETSTATE:
            button.isPushed = wParam != 0;
            return 0;
        case BM_SETSTYLE:
            changeStyle(window, wParam & BS_TYPEMASK, BS_TYPEMASK);
            return 0;
        case BM_CLICK:
        case WM_LBUTTONDOWN:
            push(window, button);
            if (message == BM_CLICK) release(window, button);
            return 0;
        case WM_LBUTTONUP:
            release(window, button);
            return 0;
        case WM_GETDLGCODE:
            return kindOf(window).dialogCode;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

LRESULT create(HWND window, WPARAM wParam, LPARAM lParam) {
    // Required: the obsolete kind is an ordinary button.
    if ((styleOf(window) & BS_TYPEMASK) == BS_USERBUTTON) changeStyle(window, BS_PUSHBUTTON, BS_TYPEMASK);
    setControlState(window, std::make_shared<Button>());
    return DefWindowProcA(window, WM_NCCREATE, wParam, lParam);
}

}  // namespace

LRESULT CALLBACK buttonProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return withMemory(LRESULT{0}, [&]() -> LRESULT {
        if (message == WM_NCCREATE) return create(window, wParam, lParam);
        const auto button = controlState<Button>(window);
        if (!button) return DefWindowProcA(window, message, wParam, lParam);
        return handle(window, *button, message, wParam, lParam);
    });
}

}  // namespace kor
