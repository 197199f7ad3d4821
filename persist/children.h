#pragma once
// The children of a node: one block with the child order, and the rank order beside it while it differs.

#include "korutil/tree.h"

namespace kor {
inline constexpr int kExpectAhead = 8;  // as many children before a child is used its memory is asked for
}  // namespace kor

struct CKorSimpleTree::Children {
    CKorSimpleTree** ranks;  // null while the rank order equals the child order
    int count;
    int capacity;

    CKorSimpleTree** order() { return reinterpret_cast<CKorSimpleTree**>(this + 1); }
};

inline int CKorSimpleTree::count() const { return children_ ? children_->count : 0; }

inline CKorSimpleTree* CKorSimpleTree::at(int index) const { return children_->order()[index]; }

// There are children.
inline CKorSimpleTree* const* CKorSimpleTree::byRank() const {
    return children_->ranks ? children_->ranks : children_->order();
}

// Asks for a child's memory before it is used: walking nodes that lie apart is mostly waiting.
inline void CKorSimpleTree::expect(int index) const {
    if (index < 0 || index >= children_->count) return;
    const auto* node = reinterpret_cast<const char*>(at(index));
    __builtin_prefetch(node);
    __builtin_prefetch(node + sizeof(CKorSimpleTree) + 24);
}

inline void CKorSimpleTree::append(CKorSimpleTree* node) {
    Children& children = *children_;
    if (children.ranks) children.ranks[children.count] = node;
    children.order()[children.count] = node;
    node->parent_ = this;
    node->place_ = children.count++;
}
