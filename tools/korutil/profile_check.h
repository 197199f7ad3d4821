#pragma once
// What in a settings file will not be read as it is written.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "tools/korutil/file_argument.h"

namespace kor::profile {

struct CheckRules {
    bool ignoresLayout = false;  ///< blanks and quotes that reading takes off are no findings
};

/// Takes one finding. @param line  counted from 1, as editors count them
using Report = std::function<void(std::uint64_t line, std::string_view reason)>;

/// Walks through a file, in time linear in its size, and reports in the order of its lines. What the walk
/// takes for read as written is also read through the library and compared.
/// @throws command::Failure
void checkProfile(const command::FileArgument& file, const CheckRules& rules, const Report& report);

}  // namespace kor::profile
