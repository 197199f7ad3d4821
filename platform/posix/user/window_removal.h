#pragma once
// How windows go.

#include "platform/posix/user/window_table.h"

namespace kor {

/// Takes a window and what is below it away, with its messages and timers. To be called with the lock held.
void removeWindow(Window& window);

}  // namespace kor
