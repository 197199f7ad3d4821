#pragma once
// Changing one entry of a stored tree.

#include <functional>
#include <string_view>

#include "korutil/tag_tree.h"
#include "tools/korutil/file_argument.h"
#include "tools/korutil/tree_path.h"

namespace kor::tree {

/// Reads the tree of a file that holds nothing else, hands it over to be changed, and replaces the file.
/// @throws command::Failure; the file is then as it was
void editTree(std::string_view fileArgument,
              const std::function<void(CRootTagTree&, std::string_view where)>& change);

/// Sets the entry that a path names. With a type in the path that entry must be there, whatever type the new
/// content has, unless both types are the same; without one it is the first entry of the content's type. An
/// entry that is there keeps its place, and a memory block its version; a new one is appended to its section.
void setEntry(CRootTagTree& root, const Path& path, Content content, std::string_view where);

/// Deletes the entry, or the section with all below it, that a path names.
void deleteEntry(CRootTagTree& root, const Path& path, std::string_view where);

}  // namespace kor::tree
