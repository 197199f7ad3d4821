#pragma once
// What the platform keeps for each thread, all of it in one block.

#include "korutil/platform/exception.h"
#include "korutil/platform/last_error.h"

namespace kor {

/// It lies in the thread's static block: the first use in a thread may be in a signal handler, which must not
/// allocate. The runtime takes that room back when the library is unloaded only while no gap lies between two
/// libraries' blocks, so the size is a multiple of the largest alignment that any of ours has.
struct alignas(16) ThreadState {
    DWORD lastError = ERROR_SUCCESS;
    DWORD dialogError = 0;  // of the file dialog shown last
    void (*translator)(unsigned int code, EXCEPTION_POINTERS* exception) = nullptr;
    void* messageQueue = nullptr;
    bool isEnding = false;  // the message queue is gone for good
};

[[gnu::tls_model("initial-exec"),
  gnu::visibility("hidden")]] extern thread_local constinit ThreadState threadState;

}  // namespace kor
