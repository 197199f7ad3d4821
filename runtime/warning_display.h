#pragma once
// The step that shows a warning.

#include "korutil/warning.h"

namespace kor {

inline constexpr UINT kWarningHook = 14061;

/// The window that warnings without a parent get: the host's main window while it exists.
HWND defaultParent();

/// Shows a record through the display hook, or by the default procedure while no hook is registered.
/// @return the button pressed
int displayWarning(UtlWarningRecord& record);

/// Shows a record of kind 7 in the library's own warning dialog.
int showWarningDialog(const UtlWarningRecord& record);

}  // namespace kor
