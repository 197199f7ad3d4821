#pragma once
// Whether the process's modules are still the same ones, for those who keep what they found in them.

#include "korutil/platform.h"

#ifdef _WIN32

/// @return 0: the system does not count, so ask it again each time
inline ULONGLONG korModuleChanges() { return 0; }

#else

/// @return a number that is another one after each module that was loaded or unloaded, and never 0
KORPLATFORM_API ULONGLONG WINAPI korModuleChanges();

#endif
