#include "tools/korutil/command_table.h"

namespace kor::command {

std::span<const Command* const> allCommands() {
    static constexpr std::array kAll = {&kTreeShow, &kTreeFromJson, &kTreeSet, &kTreeDelete, &kErrors};
    return kAll;
}

}  // namespace kor::command
