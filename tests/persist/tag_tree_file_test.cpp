#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

#include "tests/persist/tree_image.h"
#include "tests/support/random.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

constexpr DWORD kSection = 0x40000000;
constexpr int kEverything = std::numeric_limits<int>::max();

void fill(CRootTagTree& root) {
    const double values[] = {0.5, -2};
    root.SaveLong(1, -40);
    CTagTree* section = root.CreateSection(2, 3);
    section->SaveString(5, "hello");
    section->SaveDouble(6, 1.0);
    root.SavePoint(3, {-5, 7});
    root.SaveTemporaryBuffer(4, 9, "\1\2\3\4\5", 5);
    root.SaveString(7, "");
    root.SaveDblArray(8, values, 2);
    root.CreateSection(9, 0);
}

// The tree of fill() as it stands at a position of a file.
Bytes goldenAt(DWORD at) {
    const DWORD table = at + 16;
    const DWORD section = table + 7 * 16;
    const DWORD hello = section + 2 * 16;
    const DWORD memory = hello + 8;
    const DWORD array = memory + 8;
    return joined({words({0x77, kSection | 1, 7 * 16,     table,         // the root
                          1,    0x80000014,   0xFFFFFFD8, 0,             // its table
                          2,    kSection | 3, 2 * 16,     section,       //
                          3,    0x80000108,   0xFFFFFFFB, 7,             //
                          4,    0x20000009,   5,          memory,        //
                          7,    0x10000011,   0,          array,         //
                          8,    0x10000088,   16,         array,         //
                          9,    kSection,     0,          array + 16,    //
                          5,    0x10000011,   6,          hello,         // the section's table
                          6,    0x80000088,   0,          0x3FF00000}),  //
                   text(std::string("hello\0\0\0", 8)), text(std::string("\1\2\3\4\5\0\0\0", 8)),
                   words({0, 0x3FE00000, 0, 0xC0000000})});
}

std::string dump(const CTagTree& node, int level = 0) {
    std::string out = std::string(static_cast<std::size_t>(level), ' ') + std::to_string(node.GetTagID()) +
                      ':' + std::to_string(node.GetType()) + '/' + std::to_string(node.GetVersion()) + '=';
    if (node.GetType() == 0x80000014) out += std::to_string(node.GetLong());
    if (node.GetType() == 0x80000088) out += std::to_string(node.GetDouble());
    if (node.GetType() == 0x80000108)
        out += std::to_string(node.GetPoint().x) + ',' + std::to_string(node.GetPoint().y);
    std::string data(node.GetDataSize(), '?');
    if (!data.empty()) {
        EXPECT_EQ(node.CopyBuffer(data.data(), static_cast<int>(data.size())), static_cast<int>(data.size()));
    }
    out += data + '\n';
    for (int index = 0; index < node.GetChildCount(); ++index)
        out += dump(childAt(node, index), level + 1);
    return out;
}

std::string read(CRootTagTree& root, CFile& file, int limit) {
    file.SeekToBegin();
    root.AttachTo(file, limit);
    root.ReadTree();
    return dump(root);
}

TEST(TagTreeFile, TheBytesAreTheDocumentedOnes) {
    CRootTagTree root(0x77, 1);
    fill(root);
    EXPECT_EQ(written(root), goldenAt(0));
}

TEST(TagTreeFile, ReadingGivesBackWhatWasWritten) {
    CRootTagTree root(0x77, 1);
    fill(root);
    CRootTagTree copy;
    ImageFile file(goldenAt(0));
    EXPECT_EQ(read(copy, file, -1), dump(root));
    EXPECT_STREQ(childAt(childAt(copy, 1), 0).GetString(), "hello");
    EXPECT_STREQ(childAt(copy, 4).GetString(), "");
    EXPECT_EQ(written(copy), goldenAt(0));
}

TEST(TagTreeFile, AnEmptyTreeIsOneRecord) {
    CRootTagTree root(5, 6);
    EXPECT_EQ(written(root), words({5, kSection | 6, 0, 16}));
    CRootTagTree copy;
    ImageFile file(written(root));
    EXPECT_EQ(read(copy, file, -1), dump(root));
}

// A file of a fixed content around the tree, on the system's files.
TEST(TagTreeFile, ATreeStandsAnywhereInAFile) {
    const ScratchFolder folder;
    const std::string path = folder.file("tree.bin", std::string(1000, 'x'));
    CRootTagTree root(0x77, 1);
    fill(root);
    {
        CFile file(path.c_str(), CFile::modeReadWrite);
        file.Seek(101, CFile::begin);
        root.AttachTo(file, 0);
        root.WriteTree();
        EXPECT_EQ(file.GetPosition(), 101 + goldenAt(101).size());
        root.Detach();
    }
    const std::string bytes = bytesOf(path);
    const Bytes golden = goldenAt(101);
    EXPECT_EQ(bytes, std::string(101, 'x') + std::string(golden.begin(), golden.end()) +
                         std::string(1000 - 101 - golden.size(), 'x'));
    CFile file(path.c_str(), CFile::modeRead | CFile::shareDenyNone);
    file.Seek(101, CFile::begin);
    CRootTagTree copy;
    copy.AttachTo(file, 4);
    copy.ReadTree();
    EXPECT_EQ(dump(copy), dump(root));
}

TEST(TagTreeFile, DataLeftInTheFileIsWrittenAgainInPlaceButNotElsewhere) {
    CRootTagTree root(0x77, 1);
    fill(root);
    CMemFile file;
    root.AttachTo(file, 0);
    root.WriteTree();
    CRootTagTree copy;
    read(copy, file, 0);
    CMemFile other;
    copy.AttachTo(other, 0);
    EXPECT_EQ(thrownBy([&] { copy.WriteTree(); }), kInvalidFile);
    EXPECT_EQ(other.GetLength(), 0u);
    CRootTagTree again;
    read(again, file, 0);
    delete again[0];  // so every block moves
    delete root[0];
    file.SeekToBegin();
    again.WriteTree();
    EXPECT_EQ(dump(again), dump(root));
    file.SetLength(file.GetPosition());
    EXPECT_EQ(content(file), written(root));
}

TEST(TagTreeFile, DeletedChildrenLeaveNothingBehind) {
    CRootTagTree root(0x77, 1);
    fill(root);
    ImageFile file(goldenAt(0));
    CRootTagTree copy;
    read(copy, file, -1);
    childAt(copy, 1).DeleteChildren();
    CRootTagTree expected(0x77, 1);
    fill(expected);
    childAt(expected, 1).DeleteChildren();
    EXPECT_EQ(written(copy), written(expected));
    copy.DeleteChildren();
    EXPECT_EQ(written(copy), words({0x77, kSection | 1, 0, 16}));
}

TEST(TagTreeFile, ReadNodesOutliveTheirNeighbours) {
    CTagTree kept;
    {
        ImageFile file(goldenAt(0));
        CRootTagTree copy;
        read(copy, file, -1);
        kept.AddNewKnot(copy[5]);
        kept.AddNewKnot(copy[1]);
    }
    double values[2];
    EXPECT_EQ(childAt(kept, 0).GetDblArray(values, 2), 2);
    EXPECT_EQ(values[1], -2);
    EXPECT_STREQ(childAt(childAt(kept, 1), 0).GetString(), "hello");
}

TEST(TagTreeFile, ReadingAppendsToTheChildrenThatAreThere) {
    CRootTagTree root;
    root.SaveLong(100, 1);
    ImageFile file(goldenAt(0));
    read(root, file, -1);
    ASSERT_EQ(root.GetChildCount(), 8);
    EXPECT_EQ(childAt(root, 0).GetTagID(), 100u);
    EXPECT_EQ(root.GetTagID(), 0x77u);
    EXPECT_EQ(root.GetVersion(), 1u);
}

TEST(TagTreeFile, NodesComeFromTheFactoryWhereThereIsOne) {
    class OwnNode : public CTagTree {
      public:
        CKorSimpleTree* AddNewKnot(CKorSimpleTree* node, CKorSimpleTree* before) override {
            return CTagTree::AddNewKnot(node ? node : new OwnNode, before);
        }
    };
    class OwnRoot : public CRootTagTree {
      public:
        CKorSimpleTree* AddNewKnot(CKorSimpleTree* node, CKorSimpleTree* before) override {
            return CRootTagTree::AddNewKnot(node ? node : new OwnNode, before);
        }
    };
    OwnRoot own;
    CRootTagTree plain;
    ImageFile first(goldenAt(0));
    ImageFile second(goldenAt(0));
    EXPECT_EQ(read(own, first, -1), read(plain, second, -1));
    EXPECT_NE(dynamic_cast<OwnNode*>(own[0]), nullptr);
    EXPECT_NE(dynamic_cast<OwnNode*>(childAt(own, 1)[0]), nullptr);
}

// Makes its nodes in front of the others.
template <class Base>
class InFront : public Base {
  public:
    CKorSimpleTree* AddNewKnot(CKorSimpleTree* node, CKorSimpleTree* before) override {
        return node ? Base::AddNewKnot(node, before) : Base::AddNewKnot(new InFront<CTagTree>, (*this)[0]);
    }
};

TEST(TagTreeFile, AFactoryMayPutItsNodesAnywhere) {
    CRootTagTree root(1, 1);
    for (DWORD tag = 0; tag < 3; ++tag) {
        CTagTree* section = root.CreateSection(tag, 1);
        section->SaveString(10 + tag, "text");
        section->CreateSection(20 + tag, 2)->SaveLong(30 + tag, 3);
        section->SaveTemporaryBuffer(40 + tag, 4, "1234", 4 - tag);
    }
    ImageFile file(written(root));
    InFront<CRootTagTree> copy;
    copy.CreateSection(77, 0)->SaveString(77, "old");
    for (const int limit : {-1, 0}) {
        while (copy.GetChildCount() > 1)
            delete copy[0];
        read(copy, file, limit);
        ASSERT_EQ(copy.GetChildCount(), 4);
        EXPECT_STREQ(childAt(childAt(copy, 3), 0).GetString(), "old");
        for (int index = 0; index < 3; ++index) {
            const CTagTree& made = childAt(root, 2 - index);
            const CTagTree& section = childAt(copy, index);
            ASSERT_EQ(section.GetChildCount(), 3);
            EXPECT_EQ(section.GetTagID(), made.GetTagID());
            for (int leaf = 0; leaf < 3; ++leaf)
                EXPECT_EQ(dump(childAt(section, leaf)), dump(childAt(made, 2 - leaf)));
        }
    }
}

TEST(TagTreeFile, OnlySectionsStoreChildren) {
    CRootTagTree root;
    root.SaveLong(1, 2)->SaveLong(3, 4);
    root.SaveString(5, "x")->SaveLong(6, 7);
    EXPECT_EQ(written(root), joined({words({0, kSection, 32, 16, 1, 0x80000014, 2, 0, 5, 0x10000011, 2, 48}),
                                     text(std::string("x\0\0\0", 4))}));
}

TEST(TagTreeFile, PadBytesAreZeroWhateverMemoryHeld) {
    Bytes images[2];
    for (int run = 0; run < 2; ++run) {
        Bytes bytes(64, static_cast<BYTE>(run ? 0xFF : 0));  // what stands behind the data differs
        std::fill_n(bytes.begin(), 5, BYTE{1});
        CRootTagTree root;
        root.SaveStaticBuffer(1, 0, bytes.data(), 5);
        root.SaveTemporaryBuffer(2, 0, bytes.data(), 3);
        root.SaveString(3, "four");
        images[run] = written(root);
    }
    EXPECT_EQ(images[0], images[1]);
    EXPECT_EQ(Bytes(images[0].end() - 20, images[0].end()),
              joined({{1, 1, 1, 1, 1, 0, 0, 0, 1, 1, 1, 0}, text(std::string("four\0\0\0\0", 8))}));
}

// Exactly as many bytes as the data has: the sanitizer stops a read behind it.
TEST(TagTreeFile, NothingBehindTheDataIsRead) {
    const std::unique_ptr<BYTE[]> exact(new BYTE[5]{1, 2, 3, 4, 5});
    CRootTagTree root;
    root.SaveStaticBuffer(1, 0, exact.get(), 5);
    EXPECT_EQ(written(root).size(), 40u);
}

TEST(TagTreeFile, LargeBlocksAndLongTablesSurvive) {
    auto random = generator();
    Bytes large(200000);
    for (BYTE& byte : large)
        byte = static_cast<BYTE>(random());
    CRootTagTree root;
    for (DWORD tag = 0; tag < 5000; ++tag) {
        if (tag % 1000 == 0) root.SaveTemporaryBuffer(tag, 1, large.data(), 199999);
        root.SaveTemporaryBuffer(tag, 2, large.data() + tag, tag % 300);
        root.CreateSection(tag, 0)->SaveLong(tag, -1);
    }
    ImageFile file(written(root));
    CRootTagTree copy;
    EXPECT_EQ(read(copy, file, kEverything), dump(root));
    EXPECT_EQ(written(copy), content(file));
}

// A file that fails when more than so many bytes are written.
class FullFile : public CMemFile {
  public:
    explicit FullFile(ULONGLONG room) : room_(room) {}
    void Write(const void* buffer, UINT count) override {
        if (GetPosition() + count > room_) AfxThrowFileException(CFileException::diskFull, 112);
        CMemFile::Write(buffer, count);
    }

  private:
    ULONGLONG room_;
};

TEST(TagTreeFile, AFailedWriteSurfaces) {
    CRootTagTree root(0x77, 1);
    fill(root);
    const ULONGLONG size = goldenAt(0).size();
    for (ULONGLONG room = 0; room <= size; ++room) {
        FullFile file(room);
        root.AttachTo(file, 0);
        EXPECT_EQ(thrownBy([&] { root.WriteTree(); }), room < size ? "file 13 112" : "none") << room;
    }
    root.Detach();
    EXPECT_EQ(written(root), goldenAt(0));
}

TEST(TagTreeFile, ATreeBeyond4GBIsRefusedBeforeAnythingIsWritten) {
    CRootTagTree root;
    const BYTE byte = 0;
    root.SaveStaticBuffer(1, 0, &byte, 0xFFFFFFF0);  // never looked at
    root.CreateSection(2, 0)->SaveStaticBuffer(3, 0, &byte, 0xFFFFFFF0);
    CMemFile file;
    root.AttachTo(file, 0);
    EXPECT_EQ(thrownBy([&] { root.WriteTree(); }), "file 1 223");
    EXPECT_EQ(file.GetLength(), 0u);
}

void grow(CTagTree& section, std::mt19937& random, int depth) {
    for (unsigned count = static_cast<unsigned>(random() % 6); count > 0; --count) {
        const DWORD tag = static_cast<DWORD>(random() % 100);
        Bytes data(random() % 70, static_cast<BYTE>(random()));
        switch (random() % 6) {
            case 0:
                section.SaveLong(tag, static_cast<LONG>(random()));
                break;
            case 1:
                section.SaveDouble(tag, static_cast<double>(random()) / 7);
                break;
            case 2:
                section.SavePoint(tag, {static_cast<LONG>(random()), 1});
                break;
            case 3:
                section.SaveString(tag, std::string(random() % 40, 't').c_str());
                break;
            case 4:
                section.SaveTemporaryBuffer(tag, tag, data.data(), static_cast<DWORD>(data.size()));
                break;
            default:
                if (depth > 0) grow(*section.CreateSection(tag, tag), random, depth - 1);
        }
    }
}

TEST(TagTreeFile, RandomTreesGoThereAndBack) {
    auto random = generator();
    for (int round = 0; round < scaled(200); ++round) {
        CRootTagTree root(static_cast<DWORD>(random()), 3);
        grow(root, random, 5);
        const Bytes image = written(root);
        ImageFile file(image);
        CRootTagTree copy;
        ASSERT_EQ(read(copy, file, static_cast<int>(random() % 64)), dump(root));
        file.SeekToBegin();
        copy.WriteTree();
        ASSERT_EQ(content(file), image);
    }
}

}  // namespace
