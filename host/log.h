#pragma once
// The host's debug log, with the arguments in place.

#include "korutil/host.h"

namespace kor {

/// As dbgPrintLog. Not checked by the compiler: `l` in integer conversions means 32 bits here.
int printLog(DWORD flags, const char* format, ...);

}  // namespace kor
