// Walking a tree: towards the root, along the top ranks, in pre-order.

#include "korutil/framework/ptr_array.h"
#include "korutil/tree.h"
#include "persist/children.h"

BOOL CKorSimpleTree::PushToTopRank() { return parent_ ? parent_->SetTopRank(this) : FALSE; }

BOOL CKorSimpleTree::PushToTreeTopRank() {
    BOOL changed = FALSE;
    for (CKorSimpleTree* node = this; node->parent_; node = node->parent_)
        if (node->PushToTopRank()) changed = TRUE;
    return changed;
}

BOOL CKorSimpleTree::IsTopRank() const { return !parent_ || parent_->GetTopRankChild() == this; }

const CKorSimpleTree* CKorSimpleTree::GetTopRank(int depth) const {
    const CKorSimpleTree* node = this;
    for (std::int64_t step = 0; depth < 0 || step < depth; ++step) {
        const CKorSimpleTree* next = node->GetTopRankChild();
        if (!next) return depth < 0 ? node : nullptr;
        node = next;
    }
    return node;
}

CKorSimpleTree* CKorSimpleTree::GetTopRank(int depth) {
    return const_cast<CKorSimpleTree*>(static_cast<const CKorSimpleTree*>(this)->GetTopRank(depth));
}

const CKorSimpleTree* CKorSimpleTree::GetTopOfTree() const { return GetRoot()->GetTopRank(-1); }

CKorSimpleTree* CKorSimpleTree::GetTopOfTree() { return GetRoot()->GetTopRank(-1); }

BOOL CKorSimpleTree::IsTopOfTree() const { return GetTopOfTree() == this; }

const CKorSimpleTree* CKorSimpleTree::GetRoot() const {
    const CKorSimpleTree* node = this;
    while (node->parent_)
        node = node->parent_;
    return node;
}

CKorSimpleTree* CKorSimpleTree::GetRoot() {
    return const_cast<CKorSimpleTree*>(static_cast<const CKorSimpleTree*>(this)->GetRoot());
}

int CKorSimpleTree::GetLevel() const {
    int level = 0;
    for (const CKorSimpleTree* node = parent_; node; node = node->parent_)
        ++level;
    return level;
}

BOOL CKorSimpleTree::IsRoot() const { return !parent_; }

int CKorSimpleTree::GetTreePath(CPtrArray& path, BOOL includeRoot) const {
    const int count = GetLevel() + (includeRoot ? 1 : 0);
    path.SetSize(count);
    const CKorSimpleTree* node = this;
    for (int index = count - 1; index >= 0; --index, node = node->parent_)
        path[index] = const_cast<CKorSimpleTree*>(node);
    return count;
}

int CKorSimpleTree::GetTreePath(CPtrArray& path, BOOL includeRoot) {
    return static_cast<const CKorSimpleTree*>(this)->GetTreePath(path, includeRoot);
}

CKorSimpleTree* CKorSimpleTree::GetNextNeighbor() const {
    return parent_ ? (*parent_)[parent_->placeOf(this) + 1] : nullptr;
}

CKorSimpleTree* CKorSimpleTree::GetNext() const {
    if (count() > 0) return at(0);
    for (const CKorSimpleTree* node = this; node; node = node->parent_)
        if (CKorSimpleTree* next = node->GetNextNeighbor()) return next;
    return nullptr;
}
