#include "korutil/platform/last_error.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

KORPLATFORM_API DWORD WINAPI GetLastError() { return lastError; }

KORPLATFORM_API void WINAPI SetLastError(DWORD code) { lastError = code; }
