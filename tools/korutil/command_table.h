#pragma once
// The commands, one file each.

#include <array>

#include "tools/korutil/command.h"

namespace kor::command {

extern const Command kTreeShow;
extern const Command kTreeFromJson;
extern const Command kTreeSet;
extern const Command kTreeDelete;
extern const Command kErrors;

}  // namespace kor::command
