#pragma once
// The style among a window's words, as the controls need it.

#include "korutil/platform/window.h"

namespace kor {

/// The window's style; 0 for no window.
DWORD styleOf(HWND window);

/// Sets and clears bits of the style without a message.
void changeStyle(HWND window, DWORD set, DWORD clear);

}  // namespace kor
