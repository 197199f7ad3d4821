#pragma once
// Where the nodes of tag trees and their data lie. Both come in pieces that several nodes share; a piece is
// released with the last node that uses it. The counts are plain: nodes of one tree belong to one thread at a
// time.

#include <cstddef>
#include <memory>
#include <span>

#include "korutil/platform.h"

class CKorSimpleTree;

namespace kor {

/// A piece of data bytes; aligned for doubles.
class TagData {
  public:
    struct EndUse {
        void operator()(TagData* data) const { data->endUse(); }
    };
    using User = std::unique_ptr<TagData, EndUse>;

    /// @throws CMemoryException when memory is short
    static User make(std::size_t size);
    /// A piece whose first bytes are taken, with more room for `take` when it follows a piece that has none
    /// left.
    /// @param former  null for none
    static User makeWithRoom(std::size_t size, const TagData* former);
    /// @return room for that many bytes; null when the piece has none
    BYTE* take(std::size_t size);

    BYTE* bytes() { return reinterpret_cast<BYTE*>(this + 1); }
    /// One more use, which endUse ends.
    TagData* use() {
        ++users_;
        return this;
    }
    void endUse();

  private:
    DWORD users_ = 1;
    WORD room_ = 0;  // bytes to be given out, and how many of them are
    WORD taken_ = 0;
};

/// Nodes lie behind a pointer to the row that they were made in, null for a node of its own.
class TagRow {
  public:
    static constexpr int kLargest = 1024;  // such a row is below the size that malloc maps by itself

    /// Room for a node of its own. @return null when memory is short
    static void* makeNode(std::size_t nodeSize) noexcept;
    static void freeNode(void* node) noexcept;

    /// An empty row.
    /// @throws CMemoryException when memory is short
    static TagRow* make(std::size_t nodeSize, int capacity);
    /// The row that a node lies in, null for none.
    static TagRow* of(void* node);

    bool isFull() const { return used_ == capacity_; }
    int capacity() const { return capacity_; }
    /// The next place; it must become a node, and end with freeNode or freeAll. The row is freed with the
    /// last of its nodes.
    void* take(std::size_t nodeSize);

    bool holdsData() const { return data_ != nullptr; }
    /// Keeps a piece of data as long as the row; one at most.
    void hold(TagData::User data) { data_ = std::move(data); }

    /// Frees full rows with everything in them, without looking at the nodes.
    /// @param nodes  all nodes of these rows, each row's in the order in which they were taken
    static void freeAll(std::span<CKorSimpleTree* const> nodes);

  private:
    explicit TagRow(WORD capacity) : capacity_(capacity) {}
    void free();

    TagData::User data_;
    DWORD living_ = 0;
    WORD used_ = 0;
    WORD capacity_;
};

}  // namespace kor
