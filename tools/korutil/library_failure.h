#pragma once
// The library's exceptions as the command's failures.

#include <string>
#include <string_view>

#include "korutil/framework/exception.h"
#include "tools/korutil/failure.h"

namespace kor::command {

/// What went wrong, in a few words without the file's name, in UTF-8.
std::string reasonOf(CException& exception);

/// The same of a platform function's last error.
std::string reasonOf(DWORD lastError);

/// Calls a function of the library's world; what it throws by pointer ends in a Failure about `where`.
template <class Work>
auto guarded(std::string_view where, Work work) -> decltype(work()) {
    try {
        return work();
    } catch (CException* exception) {
        const std::string reason = reasonOf(*exception);
        exception->Delete();
        throw Failure(where, reason);
    }
}

}  // namespace kor::command
