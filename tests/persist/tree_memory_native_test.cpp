// What trees do when memory runs out: every single allocation of an action fails once.
#include <gtest/gtest.h>

#include <functional>

#include "tests/persist/tree_image.h"
#include "tests/support/failing_allocator.h"

namespace {

using namespace kor::test;

constexpr int kFull = 13;  // so many children that the next one needs memory for everything

struct Outcome {
    bool failed;       // an allocation did
    std::string what;  // was thrown
};

// Runs the action with the n-th allocation failing.
Outcome withFailure(int nth, const std::function<void()>& action) {
    FailingAllocation failing(nth);
    std::string what = thrownBy(action);
    failing.stop();
    return {failing.happened(), what};
}

void fill(CTagTree& section) {
    section.SaveLong(1, 2);
    section.SaveString(3, "a text that is longer than a short one");
    section.CreateSection(4, 5)->SaveTemporaryBuffer(6, 7, "12345", 5);
}

TEST(TreeMemory, AFailedSaveAddsNothing) {
    const double values[] = {1, 2};
    const std::function<void(CTagTree&)> saves[] = {
        [](CTagTree& node) { node.SaveLong(1, 2); },
        [](CTagTree& node) { node.SaveString(1, "text"); },
        [&values](CTagTree& node) { node.SaveDblArray(1, values, 2); },
        [](CTagTree& node) { node.CreateSection(1, 2); },
        [](CTagTree& node) { node.AddNewKnot(nullptr, node.GetChild(0)); },
    };
    for (const auto& save : saves) {
        int failures = 0;
        for (int nth = 1;; ++nth) {
            CRootTagTree root;
            for (int child = 0; child < kFull; ++child)
                root.SaveLong(9, child);
            const Outcome outcome = withFailure(nth, [&] { save(root); });
            EXPECT_EQ(outcome.what, outcome.failed ? "memory" : "none");
            ASSERT_EQ(root.GetChildCount(), outcome.failed ? kFull : kFull + 1);
            EXPECT_NE(root.GetChildByRank(root.GetChildCount() - 1), nullptr);
            if (!outcome.failed) break;
            ++failures;
        }
        EXPECT_GE(failures, 1);
    }
}

TEST(TreeMemory, AFailedPromotionChangesNothing) {
    for (int nth = 1;; ++nth) {
        CRootTagTree root;
        fill(root);
        const Outcome outcome = withFailure(nth, [&] { root.SetTopRank(root[2]); });
        EXPECT_EQ(outcome.what, outcome.failed ? "memory" : "none");
        EXPECT_EQ(root.GetRank(root[2]), outcome.failed ? 2 : 0);
        EXPECT_EQ(root.GetChildCount(), 3);
        if (!outcome.failed) break;
    }
}

TEST(TreeMemory, AFailedReadLeavesTheTreeEmpty) {
    CRootTagTree root(1, 2);
    fill(root);
    const Bytes image = written(root);
    int failures = 0;
    for (int nth = 1;; ++nth) {
        CRootTagTree copy(8, 9);
        ImageFile file(image);
        copy.AttachTo(file, -1);
        const Outcome outcome = withFailure(nth, [&] { copy.ReadTree(); });
        EXPECT_EQ(outcome.what, outcome.failed ? "memory" : "none");
        EXPECT_EQ(copy.GetChildCount(), outcome.failed ? 0 : 3);
        EXPECT_EQ(copy.GetTagID(), outcome.failed ? 8u : 1u);
        if (!outcome.failed) break;
        ++failures;
    }
    EXPECT_GE(failures, 6);  // two tables, two rows of nodes, two pieces of data
}

TEST(TreeMemory, AFailedWriteCanBeRepeated) {
    CRootTagTree root(1, 2);
    fill(root);
    const Bytes image = written(root);
    int failures = 0;
    for (int nth = 1;; ++nth) {
        CMemFile file;
        root.AttachTo(file, -1);
        const Outcome outcome = withFailure(nth, [&] { root.WriteTree(); });
        root.Detach();
        if (outcome.what == "none") {  // also when the file did with less memory
            EXPECT_EQ(content(file), image);
        } else {
            EXPECT_EQ(outcome.what, "memory");
            ++failures;
        }
        EXPECT_EQ(written(root), image);
        if (!outcome.failed) break;
    }
    EXPECT_GE(failures, 1);
}

}  // namespace
