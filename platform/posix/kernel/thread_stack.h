#pragma once
// Where a thread's stack lies and how far down it has been used.

#include "platform/posix/kernel/reservation.h"

namespace kor {

/// From the lowest address that the stack may grow to, up to its top. Below the guard page is what is only
/// reserved, above it what is in use.
struct StackParts {
    PageRange whole;
    std::uintptr_t guard = 0;
};

/// The calling thread's stack; false for the main thread, whose stack only the process map shows.
bool callingThreadStack(StackParts& parts);

/// The main thread's stack from its entry in the process map, which grows down to the process limit.
/// @param below  where the entry below it ends
StackParts mainStack(const PageRange& mapped, std::uintptr_t below);

}  // namespace kor
