// Trees that are changed in any way stay what they are: they write the bytes of a tree that was made so at
// once.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>

#include "tests/persist/tree_image.h"
#include "tests/support/random.h"

namespace {

using namespace kor::test;

constexpr DWORD kSection = 0x40000000;
constexpr int kEverything = std::numeric_limits<int>::max();
constexpr DWORD kLongRow = 2500;  // children in more pieces of memory than one

bool isSection(const CTagTree& node) { return node.GetType() == kSection; }

CTagTree* last(CTagTree& section) {
    return static_cast<CTagTree*>(section.GetChild(section.GetChildCount() - 1));
}

// Makes children with the same content, one by one.
void copyChildren(const CTagTree& from, CTagTree& to) {
    for (int index = 0; index < from.GetChildCount(); ++index) {
        const CTagTree& node = childAt(from, index);
        Bytes data(node.GetDataSize());
        if (isSection(node)) {
            copyChildren(node, *to.CreateSection(node.GetTagID(), node.GetVersion()));
        } else if (node.GetType() == 0x80000014) {
            to.SaveLong(node.GetTagID(), node.GetLong());
        } else {
            node.CopyBuffer(data.data(), kEverything);
            to.SaveTemporaryBuffer(node.GetTagID(), node.GetVersion(), data.data(), node.GetDataSize());
        }
    }
}

Bytes writtenAnew(const CTagTree& root) {
    CRootTagTree copy(root.GetTagID(), root.GetVersion());
    copyChildren(root, copy);
    return written(copy);
}

// A section of leaves, one with a section among its leaves, and one with many children.
void fill(CTagTree& root) {
    CTagTree* leaves = root.CreateSection(1, 0);
    for (DWORD tag = 0; tag < 6; ++tag) {
        leaves->SaveLong(tag, 7);
        leaves->SaveTemporaryBuffer(tag, tag, "123456789", tag);
    }
    CTagTree* mixed = root.CreateSection(2, 0);
    mixed->SaveTemporaryBuffer(1, 0, "12345", 5);
    mixed->CreateSection(2, 0)->SaveTemporaryBuffer(3, 0, "123", 3);
    mixed->SaveLong(4, 1);
    CTagTree* many = root.CreateSection(3, 0);
    for (DWORD tag = 0; tag < kLongRow; ++tag)
        many->SaveTemporaryBuffer(tag, 0, &tag, tag % 5);
}

struct Change {
    const char* name;
    std::function<void(CTagTree& section, CTagTree& other)> apply;
};

const Change kChanges[] = {
    {"nothing", [](CTagTree&, CTagTree&) {}},
    {"the children deleted", [](CTagTree& section, CTagTree&) { section.DeleteChildren(); }},
    {"deleted, and new ones",
     [](CTagTree& section, CTagTree&) {
         section.DeleteChildren();
         section.SaveTemporaryBuffer(1, 2, "abc", 3);
     }},
    {"the first deleted", [](CTagTree& section, CTagTree&) { delete section[0]; }},
    {"the last deleted", [](CTagTree& section, CTagTree&) { delete last(section); }},
    {"one more", [](CTagTree& section, CTagTree&) { section.SaveTemporaryBuffer(9, 9, "12", 2); }},
    {"one more section", [](CTagTree& section, CTagTree&) { section.CreateSection(9, 9)->SaveLong(1, 1); }},
    {"children of a leaf", [](CTagTree& section, CTagTree&) { childAt(section, 0).SaveLong(1, 1); }},
    {"one moved away", [](CTagTree& section, CTagTree& other) { other.AddNewKnot(section[1]); }},
    {"one moved there and back",
     [](CTagTree& section, CTagTree& other) {
         CKorSimpleTree* node = section[1];
         other.AddNewKnot(node);
         section.AddNewKnot(node, section[0]);
     }},
    {"one moved in",
     [](CTagTree& section, CTagTree& other) {
         section.AddNewKnot(other.SaveTemporaryBuffer(5, 5, "12345", 5), section[0]);
     }},
    {"two exchanged",
     [](CTagTree& section, CTagTree&) { section.SwapChildren(0, section.GetChildCount() - 1); }},
    {"one promoted", [](CTagTree& section, CTagTree&) { last(section)->PushToTopRank(); }},
    {"itself moved", [](CTagTree& section, CTagTree& other) { other.AddNewKnot(&section); }},
};

// Reads the tree, changes a section of it, and writes it again in place.
void expectChanged(CRootTagTree& made, const Change& change, int section, int limit) {
    CRootTagTree other(2, 2);  // dies last, with what was moved to it
    CMemFile file;
    made.AttachTo(file, limit);
    made.WriteTree();
    CRootTagTree root;
    root.AttachTo(file, limit);
    file.SeekToBegin();
    root.ReadTree();
    change.apply(childAt(root, section), other);
    const Bytes expected = writtenAnew(root);
    file.SeekToBegin();
    root.WriteTree();
    file.SetLength(file.GetPosition());
    EXPECT_EQ(content(file), expected);
    if (limit < 0) {
        EXPECT_EQ(written(other), writtenAnew(other));
    }
}

TEST(TagTreeChange, ATreeThatWasReadMayBeChangedInAnyWay) {
    CRootTagTree made(1, 1);
    fill(made);
    for (const Change& change : kChanges) {
        for (int section = 0; section < made.GetChildCount(); ++section) {
            for (const int limit : {-1, 3}) {  // with 3 some data stays in the file
                SCOPED_TRACE(std::string(change.name) + ", section " + std::to_string(section) + ", limit " +
                             std::to_string(limit));
                expectChanged(made, change, section, limit);
            }
        }
    }
}

CTagTree& anyNode(CTagTree& root, std::mt19937& random, bool section) {
    CTagTree* chosen = &root;
    unsigned seen = 1;
    for (CKorSimpleTree* node = root.GetNext(); node; node = node->GetNext()) {
        auto* candidate = static_cast<CTagTree*>(node);
        if (section && !isSection(*candidate)) continue;
        if (random() % ++seen == 0) chosen = candidate;
    }
    return *chosen;
}

TEST(TagTreeChange, SizesFollowEveryChange) {
    auto random = generator();
    for (int round = 0; round < scaled(100); ++round) {
        CRootTagTree root(3, 4);
        for (int step = 0; step < 60; ++step) {
            CTagTree& section = anyNode(root, random, true);
            CTagTree& node = anyNode(root, random, false);
            const DWORD number = static_cast<DWORD>(random());
            switch (random() % 7) {
                case 0:
                    if (&node != &root && number % 3 == 0) delete &node;
                    break;
                case 1:
                    if (&node != &root) section.AddNewKnot(&node, section.GetChild(0));
                    break;
                case 2:
                    section.SwapChildren(0, section.GetChildCount() - 1);
                    break;
                case 3:
                    section.CreateSection(number, 1);
                    break;
                case 4:
                    section.SaveLong(1, static_cast<LONG>(number));
                    break;
                default:
                    section.SaveTemporaryBuffer(2, 0, "0123456789", number % 11);
            }
        }
        ASSERT_EQ(written(root), writtenAnew(root));
    }
}

}  // namespace
