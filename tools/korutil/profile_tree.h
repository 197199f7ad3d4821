#pragma once
// Parameter trees in settings files: what of a tree a settings file cannot keep, and what of a settings file
// does not come back as a tree.

#include <functional>
#include <string>
#include <string_view>

#include "tools/korutil/profile_key_map.h"
#include "tools/korutil/profile_settings.h"

namespace kor::profile {

/// Takes what stands where, "[section] key", and what is wrong with it.
using Loss = std::function<void(const std::string& entry, const std::string& reason)>;

/// That a tree can be written: each of its entries has a name, and no text would become lines.
/// @throws command::Failure about `where`
void checkWritable(const MappedTree& tree, const KeyMap& map, std::string_view where);

/// Compares a tree with what was read back from where it was written.
void reportLosses(const MappedTree& written, const MappedTree& restored, const KeyMap& map, const Loss& loss);

/// What is told of the second of two entries.
inline constexpr std::string_view kAnotherCounts =
    "another entry of this id and kind stands before it; only the first counts";

/// Looks for what a settings file has in the names of a tree and the tree that was read from it has not:
/// sections, keys, values that are not read as they stand, characters that the code page lacks.
void reportUnread(const Settings& settings, const MappedTree& restored, const KeyMap& map, const Loss& loss);

}  // namespace kor::profile
