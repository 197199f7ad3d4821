#include <gtest/gtest.h>

#include <set>

#include "tests/persist/tree_image.h"
#include "tests/support/random.h"

namespace {

using namespace kor::test;

constexpr DWORD kSection = 0x40000000;
constexpr DWORD kMemory = 0x20000000;
constexpr int kLimit = 64;

// The smallest tree with everything in it: a section in a section, data in both.
Bytes sample() {
    CRootTagTree root(1, 2);
    root.SaveLong(3, 4);
    CTagTree* outer = root.CreateSection(5, 6);
    outer->SaveString(7, "text");
    outer->CreateSection(8, 0)->SaveDouble(9, 1.5);
    root.SaveTemporaryBuffer(10, 1, "123456", 6);
    return written(root);
}

// Reads, and shows that a refused tree is left empty.
std::string reading(Bytes image, CRootTagTree& root, ULONGLONG at = 0, int limit = kLimit) {
    ImageFile file(std::move(image));
    file.Seek(static_cast<LONGLONG>(at), CFile::begin);
    root.AttachTo(file, limit);
    const std::string what = thrownBy([&root] { root.ReadTree(); });
    root.Detach();
    if (what != "none") {
        EXPECT_EQ(root.GetChildCount(), 0);
    }
    return what;
}

std::string reading(Bytes image) {
    CRootTagTree root;
    return reading(std::move(image), root);
}

int nodesIn(const CKorSimpleTree& root) {
    int count = 0;
    for (const CKorSimpleTree* node = &root; node; node = node->GetNext())
        ++count;
    return count;
}

TEST(HostileTagTree, EveryTruncatedPrefixIsRefused) {
    const Bytes image = sample();
    ASSERT_EQ(reading(image), "none");
    for (std::size_t size = 0; size < image.size(); ++size) {
        const bool onlyPadding = size >= image.size() - 2;  // the last block has 6 bytes and 2 of padding
        EXPECT_EQ(reading(Bytes(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(size))),
                  onlyPadding ? "none" : kEndOfFile)
            << size;
    }
}

// Whatever a file says, reading it ends well or is refused, and the tree is no larger than the file.
void expectNoHarm(const Bytes& damaged, ULONGLONG at, int limit) {
    CRootTagTree root;
    const std::string what = reading(damaged, root, at, limit);
    EXPECT_TRUE(what == "none" || what == kEndOfFile || what == kBadFormat) << what;
    EXPECT_LE(static_cast<std::size_t>(nodesIn(root)), damaged.size() / 16);
}

TEST(HostileTagTree, OneWrongByteAnywhereDoesNoHarm) {
    const Bytes image = sample();
    for (std::size_t at = 0; at < image.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            Bytes damaged = image;
            damaged[at] = static_cast<BYTE>(value);
            expectNoHarm(damaged, 0, kLimit);
        }
    }
}

TEST(HostileTagTree, TablesAndDataOutsideTheFileAreRefused) {
    struct Case {
        const char* reason;
        DWORD type, word0, word1;
    };
    const Case cases[] = {
        {"table across the end", kSection, 32, 16 + 1},
        {"table far away", kSection, 16, 0xFFFFFFF0},
        {"more children than 32 bits of bytes", kSection, 0xFFFFFFFF, 16},
        {"data across the end", kMemory, 8, 25},
        {"end beyond 32 bits", kMemory, 0xFFFFFFFF, 0xFFFFFFFF},
        {"data left in the file", kMemory, 0x7FFFFFFF, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(reading(joined({words({1, kSection, 16, 16}), words({2, c.type, c.word0, c.word1})})),
                  kEndOfFile)
            << c.reason;
        EXPECT_EQ(reading(joined({words({2, c.type, c.word0, c.word1}), Bytes(16)})), kEndOfFile) << c.reason;
    }
}

TEST(HostileTagTree, RandomBytesAroundRealOnesDoNoHarm) {
    auto random = generator();
    for (int round = 0; round < scaled(3000); ++round) {
        Bytes damaged = sample();
        for (unsigned hits = 1 + static_cast<unsigned>(random() % 8); hits > 0; --hits)
            setWord(damaged, random() % (damaged.size() / 4) * 4,
                    static_cast<DWORD>(random() % 5 ? random() % 300 : random()));
        expectNoHarm(damaged, random() % 64 * 4, static_cast<int>(random() % 100));
    }
}

TEST(HostileTagTree, SharedTablesDoNotMultiply) {
    EXPECT_EQ(reading(words({1, kSection, 16, 0})), kBadFormat) << "its own record";
    // Two tables that contain each other, in a file with room for a million nodes.
    Bytes circle = words({1, kSection, 16, 16, 2, kSection, 16, 32, 3, kSection, 16, 16});
    circle.resize(16 << 20);
    EXPECT_EQ(reading(circle), kBadFormat);
    // 20 tables of two sections each, both pointing to the next table: a million nodes in 700 bytes.
    Bytes image = words({1, kSection, 32, 16});
    for (DWORD table = 1; table <= 20; ++table) {
        const DWORD next = 16 + table * 32;
        const Bytes pair =
            words({2, kSection, table < 20 ? 32u : 0u, next, 3, kSection, table < 20 ? 32u : 0u, next});
        image.insert(image.end(), pair.begin(), pair.end());
    }
    EXPECT_EQ(reading(image), kBadFormat);
}

TEST(HostileTagTree, SharedDataDoesNotMultiply) {
    constexpr DWORD kNodes = 1000;
    Bytes image = words({1, kSection, kNodes * 16, 16});
    for (DWORD node = 0; node < kNodes; ++node) {
        const Bytes record = words({node, kMemory, kLimit, 0});
        image.insert(image.end(), record.begin(), record.end());
    }
    EXPECT_EQ(reading(image), kBadFormat);
    CRootTagTree root;
    EXPECT_EQ(reading(image, root, 0, 8), "none");  // left in the file it costs nothing
    EXPECT_EQ(root.GetChildCount(), static_cast<int>(kNodes));
    ImageFile file(image);
    CRootTagTree again;
    again.AttachTo(file, 8);
    again.ReadTree();
    EXPECT_EQ(thrownBy([&] { again.WriteTree(); }), kBadFormat);  // and is not loaded for writing either
}

// A chain of sections below the root; the last one has no children.
Bytes chain(DWORD levels) {
    Bytes image = words({0, kSection, 16, 16});
    for (DWORD level = 1; level <= levels; ++level) {
        const Bytes record = words({level, kSection, level < levels ? 16u : 0u, 16 + level * 16});
        image.insert(image.end(), record.begin(), record.end());
    }
    return image;
}

TEST(HostileTagTree, NestingEndsAt1000Levels) {
    CRootTagTree root;
    EXPECT_EQ(reading(chain(1000), root), "none");
    EXPECT_EQ(nodesIn(root), 1001);
    EXPECT_EQ(written(root), chain(1000));
    EXPECT_EQ(reading(chain(1001)), kBadFormat);
    CRootTagTree deeper(0, 0);
    CTagTree* section = &deeper;
    for (DWORD level = 1; level <= 200000; ++level)
        section = section->CreateSection(level, 0);
    EXPECT_EQ(written(deeper), chain(200000)) << "without using up the stack";
}

TEST(HostileTagTree, ARootThatIsNoSectionIsReadAsItStandsAndARefusedOneKeepsTheFormer) {
    CRootTagTree root(50, 60);
    root.SaveLong(1, 1);
    Bytes image = sample();
    image.resize(70);
    EXPECT_EQ(reading(image, root), kEndOfFile);
    EXPECT_EQ(written(root), words({50, kSection | 60, 0, 16}));
    EXPECT_EQ(reading(words({1, 0x80000014, 42, 0xFFFFFFFF}), root), "none");
    EXPECT_EQ(root.GetLong(), 42);
    EXPECT_EQ(reading(joined({words({1, kMemory, 4, 16}), text("data")}), root), "none");
    EXPECT_EQ(root.GetDataSize(), 4u);
    EXPECT_EQ(written(root), words({1, kSection | kMemory, 0, 16}));  // what is written is a section
}

}  // namespace
