#pragma once
// Shown, hidden, minimised, maximised; and the messages about a window's place.

#include "platform/posix/user/window_table.h"

namespace kor {

enum class ShowState { normal, minimized, maximized };

/// Minimises, maximises or restores a window, with messages but without showing it.
void setShowState(HWND window, ShowState state, UINT flags = 0);

/// Sends WM_SIZE and WM_MOVE as after a creation; a window that gets them when it is shown is left alone.
void tellPlaceUnlessLater(HWND window);

/// Sends WM_SIZE, and WM_MOVE.
void tellSize(HWND window);
void tellMove(HWND window);

/// A rectangle whose far corner saturates.
RECT rectangleAt(int x, int y, int width, int height);

}  // namespace kor
