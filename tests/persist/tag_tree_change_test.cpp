// Trees that are changed in any way stay what they are: they write the bytes of a tree that was made so at
// once.
#include <gtest/gtest.h>

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

void changeAnything(CTagTree& root, std::mt19937& random) {
    CTagTree& section = anyNode(root, random, true);
    CTagTree& node = anyNode(root, random, false);
    const DWORD number = static_cast<DWORD>(random());
    const int action = static_cast<int>(random() % 9);
    if (action == 0 && &node != &root && number % 3 == 0) delete &node;
    if (action == 1 && &node != &root) section.AddNewKnot(&node, section.GetChild(0));
    if (action == 2) section.SwapChildren(0, section.GetChildCount() - 1);
    if (action == 3) section.CreateSection(number, 1);
    if (action == 4) node.SaveLong(1, static_cast<LONG>(number));  // a leaf has no children in a file
    if (action == 5) node.PushToTopRank();
    if (action == 6 && number % 8 == 0) section.DeleteChildren();
    if (action >= 7) section.SaveTemporaryBuffer(2, 0, "0123456789", number % 11);
}

// Reads a tree, changes it and writes it again in place.
TEST(TagTreeChange, ATreeThatWasReadMayBeChangedInAnyWay) {
    auto random = generator();
    CRootTagTree made(1, 1);
    fill(made);
    for (int round = 0; round < scaled(100); ++round) {
        const int limit = round % 2 == 0 ? -1 : 3;  // with 3 some data stays in the file
        CMemFile file;
        made.AttachTo(file, limit);
        made.WriteTree();
        CRootTagTree root;
        root.AttachTo(file, limit);
        file.SeekToBegin();
        root.ReadTree();
        if (round % 4 < 2) delete root[2];  // most changes meet the others then
        for (int step = round % 60; step >= 0; --step)
            changeAnything(root, random);
        const Bytes expected = writtenAnew(root);
        file.SeekToBegin();
        root.WriteTree();
        file.SetLength(file.GetPosition());
        ASSERT_EQ(content(file), expected) << round;
    }
}

}  // namespace
