#pragma once
// The procedures of the system's window classes.

#include "korutil/platform/window.h"

namespace kor {

LRESULT CALLBACK editProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK buttonProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK staticProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace kor
