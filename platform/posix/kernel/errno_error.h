#pragma once
// The one table between the native error numbers and the platform's codes.

#include "korutil/platform.h"

namespace kor {

/// @return the code for an errno value; ERROR_GEN_FAILURE for one without a counterpart
DWORD errorFromErrno(int number);

/// Sets the last error and returns FALSE, so that a failing function can end with it.
BOOL failWith(DWORD code);

/// The same for the present errno.
BOOL failWithErrno();

}  // namespace kor
