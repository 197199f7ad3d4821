#pragma once
// Parameter trees in files, through the library.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "korutil/framework/file.h"
#include "korutil/tag_tree.h"
#include "tools/korutil/file_argument.h"
#include "tools/korutil/tree_value.h"

namespace kor::tree {

/// Where data blocks are kept after reading: in the file, so that showing a large one needs no room for the
/// others, or in memory, so that the tree can be written elsewhere.
enum class Blocks { kInFile, kInMemory };

/// A node's record as it stands in the file. The library does not tell the data words of every immediate, nor
/// positions.
struct Record {
    DWORD typeWord = 0;
    std::array<DWORD, 2> words{};  ///< of an immediate its value; else the size and the position of its block

    DWORD size() const { return words[0]; }
    DWORD position() const { return words[1]; }
};

/// A tree that was read from a file, which stays open for its records and blocks.
class StoredTree {
  public:
    /// Opens the file for reading only and reads the tree that begins at an offset.
    /// @throws command::Failure when there is none, also when its root is no section or its parts need more
    /// bytes than
    ///         the file has
    StoredTree(const command::FileArgument& file, std::uint64_t offset, Blocks blocks);

    CRootTagTree& root() { return root_; }
    const command::FileArgument& file() const { return file_; }
    std::uint64_t offset() const { return offset_; }
    std::uint64_t size() const { return size_; }              ///< bytes of the tree
    std::uint64_t fileLength() const { return fileLength_; }  ///< bytes of the file

    /// The root's record. @throws CException*, command::Failure
    Record rootRecord();
    /// The records of a section's children. @throws CException*, command::Failure
    std::vector<Record> recordsBelow(const CTagTree& section, const Record& record);
    /// A part of a block. @throws CException*, command::Failure
    std::string bytesOf(const Record& block, std::size_t first, std::size_t count);

    /// That the tree fills the file, each byte used once; the pad bytes behind a block may be missing.
    /// @throws CException*, command::Failure
    void checkAlone();

  private:
    void readAndCheck();
    std::string read(std::uint64_t position, std::size_t count);

    command::FileArgument file_;
    std::uint64_t offset_;
    std::uint64_t fileLength_ = 0;
    std::uint64_t size_ = 0;
    CFile stream_;
    CRootTagTree root_;
};

/// Replaces the target by a file that holds this tree and nothing else, in one atomic step.
/// @throws command::Failure; the target is then as it was. A tree that could not be read again is refused
void storeTree(CRootTagTree& root, const command::FileArgument& target);

/// The whole type word of a node.
DWORD typeWordOf(const CTagTree& node);
bool isSection(const CTagTree& node);
bool isImmediate(const CTagTree& node);

CTagTree& childOf(const CTagTree& section, int index);

/// Bytes that the children of a section take in a file: their records and everything below them.
/// @param unit  of which the size of every block is a multiple
std::uint64_t sizeBelow(const CTagTree& section, std::uint64_t unit);

/// Appends an entry. @throws CException*
CTagTree& addEntry(CTagTree& section, DWORD id, const Content& content);

/// Appends an empty section; the type word may have bits that CreateSection does not set. @throws CException*
CTagTree& addSection(CTagTree& section, DWORD id, DWORD typeWord);

/// Gives an empty root its id and its type word. @throws CException*
void setRoot(CRootTagTree& root, DWORD id, DWORD typeWord);

}  // namespace kor::tree
