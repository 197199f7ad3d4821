#include "tools/korutil/command_table.h"

namespace kor::command {

std::span<const Command* const> allCommands() {
    static constexpr std::array kAll = {
        &kTreeShow,     &kTreeFromJson, &kTreeSet,       &kTreeDelete,   &kTreeToProfile,   &kTreeFromProfile,
        &kProfileGet,   &kProfileSet,   &kProfileDelete, &kProfileList,  &kProfileSections, &kProfileDiff,
        &kProfileCheck, &kPathRelative, &kPathAbsolute,  &kPathBeautify, &kPathExpand,      &kErrors};
    return kAll;
}

}  // namespace kor::command
