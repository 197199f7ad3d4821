#pragma once
// The edge between our sources, in which a lack of memory is thrown, and the platform's functions, which
// fail.

#include <new>
#include <type_traits>

#include "korutil/platform/last_error.h"

namespace kor {

/// Does the work of a platform function.
/// @return what the work returns; `failure`, with the last error ERROR_NOT_ENOUGH_MEMORY, when memory ran out
template <typename Failure, typename Work>
std::invoke_result_t<Work&> withMemory(Failure failure, Work work) try {
    return work();
} catch (const std::bad_alloc&) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return failure;
}

/// The same for a function without a result.
template <typename Work>
void withMemory(Work work) {
    withMemory(0, [&work] { return work(), 0; });
}

/// For a platform function that another one uses: when it has just failed, hands a lack of memory on.
inline void passShortageOn() {
    if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
}

}  // namespace kor
