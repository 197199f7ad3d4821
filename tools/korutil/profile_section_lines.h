#pragma once
// A tree's sections as lines of a settings file, made by the library.

#include <string>
#include <vector>

#include "tools/korutil/profile_key_map.h"

namespace kor::profile {

struct SectionLines {
    std::string name;
    std::string lines;  ///< in the code page, each with a zero behind it
};

/// What the library writes for a tree, in its order. Of entries with one key only the first has a line.
/// @throws command::Failure, CException*
std::vector<SectionLines> sectionLinesOf(const MappedTree& tree, const KeyMap& map);

}  // namespace kor::profile
