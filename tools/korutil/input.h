#pragma once
// Text that a command reads whole.

#include <string>
#include <string_view>

namespace kor::command {

/// The bytes of a file or a pipe; "-" is standard input. @throws Failure, also for more than 1 GiB
std::string readInput(std::string_view argument);

/// Whether two files hold the same bytes; they are read in pieces. @throws Failure
bool hasSameBytes(std::string_view first, std::string_view second);

/// Whether two names lead to one file that is there.
bool isSameFile(std::string_view first, std::string_view second);

}  // namespace kor::command
