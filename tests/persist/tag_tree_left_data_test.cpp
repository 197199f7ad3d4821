// Data that reading leaves in the file.
#include <gtest/gtest.h>

#include "korutil/framework/file.h"
#include "tests/persist/tree_image.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

void read(CRootTagTree& root, CFile& file) {
    file.SeekToBegin();
    root.AttachTo(file, 0);
    root.ReadTree();
}

TEST(TagTreeLeftData, DataOverTheLimitStaysInTheFile) {
    CRootTagTree root;
    root.SaveTemporaryBuffer(1, 0, "0123456789", 10);
    root.SaveTemporaryBuffer(2, 0, "abcd", 4);
    const Bytes image = written(root);
    for (const int limit : {0, 4, 9, 10}) {
        ImageFile file(image);
        CRootTagTree copy;
        copy.AttachTo(file, limit);
        copy.ReadTree();
        char buffer[8] = {};
        EXPECT_EQ(childAt(copy, 0).CopyBuffer(buffer, 3), 3);
        EXPECT_STREQ(buffer, "012");
        EXPECT_EQ(childAt(copy, 1).GetArray(buffer, 9, 2), 2);
        EXPECT_STREQ(buffer, "abcd");
        copy.Detach();
        const auto readFirst = [&] { childAt(copy, 0).CopyBuffer(buffer, 8); };
        const auto readSecond = [&] { childAt(copy, 1).CopyBuffer(buffer, 8); };
        EXPECT_EQ(thrownBy(readFirst), limit < 10 ? kInvalidFile : "none") << limit;
        EXPECT_EQ(thrownBy(readSecond), limit < 4 ? kInvalidFile : "none") << limit;
        ImageFile twin(image);
        copy.AttachTo(twin, 0);
        EXPECT_EQ(thrownBy(readSecond), limit < 4 ? kInvalidFile : "none") << limit;
        copy.AttachTo(file, 0);
        EXPECT_EQ(thrownBy(readSecond), "none");
        file.SetLength(image.size() - 3);
        EXPECT_EQ(thrownBy(readSecond), limit < 4 ? kEndOfFile : "none") << limit;
    }
}

std::string textsOf(const CTagTree& node) {
    std::string texts;
    for (int index = 0; index < node.GetChildCount(); ++index)
        texts += std::string(childAt(node, index).GetString()) + ' ';
    return texts;
}

void writeTexts(CFile& file, const char* first, const char* second) {
    CRootTagTree root;
    root.SaveString(1, first);
    root.CreateSection(2, 0)->SaveString(3, second);
    root.AttachTo(file, 0);
    root.WriteTree();
}

// Two files of the same layout: bytes of the wrong one would look right.
TEST(TagTreeLeftData, DataLeftInAFileIsReadFromThatFileOnly) {
    CMemFile files[2];
    writeTexts(files[0], "aaaa", "AAAA");
    writeTexts(files[1], "bbbb", "BBBB");
    CRootTagTree roots[2];
    read(roots[0], files[0]);
    read(roots[1], files[1]);
    CTagTree& guest = childAt(childAt(roots[1], 1), 0);
    childAt(roots[0], 1).AddNewKnot(&guest);
    EXPECT_EQ(thrownBy([&] { (void)guest.GetString(); }), kInvalidFile);
    const Bytes before = content(files[0]);
    files[0].SeekToEnd();
    EXPECT_EQ(thrownBy([&] { roots[0].WriteTree(); }), kInvalidFile);
    EXPECT_EQ(content(files[0]), before);

    roots[1].AddNewKnot(&guest);  // back where its file is
    EXPECT_EQ(textsOf(roots[1]), "bbbb  BBBB ");
    files[1].SeekToEnd();
    EXPECT_EQ(thrownBy([&] { roots[1].WriteTree(); }), "none");
    childAt(roots[0], 1).AddNewKnot(&guest);  // loaded, it may go anywhere
    files[0].SeekToEnd();
    EXPECT_EQ(thrownBy([&] { roots[0].WriteTree(); }), "none");
    EXPECT_EQ(textsOf(childAt(roots[0], 1)), "AAAA BBBB ");
}

// One file object, used for one path after the other.
TEST(TagTreeLeftData, AFileThatWasOpenedOnAnotherPathIsAnotherFile) {
    const ScratchFolder folder;
    const std::string paths[] = {folder.path("one.tag"), folder.path("two.tag")};
    CFile file;
    for (const std::string& path : paths) {
        ASSERT_TRUE(file.Open(path.c_str(), CFile::modeCreate | CFile::modeReadWrite));
        writeTexts(file, path == paths[0] ? "aaaa" : "bbbb", "");
        file.Close();
    }
    CRootTagTree root;
    ASSERT_TRUE(file.Open(paths[0].c_str(), CFile::modeRead));
    read(root, file);
    for (const std::string& path : {paths[1], paths[0]}) {
        file.Close();
        ASSERT_TRUE(file.Open(path.c_str(), CFile::modeRead));
        EXPECT_EQ(thrownBy([&] { (void)childAt(root, 0).GetString(); }),
                  path == paths[0] ? "none" : kInvalidFile);
    }
}

TEST(TagTreeLeftData, ANegativeLimitIs16384) {
    CRootTagTree root;
    const Bytes data(16385, 7);
    root.SaveStaticBuffer(1, 0, data.data(), 16384);
    root.SaveStaticBuffer(2, 0, data.data(), 16385);
    ImageFile file(written(root));
    CRootTagTree copy;
    copy.AttachTo(file, -5);
    copy.ReadTree();
    copy.Detach();
    Bytes buffer(16385);
    EXPECT_EQ(thrownBy([&] { childAt(copy, 0).CopyBuffer(buffer.data(), 16384); }), "none");
    EXPECT_EQ(thrownBy([&] { childAt(copy, 1).CopyBuffer(buffer.data(), 1); }), kInvalidFile);
    copy.DeleteChildren();  // what is gone does not bind a tree to its file
    CMemFile other;
    writeTexts(other, "bbbb", "BBBB");
    read(copy, other);
    EXPECT_EQ(textsOf(copy), "bbbb  ");
}

}  // namespace
