#include "tools/korutil/help.h"

#include <algorithm>

namespace kor::command {
namespace {

struct Row {
    std::string left;
    std::string_view right;
};

std::string aligned(const std::vector<Row>& rows) {
    std::size_t width = 0;
    for (const Row& row : rows)
        width = std::max(width, row.left.size());
    std::string text;
    for (const Row& row : rows) {
        text +=
            "  " + row.left + std::string(width - row.left.size() + 2, ' ') + std::string(row.right) + '\n';
    }
    return text;
}

std::string usageOf(const Command& command) {
    std::string usage = "korutil " + std::string(command.name);
    if (!command.operands.empty()) usage += ' ' + std::string(command.operands);
    for (const Option& option : command.options) {
        usage += option.isRequired ? " --" : " [--";
        usage += option.name;
        if (!option.value.empty()) usage += ' ' + std::string(option.value);
        if (!option.isRequired) usage += ']';
    }
    return usage;
}

}  // namespace

std::string listHelp(std::string_view group) {
    std::vector<Row> rows;
    for (const Command* command : allCommands()) {
        if (group.empty() || command->name.starts_with(std::string(group) + ' ')) {
            rows.push_back({std::string(command->name), command->summary});
        }
    }
    std::string text = "Usage: korutil " + (group.empty() ? std::string() : std::string(group) + ' ') +
                       "COMMAND [OPTION...] OPERAND...\n";
    if (group.empty()) text += "Works with the files and settings of the KorUtil library.\n";
    text += "\nCommands:\n" + aligned(rows) + "\nOptions:\n";
    text += aligned({{"--help", "show this help; after a command, the help of that command"},
                     {"--version", "show the version"},
                     {"--", "end the options: every word after it is an operand"}});
    text += "\nExit status: 0 done; 1 refused, failed, or a difference or fault found; 2 wrong usage.\n";
    return text;
}

std::string commandHelp(const Command& command) {
    std::vector<Row> rows;
    for (const Option& option : command.options) {
        const std::string value = option.value.empty() ? "" : ' ' + std::string(option.value);
        rows.push_back({"--" + std::string(option.name) + value, option.help});
    }
    rows.push_back({"--help", "show this help"});
    return "Usage: " + usageOf(command) + '\n' + std::string(command.summary) + ".\n\n" +
           std::string(command.help) + "\nOptions:\n" + aligned(rows);
}

}  // namespace kor::command
