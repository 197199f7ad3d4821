#pragma once
// The texts of --help.

#include <string>
#include <string_view>

#include "tools/korutil/command.h"

namespace kor::command {

/// The help of korutil itself, or, with a group's name ("tree"), of the commands of that group.
std::string listHelp(std::string_view group);

/// The help of one command.
std::string commandHelp(const Command& command);

}  // namespace kor::command
