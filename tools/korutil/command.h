#pragma once
// What a command is. To add one: a file command_NAME.cpp that defines a Command, and its lines in
// command_table.h and .cpp.

#include <span>
#include <string_view>

#include "tools/korutil/arguments.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/output.h"

namespace kor::command {

struct Command {
    std::string_view name;      ///< one word, or two for a command of a group ("tree show")
    std::string_view operands;  ///< as the usage line shows them
    std::size_t operandCount;   ///< how many there must be
    std::string_view summary;   ///< one line, for the list of commands
    std::string_view help;      ///< paragraphs for `korutil NAME --help`
    std::span<const Option> options;
    ExitStatus (*run)(const Arguments&, Output&);  ///< returns when done, else throws
    ExitStatus failed = kFailed;                   ///< the status of a failure
};

/// All commands, in the order of the help.
std::span<const Command* const> allCommands();

/// The option that every command has.
inline constexpr std::string_view kHelpOption = "help";

}  // namespace kor::command
