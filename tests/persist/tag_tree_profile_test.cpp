#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "korutil/tag_tree.h"
#include "platform/win32.h"
#include "tests/persist/tree_image.h"
#include "tests/support/scratch.h"

namespace kor::test {
namespace {

// Entries are named "k" and their tag id; the root is "Setup".
class NamedTree : public CRootTagTree {
  public:
    explicit NamedTree(const std::string& profile, DWORD version = 3) : CRootTagTree(1, version) {
        AttachToProfile(profile.c_str());
    }

    CString GetKeyStr(int, DWORD type, int tag) override {
        if (tag == 1 && type == 0x40000000) return "Setup";
        return ("k" + std::to_string(tag)).c_str();
    }

    int GetKeyId(int, DWORD, const CString& name) override {
        return name.GetLength() > 1 && name[0] == 'k' ? std::atoi(LPCSTR(name) + 1) : -1;
    }
};

std::string inLines(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

std::string withPoint(double value) {
    std::string text = std::to_string(value);
    std::replace(text.begin(), text.end(), ',', '.');
    return text;
}

// The children as "id type value" lines, sections with their versions.
std::string told(const CTagTree& section, const std::string& indent = "") {
    std::string text;
    for (int index = 0; index < section.GetChildCount(); ++index) {
        const auto& node = static_cast<const CTagTree&>(*section[index]);
        char line[1000];
        snprintf(line, sizeof line, "%s%u %x ", indent.c_str(), static_cast<unsigned>(node.GetTagID()),
                 static_cast<unsigned>(node.GetType()));
        text += line;
        switch (node.GetType()) {
            case 0x80000014:
                text += std::to_string(node.GetLong());
                break;
            case 0x80000088:
                text += withPoint(node.GetDouble());
                break;
            case 0x10000011:
                text += LPCSTR(node.GetString());
                break;
            case 0x10000088: {
                double values[200];
                const int count = node.GetDblArray(values, 200);
                for (int value = 0; value < count; ++value)
                    text += withPoint(values[value]) + ";";
                break;
            }
            case 0x20000000: {
                char bytes[100];
                text.append(bytes, static_cast<std::size_t>(node.CopyBuffer(bytes, 100)));
                text += " v" + std::to_string(node.GetVersion());
                break;
            }
            case 0x40000000:
                text += "v" + std::to_string(node.GetVersion());
                break;
            default:;
        }
        text += '\n' + told(node, indent + "  ");
    }
    return text;
}

std::string readBack(const std::string& profile) {
    NamedTree tree(profile);
    tree.ReadTree();
    return told(tree);
}

TEST(TagTreeProfile, EachSectionOfTheTreeIsASectionOfTheFile) {
    const ScratchFolder folder;
    const std::string profile = folder.path("setup.ini");
    NamedTree tree(profile, 7);
    tree.SaveLong(2, -5);
    tree.SaveDouble(3, 0.1);
    tree.SavePoint(4, {8, -9});
    const double values[] = {1, 2.5, 1e20};
    CTagTree* inner = tree.CreateSection(5, 2);
    inner->SaveString(6, "DAPI = blue");
    inner->SaveDblArray(7, values, 3);
    inner->CreateSection(8, 0);
    tree.SaveTemporaryBuffer(9, 4, "abc", 3);
    tree.WriteTree();
    EXPECT_EQ(inLines(bytesOf(profile)),
              "[Setup]\nVersion=7\nk2.Int=-5\nk3.Flt=0.1\nk4.Pt=8,-9\nk5.Sec=k5\nk9.MVer=4\nk9.Mem=616263\n"
              "[Setup.k5]\nVersion=2\nk6.Str=DAPI = blue\nk7.FltA=1,2.5,1e+020\nk8.Sec=k8\n"
              "[Setup.k5.k8]\nVersion=0\n");
    EXPECT_EQ(std::string(tree.GetSectionName(*inner)), "Setup.k5");
    EXPECT_EQ(std::string(tree.GetSectionName(*tree.FindTag(2, 0x80000000))), "Setup.");

    // The point is gone: required.
    NamedTree read(profile, 0);
    read.ReadTree();
    EXPECT_EQ(read.GetVersion(), 7u);
    EXPECT_EQ(told(read),
              "2 80000014 -5\n3 80000088 0.100000\n5 40000000 v2\n  6 10000011 DAPI = blue\n"
              "  7 10000088 1.000000;2.500000;100000000000000000000.000000;\n  8 40000000 v0\n"
              "9 20000000 abc v4\n");
}

TEST(TagTreeProfile, WhatTheFileSaysIsTakenOrPassedOver) {
    const struct {
        const char* lines;
        const char* told;
        const char* why;
    } cases[] = {
        {"K2.INT=12x", "", "the application's names are its own: K2 is none of this one's"},
        {"k2.int=12x\nk3.FLT= .5", "2 80000014 12\n3 80000088 0.500000\n", "suffixes in any case"},
        {"k2.Int=1\nk2.Flt=2\nk2.Int=3", "2 80000014 1\n", "one child of an id and kind: the first"},
        {"k2.Int=99999999999\nk3.Int=-99999999999\nk4.Int=x",
         "2 80000014 2147483647\n3 80000014 -2147483648\n4 80000014 0\n", "what does not fit is the nearest"},
        {"k0.Int=1\nk-1.Int=1\nx.Int=1\n.Int=1\nk2=1\nk2.=1\nk2.Odd=1\nk2", "",
         "no id, no name, no suffix, no value"},
        {"k2.FltA=1,2,\nk3.FltA=\nk4.FltA=1;2",
         "2 10000088 1.000000;2.000000;\n3 10000088 \n4 10000088 1.000000;",
         "numbers while each is followed by a comma"},
        {"k2.Mem=6162\nk3.Mem=6g\nk4.Mem=616\nk5.Mem=6a6A", "2 20000000 ab v0\n4 20000000 a v0\n",
         "bad digits and small ones are none; an odd one does not count"},
        {"k2.Mem=61\nk2.MVer=9\nk3.MVer=8\nk3.Mem=62", "2 20000000 a v9\n3 20000000 b v8\n",
         "in either order"},
        {"k2.MVer=9", "2 a0000014 \n", "a version without its bytes stays: required"},
        {"k2.Pt=1,2\nk3.Pt=1s_PointSeparator2", "3 80000108 \n", "the separator is its name: required"},
        {"k2.Str=a=b=c\nk3.Str=\nk4.Str='q'", "2 10000011 a=b=c\n3 10000011 \n4 10000011 'q'\n",
         "texts as they stand"},
        {"any.Sec=k5\nVersion=-1", "5 40000000 v0\n", "a section's name is its value"},
    };
    for (const auto& one : cases) {
        const ScratchFolder folder;
        const std::string profile = folder.file("a.ini", std::string("[Setup]\n") + one.lines + "\n");
        std::string expected = one.told;
        if (!expected.empty() && expected.back() != '\n') expected += '\n';
        EXPECT_EQ(readBack(profile), expected) << one.why;
    }
}

TEST(TagTreeProfile, ChildrenThatAreThereAreKept) {
    const ScratchFolder folder;
    NamedTree tree(folder.file(
        "a.ini",
        "[Setup]\nVersion=-1\nversion=2\nk2.Int=5\nk3.Mem=62\nk3.MVer=9\nk4.Sec=k4\n[Setup.k4]\nk5.Int=6\n"));
    tree.SaveLong(2, 1);
    tree.SaveTemporaryBuffer(3, 4, "a", 1);
    tree.CreateSection(4, 2);
    tree.ReadTree();
    EXPECT_EQ(told(tree), "2 80000014 1\n3 20000000 a v4\n4 40000000 v2\n  5 80000014 6\n");
    EXPECT_EQ(tree.GetType(), 0x40000000u);  // no version makes anything else of a section
    EXPECT_EQ(tree.GetVersion(), 0x07FFFFFFu);
    NamedTree none(folder.path("none.ini"));
    none.ReadTree();
    EXPECT_EQ(none.GetVersion(), 3u);
}

TEST(TagTreeProfile, LongValuesAreCutAtWholeCharactersAndSectionsAtTheBuffer) {
    const ScratchFolder folder;
    const std::string profile = folder.path("a.ini");
    {
        NamedTree tree(profile);
        tree.SaveString(2, std::string(300, 'x').c_str());
        std::vector<double> values(200, -1.0 / 3);
        tree.SaveDblArray(3, values.data(), 200);
        tree.WriteTree();
    }
    NamedTree tree(profile);
    tree.ReadTree();
    EXPECT_EQ(tree.FindTag(2, 0x10000000)->GetDataSize(), 260u);
    EXPECT_EQ(tree.FindTag(3, 0x10000000)->GetDataSize(), 14u * 8);  // the last one of few digits
    std::string large = "[Setup]\n";
    for (int id = 2; id < 4000; ++id)
        large += "k" + std::to_string(id) + ".Int=1\n";
    NamedTree cut(folder.file("large.ini", large));
    cut.ReadTree();
    EXPECT_GT(cut.GetChildCount(), 1000);
    EXPECT_LT(cut.GetChildCount(), 16384 / 9);
}

TEST(TagTreeProfile, WithoutNamesOnlyVersionsComeBack) {
    const ScratchFolder folder;
    const std::string profile = folder.path("a.ini");
    CRootTagTree tree(1, 5);
    tree.AttachToProfile(profile.c_str());
    tree.SaveLong(2, 1);
    tree.CreateSection(3, 1)->SaveLong(4, 1);
    tree.WriteTree();
    CRootTagTree read(1, 0);
    read.AttachToProfile(profile.c_str());
    read.ReadTree();
    EXPECT_EQ(told(read), "");
}

TEST(TagTreeProfile, AWriteThatFailsIsThrownWithTheSystemsError) {
    const ScratchFolder folder;
    NamedTree tree(folder.path("missing\\a.ini"));
    tree.SaveLong(2, 1);
    EXPECT_EQ(thrownBy([&] { tree.WriteTree(); }), "file 3 3");
    CRootTagTree detached;
    detached.SaveLong(1, 1);
    detached.WriteTree();  // attached to nothing: nothing to do
    detached.ReadTree();
    EXPECT_EQ(detached.GetChildCount(), 1);
}

TEST(TagTreeProfile, SectionsWithinEachOtherEndAtAThousandLevels) {
    const ScratchFolder folder;
    std::string name = "Setup";
    std::string text;
    for (int level = 0; level < 1010; ++level) {
        text += "[" + name + "]\nk5.Sec=k5\n";
        name += ".k5";
    }
    NamedTree tree(folder.file("deep.ini", text));
    tree.ReadTree();
    const CKorSimpleTree* node = &tree;
    while (const CKorSimpleTree* child = (*node)[0])
        node = child;
    EXPECT_EQ(node->GetLevel(), 1000);
}

}  // namespace
}  // namespace kor::test
