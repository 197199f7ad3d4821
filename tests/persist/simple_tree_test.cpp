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
        {3, 0, 5, 3},
        {5, 0, 5, 4},
        {-1, 2, 5, 3},
        {-1, 4, 5, 4},
        {-2, 2, 5, 2},
        {-3, 2, 5, 1},
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

TEST(SimpleTree, NewChildrenGoInFrontOfASiblingAndToTheLowestRank) {
    Family f;
    CKorSimpleTree stranger;
    EXPECT_EQ(f.root.AddNewKnot(nullptr), nullptr);
    auto* front = new CKorSimpleTree;
    EXPECT_EQ(f.root.AddNewKnot(front, f.b), front);
    auto* appended = new CKorSimpleTree;
    EXPECT_EQ(f.root.AddNewKnot(appended, &stranger), appended);
    EXPECT_EQ(children(f.root), (Nodes{f.a, front, f.b, f.c, f.d, appended}));
    EXPECT_EQ(ranks(f.root), (Nodes{f.a, f.b, f.c, f.d, front, appended}));
    EXPECT_EQ(front->GetRoot(), &f.root);
}

TEST(SimpleTree, AMovedNodeLeavesItsParentAndNoTreeBecomesACircle) {
    Family f;
    CKorSimpleTree* grandchild = f.b->AddNewKnot(new CKorSimpleTree);
    EXPECT_EQ(f.root.AddNewKnot(&f.root), nullptr);
    EXPECT_EQ(grandchild->AddNewKnot(f.b), nullptr);
    EXPECT_EQ(f.a->AddNewKnot(f.b), f.b);
    EXPECT_EQ(children(f.root), (Nodes{f.a, f.c, f.d}));
    EXPECT_EQ(ranks(f.root), (Nodes{f.a, f.c, f.d}));
    EXPECT_EQ(f.root.AddNewKnot(f.d, f.a), f.d);
    EXPECT_EQ(children(f.root), (Nodes{f.d, f.a, f.c}));
    EXPECT_EQ(grandchild->GetLevel(), 3);
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
}

TEST(SimpleTree, PromotionKeepsTheOrderOfTheOthers) {
    Family f;
    EXPECT_TRUE(f.root.SetTopRank(f.c));
    EXPECT_EQ(ranks(f.root), (Nodes{f.c, f.a, f.b, f.d}));
    EXPECT_FALSE(f.root.SetTopRank(f.c));
    EXPECT_FALSE(f.root.SetTopRank(nullptr));
    EXPECT_FALSE(f.a->SetTopRank(f.b));
    EXPECT_EQ(f.root.GetRank(f.b), 2);
    EXPECT_EQ(f.root.GetRank(&f.root), -1);
    EXPECT_EQ(f.root.GetChildByRank(0), f.c);
    EXPECT_EQ(f.root.GetChildByRank(4), nullptr);
    EXPECT_EQ(children(f.root), (Nodes{f.a, f.b, f.c, f.d}));
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

TEST(SimpleTree, PathsRunFromTheRootDown) {
    Family f;
    CKorSimpleTree* leaf = f.c->AddNewKnot(new CKorSimpleTree);
    EXPECT_EQ(path(*leaf, 1), (Nodes{&f.root, f.c, leaf}));
    EXPECT_EQ(path(*leaf, 0), (Nodes{f.c, leaf}));
    EXPECT_EQ(path(f.root, 1), (Nodes{&f.root}));
    EXPECT_EQ(path(f.root, 0), Nodes{});
    EXPECT_TRUE(f.root.IsRoot());
    EXPECT_FALSE(leaf->IsRoot());
    EXPECT_EQ(leaf->GetLevel(), 2);
}

TEST(SimpleTree, DeletedChildrenLeaveBothOrders) {
    Family f;
    f.root.SetTopRank(f.d);
    delete f.b;
    EXPECT_EQ(children(f.root), (Nodes{f.a, f.c, f.d}));
    EXPECT_EQ(ranks(f.root), (Nodes{f.d, f.a, f.c}));
    EXPECT_EQ(f.a->GetNextNeighbor(), f.c);
    f.root.DeleteChildren();
    EXPECT_EQ(f.root.GetChildCount(), 0);
    EXPECT_EQ(f.root.GetNext(), nullptr);
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
    Nodes order;
    Nodes byRank;
    const auto below = [&random](std::size_t count) { return static_cast<std::size_t>(random() % count); };
    for (int step = 0; step < kor::test::scaled(4000); ++step) {
        const unsigned action = order.empty() ? 0 : static_cast<unsigned>(random() % 6);
        const std::size_t i = order.empty() ? 0 : below(order.size());
        const std::size_t j = order.empty() ? 0 : below(order.size());
        const auto at = [](std::size_t index) { return static_cast<std::ptrdiff_t>(index); };
        if (action <= 1) {
            CKorSimpleTree* before = action == 1 ? order[i] : nullptr;
            CKorSimpleTree* node = root.AddNewKnot(new CKorSimpleTree, before);
            order.insert(before ? order.begin() + at(i) : order.end(), node);
            byRank.push_back(node);
        } else if (action == 2 && order.size() > 3) {
            CKorSimpleTree* node = order[i];
            delete node;
            order.erase(order.begin() + at(i));
            byRank.erase(std::find(byRank.begin(), byRank.end(), node));
        } else if (action == 3) {
            const auto rank = std::find(byRank.begin(), byRank.end(), order[i]);
            EXPECT_EQ(root.SetTopRank(order[i]), rank != byRank.begin());
            std::rotate(byRank.begin(), rank, rank + 1);
        } else if (action == 4) {
            root.SwapChildren(static_cast<int>(i), static_cast<int>(j));
            std::swap(order[i], order[j]);
        } else if (action == 5) {
            root.SwapRank(static_cast<int>(i), static_cast<int>(j));
            std::swap(byRank[i], byRank[j]);
        }
        ASSERT_EQ(children(root), order) << "step " << step;
        ASSERT_EQ(ranks(root), byRank) << "step " << step;
        ASSERT_EQ(root.GetTopRankIndex(), std::find(order.begin(), order.end(), byRank[0]) - order.begin())
            << "step " << step;
        ASSERT_EQ(order[i % order.size()]->GetNextNeighbor(),
                  i % order.size() + 1 < order.size() ? order[i % order.size() + 1] : nullptr);
    }
    root.SwapChildren(0, static_cast<int>(order.size()));
    root.SwapRank(-1, 0);
    EXPECT_EQ(children(root), order);
    EXPECT_EQ(ranks(root), byRank);
}

}  // namespace
