#pragma once
// The children of a node: one block with the child order, and the rank order beside it while it differs.

#include "korutil/tree.h"

namespace kor {
inline constexpr int kExpectAhead = 8;  // as many children before a child is used its memory is asked for

/// What a node adds to the sums of its parent: the bytes of its block in a file, a multiple of 4, and this
/// bit when a writer has to look at the node before it knows the sizes.
inline constexpr DWORD kOpenWeight = 1;
}  // namespace kor

struct CKorSimpleTree::Children {
    CKorSimpleTree** ranks = nullptr;  // null while the rank order equals the child order
    ULONGLONG bytes = 0;               // sum of the children's weights, without the bit
    int open = 0;                      // number of children that have it
    int count = 0;
    int capacity = 0;
    bool asRead = false;  // all are leaves in rows that hold these nodes and their data only

    CKorSimpleTree** order() { return reinterpret_cast<CKorSimpleTree**>(this + 1); }

    void add(DWORD weight) {
        bytes += weight & ~kor::kOpenWeight;
        open += static_cast<int>(weight & kor::kOpenWeight);
    }
    void subtract(DWORD weight) {
        bytes -= weight & ~kor::kOpenWeight;
        open -= static_cast<int>(weight & kor::kOpenWeight);
    }
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

inline void CKorSimpleTree::setWeight(DWORD weight) {
    if (parent_) {
        parent_->children_->subtract(weight_);
        parent_->children_->add(weight);
    }
    weight_ = weight;
}

inline void CKorSimpleTree::append(CKorSimpleTree* node) {
    Children& children = *children_;
    if (children.ranks) children.ranks[children.count] = node;
    children.order()[children.count] = node;
    children.asRead = false;
    children.add(node->weight_);
    node->parent_ = this;
    node->place_ = children.count++;
}
