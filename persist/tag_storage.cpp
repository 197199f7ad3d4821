#include "persist/tag_storage.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

#include "korutil/framework/memory_exception.h"

namespace kor {
namespace {

constexpr std::size_t kOwnNodeOffset =
    16;  // keeps a node, and what derives from it, aligned as malloc aligns
constexpr std::size_t kRowNodeOffset = sizeof(TagRow) + sizeof(ULONGLONG);

constexpr std::size_t kFirstRoom = 256;  // of pieces of data that is saved block by block
constexpr std::size_t kLargestRoom = 1024;

// The place of the next block; every block is aligned for doubles.
std::size_t roundedUp(std::size_t size) { return (size + sizeof(double) - 1) & ~(sizeof(double) - 1); }

TagRow*& rowOf(void* node) { return *(static_cast<TagRow**>(node) - 1); }

// Distance of two nodes in a row: the node, and the pointer in front of the next.
std::size_t strideOf(std::size_t nodeSize) { return nodeSize + sizeof(ULONGLONG); }

}  // namespace

TagData::User TagData::make(std::size_t size) {
    if (size > std::numeric_limits<std::size_t>::max() - sizeof(TagData)) AfxThrowMemoryException();
    void* block = std::malloc(sizeof(TagData) + size);
    if (!block) AfxThrowMemoryException();
    return User(new (block) TagData);
}

// Pieces grow as there is more to hold; the first one, and that of a large block, has room for it alone.
TagData::User TagData::makeWithRoom(std::size_t size, const TagData* former) {
    if (size > kLargestRoom) return make(size);
    std::size_t room = roundedUp(size);
    if (former && room <= kLargestRoom / 4)
        room = std::clamp<std::size_t>(2 * std::size_t{former->room_}, kFirstRoom, kLargestRoom);
    User piece = make(room);
    piece->room_ = static_cast<WORD>(room);
    piece->taken_ = static_cast<WORD>(roundedUp(size));
    return piece;
}

BYTE* TagData::take(std::size_t size) {
    if (size > kLargestRoom || roundedUp(size) > std::size_t{room_} - taken_) return nullptr;
    BYTE* place = bytes() + taken_;
    taken_ = static_cast<WORD>(taken_ + roundedUp(size));
    return place;
}

void TagData::endUse() {
    if (--users_ == 0) std::free(this);
}

void* TagRow::makeNode(std::size_t nodeSize) noexcept {
    auto* block = static_cast<std::byte*>(std::malloc(kOwnNodeOffset + nodeSize));
    if (!block) return nullptr;
    rowOf(block + kOwnNodeOffset) = nullptr;
    return block + kOwnNodeOffset;
}

void TagRow::freeNode(void* node) noexcept {
    if (!node) return;
    TagRow* row = rowOf(node);
    if (!row) {
        std::free(static_cast<std::byte*>(node) - kOwnNodeOffset);
    } else if (--row->living_ == 0) {
        row->free();
    }
}

void TagRow::free() {
    this->~TagRow();
    std::free(this);
}

void TagRow::freeAll(std::span<CKorSimpleTree* const> nodes) {
    while (!nodes.empty()) {
        TagRow* row = rowOf(nodes.front());
        nodes = nodes.subspan(row->capacity_);
        row->free();
    }
}

TagRow* TagRow::make(std::size_t nodeSize, int capacity) {
    void* block = std::malloc(kRowNodeOffset + strideOf(nodeSize) * static_cast<std::size_t>(capacity));
    if (!block) AfxThrowMemoryException();
    return new (block) TagRow(static_cast<WORD>(capacity));
}

TagRow* TagRow::of(void* node) { return rowOf(node); }

void* TagRow::take(std::size_t nodeSize) {
    void* node = reinterpret_cast<std::byte*>(this) + kRowNodeOffset + strideOf(nodeSize) * used_;
    rowOf(node) = this;
    ++used_;
    ++living_;
    return node;
}

}  // namespace kor
