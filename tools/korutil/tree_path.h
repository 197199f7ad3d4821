#pragma once
// The way to an entry of a parameter tree: ids from the root's children down, joined by "/"; each but the
// last one names a section. The last one may be "id:type".

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korutil/tag_tree.h"
#include "tools/korutil/tree_value.h"

namespace kor::tree {

struct Path {
    std::vector<DWORD> sections;
    DWORD id = 0;
    std::optional<Type> type;
    std::string text;  ///< as it was given
};

/// @throws command::UsageError when the text is no path
Path pathOf(std::string_view text);

/// The section that a path leads to: the first of each id. @throws command::Failure about `where` when there
/// is none
CTagTree& sectionOf(CTagTree& root, const Path& path, std::string_view where);

/// The first entry of a section with that id and type; null when there is none.
CTagTree* findEntry(const CTagTree& section, DWORD id, Type type);

/// The entry that a path names. @throws command::Failure when there is none, or when the path names no type
/// and the section has several entries of that id
CTagTree& entryOf(const CTagTree& section, const Path& path, std::string_view where);

}  // namespace kor::tree
