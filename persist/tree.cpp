// Names on the nodes of a tree, and what they are used for.

#include "korutil/tree.h"

#include <charconv>

#include "korutil/framework/ptr_array.h"
#include "korutil/framework/string_array.h"

namespace {

CString numbered(const CString& name, int number) {
    char digits[16];
    *std::to_chars(digits, digits + sizeof digits - 1, number).ptr = 0;
    return name + digits;
}

const CKorTree& nodeAt(const CPtrArray& nodes, int index) {
    return *static_cast<const CKorTree*>(static_cast<const CKorSimpleTree*>(nodes[index]));
}

}  // namespace

IMPLEMENT_DYNAMIC(CKorTree, CKorSimpleTree)

CKorTree::CKorTree() = default;

CKorTree::~CKorTree() = default;

void CKorTree::SetName(LPCSTR name) { name_ = name; }

CKorTree* CKorTree::child(int index) const { return static_cast<CKorTree*>((*this)[index]); }

int CKorTree::GetNamesOfChildren(CStringArray& names) const {
    const int count = GetChildCount();
    names.SetSize(count);
    for (int index = 0; index < count; ++index)
        names[index] = child(index)->name_;
    return count;
}

CString CKorTree::GetTreeName(LPCSTR separator, BOOL includeRoot) const {
    CStringArray names;
    const int count = GetTreeNames(names, includeRoot);
    CString joined;
    for (int index = 0; index < count; ++index) {
        if (index > 0) joined += separator;
        joined += names[index];
    }
    return joined;
}

int CKorTree::GetTreeNames(CStringArray& names, BOOL includeRoot) const {
    return GetTreeNames(names, includeRoot, nullptr);
}

int CKorTree::GetTreeNames(CStringArray& names, BOOL includeRoot, LPCSTR suffix) const {
    CPtrArray path;
    const int count = GetTreePath(path, includeRoot);
    names.SetSize(count);
    for (int index = 0; index < count; ++index) {
        names[index] = nodeAt(path, index).name_;
        if (suffix) names[index] += suffix;
    }
    return count;
}

CKorTree* CKorTree::FindChildByName(LPCSTR name) const {
    const int count = GetChildCount();
    for (int index = 0; index < count; ++index)
        if (child(index)->name_.Compare(name) == 0) return child(index);
    return nullptr;
}

int CKorTree::RemoveEqualChildrenNames() {
    int renamed = 0;
    const int count = GetChildCount();
    for (int index = count - 1; index >= 0; --index) {
        CKorTree& node = *child(index);
        CString name = node.name_;
        int number = 1;
        for (int other = count - 1; other >= 0; --other) {
            while (other != index && name == child(other)->name_)
                name = numbered(node.name_, number++);
        }
        if (number > 1) {
            node.name_ = name;
            ++renamed;
        }
    }
    return renamed;
}

BOOL CKorTree::SetTopRankBranch(const CStringArray& names) {
    for (int index = 0; index < names.GetSize(); ++index) {
        CKorTree* named = FindChildByName(names[index]);
        if (!named) return FALSE;
        SetTopRank(named);
    }
    return TRUE;
}
