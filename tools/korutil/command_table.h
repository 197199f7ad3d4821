#pragma once
// The commands, one file each.

#include <array>

#include "tools/korutil/command.h"

namespace kor::command {

extern const Command kTreeShow;
extern const Command kTreeFromJson;
extern const Command kTreeSet;
extern const Command kTreeDelete;
extern const Command kTreeToProfile;
extern const Command kTreeFromProfile;
extern const Command kProfileGet;
extern const Command kProfileSet;
extern const Command kProfileDelete;
extern const Command kProfileList;
extern const Command kProfileSections;
extern const Command kProfileDiff;
extern const Command kProfileCheck;
extern const Command kPathRelative;
extern const Command kPathAbsolute;
extern const Command kPathBeautify;
extern const Command kPathExpand;
extern const Command kErrors;

}  // namespace kor::command
