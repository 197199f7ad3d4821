#pragma once
// The active window and the focus of a thread.

#include "platform/posix/user/window_table.h"

namespace kor {

/// Takes activity and focus away from a window that is about to go or to be hidden, and from what is below
/// it.
void leaveWindow(HWND window);

/// Takes the focus away from a window and from what is below it.
void dropFocus(HWND window);

}  // namespace kor
