#pragma once
/// Trees with two orders. Every node keeps its children in child order (positions, for enumeration and
/// storage) and in rank order (the most recently promoted first), which marks one child of each node as its
/// top-rank child, such as the active branch of a hierarchy. CKorSimpleTree is the node, CKorTree a node with
/// a name.
///
/// A node owns its children: deleting a node deletes its subtree, and a child that is deleted leaves its
/// parent's two orders by itself. Nodes that get a parent must have been made with `new`; a root may stand
/// anywhere. Indexes are signed; "child" means a direct child. Not thread-safe, not even for reading while
/// another thread changes the tree; different trees may be used by different threads.

#include "korutil/framework/object.h"
#include "korutil/framework/string.h"
#include "korutil/platform.h"

class CPtrArray;
class CStringArray;

class CTagTree;

namespace kor {
class TagTreeReader;
class TagTreeWriter;
}  // namespace kor

/// Turns a navigation code into an index.
/// @param code     0 the first, 0x7FFFFFFF the last, -1 the one after `current`, -2 `current`, -3 the one
///                 before it; every other value stands for itself
/// @param current  the index that relative codes start from
/// @param count    number of entries
/// @return the index, raised to 0 and then lowered to count - 1; so -1 when there are no entries
KORUTIL_API int KORUTIL_CALL utlCalcIndex(int code, int current, int count);

/// A node of a tree with child and rank order.
class KORUTIL_CLASS CKorSimpleTree : public CObject {
    DECLARE_DYNAMIC(CKorSimpleTree)

  public:
    /// A root without children.
    CKorSimpleTree();
    /// Deletes the children, from the last to the first, then leaves the parent's orders. Depth costs no
    /// stack: below 256 levels the descendants of a node are deleted before the node's own destructor starts.
    ~CKorSimpleTree() override;
    CKorSimpleTree(const CKorSimpleTree&) = delete;
    CKorSimpleTree& operator=(const CKorSimpleTree&) = delete;

    /// Makes a node a child of this one, at the end of the rank order.
    /// @param node    the new child; it leaves its former parent first. Classes that override this make a
    ///                node of their own when it is null
    /// @param before  the child in front of which it is inserted in child order; when null or no child
    ///                of this node, it is appended
    /// @return `node`; null, and nothing changed, when it is null, this node itself or one of its ancestors
    /// @throws CMemoryException when memory is short; nothing is changed then
    virtual CKorSimpleTree* AddNewKnot(CKorSimpleTree* node, CKorSimpleTree* before = nullptr);

    /// Moves a child to rank 0; the ones that stood in front of it move back by one.
    /// @return 1; 0 when the node is at rank 0 already or is no child of this one
    /// @throws CMemoryException when memory is short; nothing is changed then
    virtual BOOL SetTopRank(CKorSimpleTree* node);

    /// Deletes every child, from the last to the first.
    void DeleteChildren();

    /// @return the number of children
    int GetChildCount() const;

    /// @param index  an index or a navigation code of utlCalcIndex, relative to the top-rank child; an index
    ///               at or past the end gives the last child
    /// @return the child; null only when there are no children
    CKorSimpleTree* GetChild(int index) const;

    /// @return the child at that place in child order; null when the index is out of range
    CKorSimpleTree* operator[](int index) const;

    /// Copies the children (`CKorSimpleTree*`) in child order, in place of the array's former content.
    /// @return their count
    /// @throws CMemoryException
    int GetChildren(CPtrArray& children) const;
    /// The same in rank order.
    int GetChildrenByRank(CPtrArray& children) const;

    /// @return the child-order index of a node; -1 when it is no child of this one
    int FindChild(const CKorSimpleTree* node) const;
    /// @return the rank-order index of a node; -1 when it is no child of this one
    int GetRank(const CKorSimpleTree* node) const;

    /// Exchange two entries of the child order, or of the rank order. Nothing happens unless both indexes are
    /// valid and differ. SwapRank may run out of memory (CMemoryException) with nothing changed; SwapChildren
    /// likewise.
    void SwapChildren(int first, int second);
    void SwapRank(int first, int second);

    /// @return the child at that place in rank order; null when the index is out of range
    CKorSimpleTree* GetChildByRank(int rank) const;
    /// @return the child at rank 0; null when there are no children
    CKorSimpleTree* GetTopRankChild() const;
    /// @return the child-order index of the top-rank child; -1 when there are no children
    int GetTopRankIndex() const;

    /// Asks the parent to SetTopRank this node.
    /// @return the parent's answer; 0 for a root
    BOOL PushToTopRank();
    /// Does so for this node and each of its ancestors.
    /// @return 1 when any rank changed; 0 otherwise
    BOOL PushToTreeTopRank();

    /// @return 1 for a root or the top-rank child of its parent; 0 otherwise
    BOOL IsTopRank() const;

    /// Follows top-rank children from this node.
    /// @param depth  number of steps; negative for as many as there are
    /// @return the node reached (this one for 0); null when the chain ends earlier
    CKorSimpleTree* GetTopRank(int depth);
    const CKorSimpleTree* GetTopRank(int depth) const;
    /// @return the end of the chain of top-rank children that starts at the root
    CKorSimpleTree* GetTopOfTree();
    const CKorSimpleTree* GetTopOfTree() const;
    /// @return 1 when this node is GetTopOfTree()
    BOOL IsTopOfTree() const;

    /// @return the topmost ancestor; this node for a root
    CKorSimpleTree* GetRoot();
    const CKorSimpleTree* GetRoot() const;
    /// @return the number of ancestors
    int GetLevel() const;
    /// @return 1 when this node has no parent
    BOOL IsRoot() const;

    /// Fills an array with the path that ends in this node, in place of its former content.
    /// @param path         receives the nodes (`CKorSimpleTree*`), the topmost first
    /// @param includeRoot  0 leaves the root out; then the path of a root is empty
    /// @return the number of entries
    /// @throws CMemoryException
    int GetTreePath(CPtrArray& path, BOOL includeRoot);
    int GetTreePath(CPtrArray& path, BOOL includeRoot) const;

    /// @return the next sibling in child order; null for the last one and for a root
    CKorSimpleTree* GetNextNeighbor() const;
    /// @return the successor in pre-order (a node before its children) within the whole tree; null at the end
    CKorSimpleTree* GetNext() const;

  private:
    struct Children;

    int count() const;
    CKorSimpleTree* at(int index) const;
    void expect(int index) const;
    void setWeight(DWORD weight);
    CKorSimpleTree* const* byRank() const;
    void reserve(int count);
    void separateRanks();
    void append(CKorSimpleTree* node);
    void forget(CKorSimpleTree* node);
    int placeOf(const CKorSimpleTree* node) const;
    bool hasAncestors(int count) const;

    CKorSimpleTree* parent_ = nullptr;
    Children* children_ = nullptr;  // null until the node has had a child
    int place_ = -1;                // index in the parent's child order when last set; a hint that is checked
    DWORD weight_ = 0;              // its share in the sums that the parent keeps of its children

    friend class CTagTree;
    friend class kor::TagTreeReader;
    friend class kor::TagTreeWriter;
};

/// A tree node with a name. The children of such a node are such nodes.
class KORUTIL_CLASS CKorTree : public CKorSimpleTree {
    DECLARE_DYNAMIC(CKorTree)

  public:
    /// A root without children and with an empty name.
    CKorTree();
    ~CKorTree() override;
    CKorTree(const CKorTree&) = delete;
    CKorTree& operator=(const CKorTree&) = delete;

    /// @param name  the new name; null for an empty one
    void SetName(LPCSTR name);
    /// @return the name; an empty string when called on a null node, which is tolerated (a caller built with
    ///         a sanitizer is stopped by its own check of the call)
    CString GetName() const;

    /// Copies the children's names in child order, in place of the array's former content.
    /// @return their count
    int GetNamesOfChildren(CStringArray& names) const;

    /// @param separator    text between two names; null for none
    /// @param includeRoot  0 leaves the root's name out
    /// @return the names along GetTreePath, joined
    CString GetTreeName(LPCSTR separator, BOOL includeRoot) const;
    /// Copies the names along GetTreePath, one per entry, in place of the array's former content.
    /// @param suffix  text appended to every name; null or empty for none
    /// @return their count
    int GetTreeNames(CStringArray& names, BOOL includeRoot) const;
    int GetTreeNames(CStringArray& names, BOOL includeRoot, LPCSTR suffix) const;

    /// @return the first child in child order with exactly that name; null when there is none
    CKorTree* FindChildByName(LPCSTR name) const;

    /// Gives children with equal names new ones: from the last child to the first, a name that another child
    /// has gets a number (1, 2, ...) appended. A new name is not compared again with the children that the
    /// scan has passed, so "A", "A", "A" becomes "A", "A1", "A1": this is required.
    /// @return the number of children renamed
    int RemoveEqualChildrenNames();

    /// Promotes children of this node by name with SetTopRank, one after the other, up to the first name that
    /// is not found. All names are looked up among the children of this node, not of the one just promoted,
    /// so that the last one found ends at rank 0: this is required.
    /// @return 1 when every name was found, also for an empty list; 0 otherwise
    BOOL SetTopRankBranch(const CStringArray& names);

  private:
    CKorTree* child(int index) const;

    CString name_;
};
