#pragma once
// The two data words of immediates. The library tells them for the types that it writes itself; when a tree
// has others, the whole tree is written once to memory, where they stand in the records of the sections'
// tables.

#include <array>
#include <cstddef>
#include <string>

#include "tools/korutil/tree_file.h"

namespace kor::tree {

class ImmediateWords {
  public:
    /// @throws command::Failure, CException*
    explicit ImmediateWords(StoredTree& tree);

    /// Where a section's table stands in the written tree; `of` and `tableOf` take it with a child's index.
    static std::size_t rootTable();
    std::size_t tableOf(std::size_t parentTable, int index) const;
    std::array<DWORD, 2> of(const CTagTree& node, std::size_t parentTable, int index) const;

  private:
    DWORD wordAt(std::size_t position) const;

    std::string image_;  // empty when nobody will need it
};

}  // namespace kor::tree
