#pragma once
// What the procedures of the system's window classes share.

#include <memory>

#include "platform/posix/user/control_class.h"
#include "platform/posix/user/window_table.h"

namespace kor {

/// What a control keeps; null before WM_NCCREATE. It lives on in the caller's hands when the window dies.
template <class State>
std::shared_ptr<State> controlState(HWND window) {
    const UserLock lock = lockUser();
    const Window* found = findWindow(window);
    return found ? std::dynamic_pointer_cast<State>(found->control) : nullptr;
}

void setControlState(HWND window, std::shared_ptr<ControlState> state);

/// Sends WM_COMMAND to the control's parent. The control may be gone afterwards.
void notifyParent(HWND control, WORD code);

}  // namespace kor
