// The two orders of a node's children: who owns whom, adding, deleting, looking up, ranking.

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

#include "korutil/framework/memory_exception.h"
#include "korutil/framework/ptr_array.h"
#include "korutil/tree.h"
#include "persist/children.h"
#include "persist/tag_storage.h"

namespace {

// Deleting recurses down to this level, where a destructor still finds its children; below it does not
// recurse.
constexpr int kRecursionLevels = 256;
constexpr int kFirstCapacity = 4;

void* resized(void* block, std::size_t size) {
    void* grown = std::realloc(block, size);
    if (!grown) AfxThrowMemoryException();
    return grown;
}

std::size_t bytesOf(int nodes) { return static_cast<std::size_t>(nodes) * sizeof(CKorSimpleTree*); }

int lastIndexOf(const CKorSimpleTree* node, CKorSimpleTree* const* nodes, int count) {
    int index = count - 1;
    while (index >= 0 && nodes[index] != node)
        --index;
    return index;
}

int copyTo(CPtrArray& target, CKorSimpleTree* const* nodes, int count) {
    target.SetSize(count);
    std::copy_n(nodes, count, target.GetData());
    return count;
}

void eraseAt(CKorSimpleTree** nodes, int index, int count) {
    std::copy(nodes + index + 1, nodes + count, nodes + index);
}

}  // namespace

int KORUTIL_CALL utlCalcIndex(int code, int current, int count) {
    std::int64_t index = code;
    switch (code) {
        case std::numeric_limits<int>::max():
            index = std::int64_t{count} - 1;
            break;
        case -1:
            index = std::int64_t{current} + 1;
            break;
        case -2:
            index = current;
            break;
        case -3:
            index = std::int64_t{current} - 1;
            break;
        default:
            break;
    }
    return static_cast<int>(std::min(std::max<std::int64_t>(index, 0), std::int64_t{count} - 1));
}

IMPLEMENT_DYNAMIC(CKorSimpleTree, CObject)

CKorSimpleTree::CKorSimpleTree() = default;

CKorSimpleTree::~CKorSimpleTree() {
    DeleteChildren();
    if (parent_) parent_->forget(this);
    if (!children_) return;
    std::free(children_->ranks);
    std::free(children_);
}

CKorSimpleTree* CKorSimpleTree::AddNewKnot(CKorSimpleTree* node, CKorSimpleTree* before) {
    if (!node || node == this) return nullptr;
    if (node->count() > 0) {
        for (const CKorSimpleTree* ancestor = parent_; ancestor; ancestor = ancestor->parent_)
            if (ancestor == node) return nullptr;
    }
    reserve(count() + 1);
    const bool inFront = before && before != node && FindChild(before) >= 0;
    if (inFront) separateRanks();
    if (node->parent_) node->parent_->forget(node);
    append(node);
    if (inFront) {
        CKorSimpleTree** order = children_->order();
        const int place = FindChild(before);
        std::rotate(order + place, order + count() - 1, order + count());
        node->place_ = place;
    }
    return node;
}

void CKorSimpleTree::DeleteChildren() {
    if (count() == 0) return;
    if (children_->asRead) {
        kor::TagRow::freeAll({children_->order(), static_cast<std::size_t>(count())});
        children_->count = children_->open = 0;
        children_->bytes = 0;
        return;
    }
    if (!hasAncestors(kRecursionLevels)) {
        while (count() > 0) {
            expect(count() - 1 - kor::kExpectAhead);
            delete at(count() - 1);
        }
        return;
    }
    for (CKorSimpleTree* node = this; count() > 0;) {
        while (node->count() > 0)
            node = node->at(node->count() - 1);
        CKorSimpleTree* parent = node->parent_;
        delete node;
        node = parent;
    }
}

int CKorSimpleTree::GetChildCount() const { return count(); }

CKorSimpleTree* CKorSimpleTree::GetChild(int index) const {
    if (count() == 0) return nullptr;
    if (index < 0 || index >= count()) index = utlCalcIndex(index, GetTopRankIndex(), count());
    return at(index);
}

CKorSimpleTree* CKorSimpleTree::operator[](int index) const {
    return index >= 0 && index < count() ? at(index) : nullptr;
}

int CKorSimpleTree::GetChildren(CPtrArray& children) const {
    return children_ ? copyTo(children, children_->order(), count()) : copyTo(children, nullptr, 0);
}

int CKorSimpleTree::GetChildrenByRank(CPtrArray& children) const {
    return children_ ? copyTo(children, byRank(), count()) : copyTo(children, nullptr, 0);
}

int CKorSimpleTree::FindChild(const CKorSimpleTree* node) const {
    return children_ ? lastIndexOf(node, children_->order(), count()) : -1;
}

int CKorSimpleTree::GetRank(const CKorSimpleTree* node) const {
    return children_ ? lastIndexOf(node, byRank(), count()) : -1;
}

void CKorSimpleTree::SwapChildren(int first, int second) {
    if (first == second || !(*this)[first] || !(*this)[second]) return;
    separateRanks();
    children_->asRead = false;
    CKorSimpleTree** order = children_->order();
    std::swap(order[first], order[second]);
    order[first]->place_ = first;
    order[second]->place_ = second;
}

void CKorSimpleTree::SwapRank(int first, int second) {
    if (first == second || !(*this)[first] || !(*this)[second]) return;
    separateRanks();
    std::swap(children_->ranks[first], children_->ranks[second]);
}

CKorSimpleTree* CKorSimpleTree::GetChildByRank(int rank) const {
    return rank >= 0 && rank < count() ? byRank()[rank] : nullptr;
}

CKorSimpleTree* CKorSimpleTree::GetTopRankChild() const { return GetChildByRank(0); }

int CKorSimpleTree::GetTopRankIndex() const {
    const CKorSimpleTree* top = GetTopRankChild();
    return top ? placeOf(top) : -1;
}

BOOL CKorSimpleTree::SetTopRank(CKorSimpleTree* node) {
    const int rank = GetRank(node);
    if (rank < 1) return FALSE;
    separateRanks();
    CKorSimpleTree** ranks = children_->ranks;
    std::rotate(ranks, ranks + rank, ranks + rank + 1);
    return TRUE;
}

// Room for that many children, so that appending them cannot fail.
void CKorSimpleTree::reserve(int count) {
    if (count < 0) AfxThrowMemoryException();  // one more than there are numbers
    const int former = children_ ? children_->capacity : 0;
    if (count <= former) return;
    const int half = former > std::numeric_limits<int>::max() / 2 ? 0 : former / 2;
    const int capacity = std::max({count, kFirstCapacity, former + half});
    if (children_ && children_->ranks)
        children_->ranks = static_cast<CKorSimpleTree**>(resized(children_->ranks, bytesOf(capacity)));
    void* block = resized(children_, sizeof(Children) + bytesOf(capacity));
    if (!children_) {
        new (block) Children;
        if (parent_) parent_->children_->asRead = false;
    }
    children_ = static_cast<Children*>(block);
    children_->capacity = capacity;
}

// Gives the rank order an array of its own before the two orders begin to differ. There are children.
void CKorSimpleTree::separateRanks() {
    if (children_->ranks) return;
    children_->ranks = static_cast<CKorSimpleTree**>(resized(nullptr, bytesOf(children_->capacity)));
    std::copy_n(children_->order(), children_->count, children_->ranks);
}

void CKorSimpleTree::forget(CKorSimpleTree* node) {
    if (children_->ranks) eraseAt(children_->ranks, GetRank(node), count());
    if (at(count() - 1) != node) eraseAt(children_->order(), placeOf(node), count());
    children_->asRead = false;
    children_->subtract(node->weight_);
    node->parent_ = nullptr;
    node->place_ = -1;
    --children_->count;
}

// FindChild for a node that is known to be a living child, searched from where it stood last.
int CKorSimpleTree::placeOf(const CKorSimpleTree* node) const {
    for (int step = 0; step <= count(); ++step) {
        if ((*this)[node->place_ - step] == node) return node->place_ - step;
        if ((*this)[node->place_ + step] == node) return node->place_ + step;
    }
    return FindChild(node);
}

bool CKorSimpleTree::hasAncestors(int count) const {
    const CKorSimpleTree* node = this;
    while (count > 0 && node->parent_) {
        node = node->parent_;
        --count;
    }
    return count == 0;
}
