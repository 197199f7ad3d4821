#include "platform/posix/user/control_procedure.h"

#include "korutil/platform/control.h"
#include "platform/posix/user/message_queue.h"

namespace kor {

void setControlState(HWND window, std::shared_ptr<ControlState> state) {
    const UserLock lock = lockUser();
    if (Window* found = findWindow(window)) found->control = std::move(state);
}

void notifyParent(HWND control, WORD code) {
    HWND parent = nullptr;
    UINT_PTR id = 0;
    {
        const UserLock lock = lockUser();
        const Window* found = findWindow(control);
        if (!found || !found->parent) return;
        const Window* owner = found->style & WS_CHILD ? found->parent : found->owner;
        if (!owner) return;
        parent = owner->handle;
        id = static_cast<UINT_PTR>(found->id);
    }
    deliver(parent, WM_COMMAND, MAKEWPARAM(id, code), control);
}

LRESULT CALLBACK staticProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_GETDLGCODE) return DLGC_STATIC;
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace kor
