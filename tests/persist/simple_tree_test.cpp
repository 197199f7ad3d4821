#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "korutil/framework/ptr_array.h"
#include "korutil/tree.h"
#include "tests/support/random.h"

namespace {

using Nodes = std::vector<CKorSimpleTree*>;

constexpr int kLast = std::numeric_limits<int>::max();

Nodes nodesOf(const CPtrArray& array) {
    Nodes nodes;
    for (int index = 0; index < array.GetSize(); ++index)
        nodes.push_back(static_cast<CKorSimpleTree*>(array[index]));
    return nodes;
}

Nodes children(const CKorSimpleTree& tree) {
    CPtrArray array;
    array.Add(nullptr);  // former content is replaced
    EXPECT_EQ(tree.GetChildren(array), tree.GetChildCount());
    return nodesOf(array);
}

Nodes ranks(const CKorSimpleTree& tree) {
    CPtrArray array;
    EXPECT_EQ(tree.GetChildrenByRank(array), tree.GetChildCount());
    return nodesOf(array);
}

Nodes path(const CKorSimpleTree& node, BOOL includeRoot) {
    CPtrArray array;
    const int count = node.GetTreePath(array, includeRoot);
    EXPECT_EQ(count, array.GetSize());
    return nodesOf(array);
}

// A root with children a, b, c, d in both orders.
struct Family {
    CKorSimpleTree root;
    CKorSimpleTree* a = root.AddNewKnot(new CKorSimpleTree);
    CKorSimpleTree* b = root.AddNewKnot(new CKorSimpleTree);
    CKorSimpleTree* c = root.AddNewKnot(new CKorSimpleTree);
    CKorSimpleTree* d = root.AddNewKnot(new CKorSimpleTree);
};

// Tells when it dies, and how many children it still has then.
class Mourned : public CKorSimpleTree {
  public:
    Mourned(std::vector<std::string>& log, std::string name) : log_(log), name_(std::move(name)) {}
    ~Mourned() override { log_.push_back(name_ + std::to_string(GetChildCount())); }

  private:
    std::vector<std::string>& log_;
    std::string name_;
};

TEST(CalcIndex, CodesAreTurnedIntoIndexesAndClamped) {
    struct Case {
        int code, current, count, index;
    };
    const Case cases[] = {
        {0, 2, 5, 0},
        {kLast, 2, 5, 4},
        {5, 0, 5, 4},
        {-1, 4, 5, 4},
        {-3, 0, 5, 0},
        {-4, 2, 5, 0},
        {-2, 9, 5, 4},
        {0, 0, 0, -1},
        {kLast, 0, 0, -1},
        {-1, kLast, kLast, kLast - 1},
        {std::numeric_limits<int>::min(), 0, 1, 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(utlCalcIndex(c.code, c.current, c.count), c.index)
            << c.code << ' ' << c.current << ' ' << c.count;
}

TEST(SimpleTree, AMovedNodeLeavesItsParentAndNoTreeBecomesACircle) {
    Family f;
    CKorSimpleTree* grandchild = f.b->AddNewKnot(new CKorSimpleTree);
    CKorSimpleTree stranger;
    EXPECT_EQ(f.root.AddNewKnot(nullptr), nullptr);
    EXPECT_EQ(f.root.AddNewKnot(f.d, &stranger), f.d) << "at the end";
    EXPECT_EQ(f.root.AddNewKnot(&f.root), nullptr);
    EXPECT_EQ(grandchild->AddNewKnot(f.b), nullptr);
    EXPECT_EQ(f.a->AddNewKnot(f.b), f.b);
    EXPECT_EQ(children(f.root), (Nodes{f.a, f.c, f.d}));
    EXPECT_EQ(ranks(f.root), (Nodes{f.a, f.c, f.d}));
    EXPECT_EQ(f.root.AddNewKnot(f.d, f.a), f.d);
    EXPECT_EQ(children(f.root), (Nodes{f.d, f.a, f.c}));
    EXPECT_EQ(ranks(f.root), (Nodes{f.a, f.c, f.d})) << "at the lowest rank";
    EXPECT_EQ(grandchild->GetLevel(), 3);
    EXPECT_EQ(path(*grandchild, 1), (Nodes{&f.root, f.a, f.b, grandchild}));
    EXPECT_EQ(path(*grandchild, 0), (Nodes{f.a, f.b, grandchild}));
    EXPECT_EQ(path(f.root, 0), Nodes{});
    EXPECT_EQ(grandchild->GetRoot(), &f.root);
}

TEST(SimpleTree, ChildIndexesFollowTheTopRankChild) {
    Family f;
    f.root.SetTopRank(f.c);
    EXPECT_EQ(f.root.GetTopRankIndex(), 2);
    const std::pair<int, CKorSimpleTree*> cases[] = {{0, f.a},  {3, f.d},  {4, f.d},  {kLast, f.d},
                                                     {-1, f.d}, {-2, f.c}, {-3, f.b}, {-7, f.a}};
    for (const auto& [index, child] : cases)
        EXPECT_EQ(f.root.GetChild(index), child) << index;
    EXPECT_EQ(f.root[3], f.d);
    EXPECT_EQ(f.root[4], nullptr);
    EXPECT_EQ(f.root[-1], nullptr);
    EXPECT_EQ(f.a->GetChild(0), nullptr);
    EXPECT_EQ(f.a->GetChild(-2), nullptr);
    EXPECT_EQ(f.a->GetTopRankChild(), nullptr);
    for (CKorSimpleTree* none : {f.c, static_cast<CKorSimpleTree*>(nullptr), &f.root})
        EXPECT_FALSE(f.root.SetTopRank(none));
    EXPECT_EQ(f.root.GetRank(f.b), 2);
    EXPECT_EQ(f.root.GetRank(&f.root), -1);
    EXPECT_EQ(f.root.GetChildByRank(0), f.c);
    EXPECT_EQ(f.root.GetChildByRank(4), nullptr);
}

TEST(SimpleTree, PushingReachesEveryAncestor) {
    Family f;
    CKorSimpleTree* x = f.b->AddNewKnot(new CKorSimpleTree);
    CKorSimpleTree* y = f.b->AddNewKnot(new CKorSimpleTree);
    EXPECT_FALSE(f.root.PushToTopRank());
    EXPECT_FALSE(f.root.PushToTreeTopRank());
    EXPECT_FALSE(x->PushToTopRank());
    EXPECT_TRUE(y->PushToTreeTopRank());
    EXPECT_FALSE(y->PushToTreeTopRank());
    EXPECT_TRUE(f.b->IsTopRank());
    EXPECT_FALSE(f.a->IsTopRank());
    EXPECT_TRUE(f.root.IsTopRank());
    EXPECT_TRUE(y->IsTopOfTree());
    EXPECT_FALSE(x->IsTopOfTree());
    EXPECT_EQ(f.a->GetTopOfTree(), y);
    const CKorSimpleTree& root = f.root;
    EXPECT_EQ(root.GetTopRank(0), &f.root);
    EXPECT_EQ(root.GetTopRank(2), y);
    EXPECT_EQ(root.GetTopRank(3), nullptr);
    EXPECT_EQ(root.GetTopRank(-1), y);
    EXPECT_EQ(x->GetTopRank(-1), x);
}

TEST(SimpleTree, ADestructorStillFindsItsChildrenAndTheLastDieFirst) {
    std::vector<std::string> log;
    {
        Mourned root(log, "root");
        CKorSimpleTree* first = root.AddNewKnot(new Mourned(log, "first"));
        root.AddNewKnot(new Mourned(log, "second"));
        first->AddNewKnot(new Mourned(log, "inner"));
    }
    EXPECT_EQ(log, (std::vector<std::string>{"root2", "second0", "first1", "inner0"}));
}

TEST(SimpleTree, DepthCostsNoStack) {
    CKorSimpleTree root;
    CKorSimpleTree* node = &root;
    const int levels = 300000;
    for (int level = 0; level < levels; ++level)
        node = node->AddNewKnot(new CKorSimpleTree);
    EXPECT_EQ(node->GetLevel(), levels);
    root.DeleteChildren();
    EXPECT_EQ(root.GetChildCount(), 0);
}

TEST(SimpleTree, EveryNodeIsVisitedOnceInPreOrder) {
    auto random = kor::test::generator();
    CKorSimpleTree root;
    Nodes all{&root};
    for (int count = kor::test::scaled(300); count > 0; --count) {
        CKorSimpleTree* parent = all[random() % all.size()];
        CKorSimpleTree* before = random() % 2 ? parent->GetChild(-2) : nullptr;
        all.push_back(parent->AddNewKnot(new CKorSimpleTree, before));
    }
    Nodes expected;
    const auto visit = [&expected](const auto& self, CKorSimpleTree* node) -> void {
        expected.push_back(node);
        for (CKorSimpleTree* child : children(*node))
            self(self, child);
    };
    visit(visit, &root);
    Nodes visited;
    for (CKorSimpleTree* node = &root; node && visited.size() <= all.size(); node = node->GetNext())
        visited.push_back(node);
    EXPECT_EQ(visited, expected);
}

// Both orders against plain vectors, over random changes.
TEST(SimpleTree, BothOrdersFollowTheModel) {
    auto random = kor::test::generator();
    CKorSimpleTree root;
    Nodes order, byRank;
    for (int step = 0; step < kor::test::scaled(4000); ++step) {
        const unsigned action = order.empty() ? 0 : static_cast<unsigned>(random() % 6);
        const int i = order.empty() ? 0 : static_cast<int>(random() % order.size());
        const int j = order.empty() ? 0 : static_cast<int>(random() % order.size());
        CKorSimpleTree* const node = action == 0 ? new CKorSimpleTree : order[static_cast<std::size_t>(i)];
        const auto rank = std::find(byRank.begin(), byRank.end(), node);
        if (action == 0) {
            CKorSimpleTree* before = j % 2 == 1 ? order[static_cast<std::size_t>(i)] : nullptr;
            root.AddNewKnot(node, before);
            order.insert(before ? order.begin() + i : order.end(), node);
            byRank.push_back(node);
        } else if (action == 1 && order.size() > 3) {
            delete node;
            order.erase(order.begin() + i);
            byRank.erase(rank);
        } else if (action == 2) {
            EXPECT_EQ(root.SetTopRank(node), rank != byRank.begin());
            std::rotate(byRank.begin(), rank, rank + 1);
        } else if (action == 3) {
            root.SwapChildren(i, j);
            std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(j)]);
        } else if (action == 4) {
            root.SwapRank(i, j);
            std::swap(byRank[static_cast<std::size_t>(i)], byRank[static_cast<std::size_t>(j)]);
        }
        ASSERT_EQ(children(root), order) << "step " << step;
        ASSERT_EQ(ranks(root), byRank) << "step " << step;
        ASSERT_EQ(root.GetTopRankIndex(), std::find(order.begin(), order.end(), byRank[0]) - order.begin());
        for (std::size_t at = 0; at < order.size(); ++at)
            ASSERT_EQ(order[at]->GetNextNeighbor(), at + 1 < order.size() ? order[at + 1] : nullptr);
    }
    root.SwapChildren(0, static_cast<int>(order.size()));
    root.SwapRank(-1, 0);
    EXPECT_EQ(children(root), order);
    EXPECT_EQ(ranks(root), byRank);
}

}  // namespace
