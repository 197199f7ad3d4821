#include "korutil/platform/last_error.h"

#include "platform/posix/kernel/thread_state.h"

namespace kor {

thread_local constinit ThreadState threadState;

}  // namespace kor

KORPLATFORM_API DWORD WINAPI GetLastError() { return kor::threadState.lastError; }

KORPLATFORM_API void WINAPI SetLastError(DWORD code) { kor::threadState.lastError = code; }
