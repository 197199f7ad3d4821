#pragma once
// A parameter tree as text to read: one aligned line per entry.

#include "tools/korutil/output.h"
#include "tools/korutil/tree_file.h"

namespace kor::tree {

/// @param all  show long values whole; else the first 8 doubles and the first 24 bytes
/// @throws command::Failure, CException*
void writeText(StoredTree& tree, bool all, command::Output& output);

}  // namespace kor::tree
