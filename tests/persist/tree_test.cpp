#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korutil/framework/string_array.h"
#include "korutil/tree.h"

namespace {

using Names = std::vector<std::string>;

Names namesOf(const CStringArray& array) {
    Names names;
    for (int index = 0; index < array.GetSize(); ++index)
        names.emplace_back(static_cast<const char*>(array[index]));
    return names;
}

CKorTree* add(CKorTree& parent, const char* name) {
    auto* node = new CKorTree;
    node->SetName(name);
    parent.AddNewKnot(node);
    return node;
}

Names childNames(const CKorTree& tree) {
    CStringArray names;
    EXPECT_EQ(tree.GetNamesOfChildren(names), tree.GetChildCount());
    return namesOf(names);
}

// The call is what is tested, so the sanitizer's own check of it stays off.
__attribute__((no_sanitize("undefined"), noinline)) CString nameOf(const CKorTree* node) {
    return node->GetName();
}

TEST(Tree, NamesAlongThePath) {
    CKorTree root;
    root.SetName("root");
    CKorTree* leaf = add(*add(root, "middle"), "leaf");
    EXPECT_STREQ(leaf->GetTreeName("\\", 1), "root\\middle\\leaf");
    EXPECT_STREQ(leaf->GetTreeName(", ", 0), "middle, leaf");
    EXPECT_STREQ(leaf->GetTreeName(nullptr, 0), "middleleaf");
    EXPECT_STREQ(root.GetTreeName("/", 0), "");
    CStringArray names;
    names.Add("former");
    EXPECT_EQ(leaf->GetTreeNames(names, 0), 2);
    EXPECT_EQ(namesOf(names), (Names{"middle", "leaf"}));
    EXPECT_EQ(leaf->GetTreeNames(names, 1, ".x"), 3);
    EXPECT_EQ(namesOf(names), (Names{"root.x", "middle.x", "leaf.x"}));
}

TEST(Tree, EqualNamesAreNumberedAsRequired) {
    struct Case {
        Names before, after;
        int renamed;
    };
    const Case cases[] = {
        {{"A", "A", "A"}, {"A", "A1", "A1"}, 2},    // a name is not compared again with those passed
        {{"A1", "A", "A"}, {"A1", "A", "A2"}, 1},   // the first child is still ahead of the scan
        {{"A", "A1", "A"}, {"A", "A11", "A1"}, 2},  // A1 was passed already when the last became A1
        {{"", ""}, {"", "1"}, 1},
    };
    for (const Case& c : cases) {
        CKorTree root;
        for (const std::string& name : c.before)
            add(root, name.c_str());
        EXPECT_EQ(root.RemoveEqualChildrenNames(), c.renamed) << testing::PrintToString(c.before);
        EXPECT_EQ(childNames(root), c.after) << testing::PrintToString(c.before);
    }
}

TEST(Tree, ABranchOfNamesIsPromotedAmongTheSameChildren) {
    CKorTree root;
    CKorTree* a = add(root, "a");
    CKorTree* b = add(root, "b");
    CKorTree* c = add(root, "c");
    add(*c, "inner");
    const CKorTree* volatile none = nullptr;
    EXPECT_TRUE(nameOf(none).IsEmpty()) << "a null node has an empty name";
    c->SetName(nullptr);
    EXPECT_TRUE(nameOf(c).IsEmpty());
    c->SetName("c");
    EXPECT_EQ(root.FindChildByName("c"), c);
    EXPECT_EQ(root.FindChildByName("C"), nullptr);
    EXPECT_EQ(root.FindChildByName(""), nullptr);
    CStringArray names;
    EXPECT_TRUE(root.SetTopRankBranch(names));
    names.Add("c");
    names.Add("b");
    EXPECT_TRUE(root.SetTopRankBranch(names));
    EXPECT_EQ(root.GetTopRankChild(), b);
    EXPECT_EQ(root.GetRank(c), 1);
    names.SetAt(0, "a");
    names.SetAt(1, "inner");  // below c, so not found
    names.Add("c");
    EXPECT_FALSE(root.SetTopRankBranch(names));
    EXPECT_EQ(root.GetTopRankChild(), a);
}

}  // namespace
