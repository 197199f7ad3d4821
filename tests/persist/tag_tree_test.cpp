#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <memory>

#include "korutil/framework/ptr_array.h"
#include "tests/persist/tree_image.h"

namespace {

using namespace kor::test;

constexpr DWORD kImmediate = 0x80000000;
constexpr DWORD kSection = 0x40000000;
constexpr DWORD kMemory = 0x20000000;
constexpr DWORD kArray = 0x10000000;

TEST(TagTree, ValuesComeBack) {
    CRootTagTree root;
    for (const LONG value : {LONG{-1}, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()})
        EXPECT_EQ(root.SaveLong(1, value)->GetLong(), value);
    for (const double value : {-0.0, 0.1, 5e-324, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(std::bit_cast<ULONGLONG>(root.SaveDouble(2, value)->GetDouble()),
                  std::bit_cast<ULONGLONG>(value));
    const POINT point = root.SavePoint(3, {-5, 7})->GetPoint();
    EXPECT_TRUE(point.x == -5 && point.y == 7);
    EXPECT_STREQ(root.SaveString(1, "some text")->GetString(), "some text");
    EXPECT_STREQ(root.SaveString(1, "")->GetString(), "");
    EXPECT_STREQ(root.SaveTemporaryBuffer(1, 0, "x", 1)->GetString(), "");
    EXPECT_EQ(root.SaveTemporaryBuffer(1, 0, "ab\0cd", 6)->GetString().GetLength(), 2);
    EXPECT_STREQ(root.CreateSection(1, 0)->GetString(), "");
    EXPECT_TRUE(root.GetKeyStr(0, 0x80000014, 1).IsEmpty()) << "the names of keys are the application's";
    EXPECT_EQ(root.GetKeyId(0, 0x80000014, "Gain"), -1);
}

TEST(TagTree, TypesVersionsAndSizes) {
    const double values[] = {1, 2, 3};
    CRootTagTree root(77, 5);
    struct Case {
        const CTagTree* node;
        DWORD tag, type, version, size;
    };
    const Case cases[] = {
        {&root, 77, kSection, 5, 0},
        {root.SaveLong(1, 2), 1, 0x80000014, 0x14, 0},
        {root.SaveDouble(2, 2), 2, 0x80000088, 0x88, 0},
        {root.SavePoint(3, {1, 2}), 3, 0x80000108, 0x108, 0},
        {root.SaveString(4, "abc"), 4, 0x10000011, 0x11, 4},
        {root.SaveString(5, ""), 5, 0x10000011, 0x11, 0},
        {root.SaveString(7, 999, "ab"), 7, 0x10000011, 0x11, 3},  // the middle argument says nothing
        {root.SaveDblArray(8, values, 3), 8, 0x10000088, 0x88, 24},
        {root.SaveStaticDblArray(10, values, 2), 10, 0x10000088, 0x88, 16},
        {root.SaveTemporaryBuffer(11, 42, "12345", 5), 11, kMemory, 42, 5},
        {root.SaveStaticBuffer(12, 0x07FFFFFF, "12345", 5), 12, kMemory, 0x07FFFFFF, 5},
        {root.CreateSection(0xFFFFFFFF, 9), 0xFFFFFFFF, kSection, 9, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.node->GetTagID(), c.tag);
        EXPECT_EQ(c.node->GetType(), c.type) << c.tag;
        EXPECT_EQ(c.node->GetVersion(), c.version) << c.tag;
        EXPECT_EQ(c.node->GetDataSize(), c.size) << c.tag;
    }
}

TEST(TagTree, CopiesAreIndependentAndStaticDataIsNot) {
    char bytes[] = "first";
    double values[] = {1, 2};
    CRootTagTree root;
    const CTagTree* copied = root.SaveTemporaryBuffer(1, 0, bytes, 5);
    const CTagTree* lent = root.SaveStaticBuffer(2, 0, bytes, 5);
    const CTagTree* copiedValues = root.SaveDblArray(3, values, 2);
    const CTagTree* lentValues = root.SaveStaticDblArray(4, values, 2);
    bytes[0] = 'F';
    values[0] = -1;
    EXPECT_STREQ(copied->GetString(), "firs");  // the last byte always counts as the end
    EXPECT_STREQ(lent->GetString(), "Firs");
    double got[2];
    EXPECT_EQ(copiedValues->GetDblArray(got, 2), 2);
    EXPECT_EQ(got[0], 1);
    EXPECT_EQ(lentValues->GetDblArray(got, 2), 2);
    EXPECT_EQ(got[0], -1);
}

TEST(TagTree, CopiesNoMoreThanTheBufferHolds) {
    CRootTagTree root;
    const CTagTree* node = root.SaveTemporaryBuffer(1, 0, "0123456789", 10);
    struct Case {
        int maximum, elementSize, count;
        const char* text;
    };
    const Case cases[] = {{20, 1, 10, "0123456789"}, {4, 1, 4, "0123"},
                          {20, 4, 2, "01234567"},    {-1, 4, 0, ""},
                          {20, -4, 0, ""},           {std::numeric_limits<int>::max(), 4, 2, "01234567"}};
    for (const Case& c : cases) {
        char buffer[16] = {};
        EXPECT_EQ(node->GetArray(buffer, c.maximum, c.elementSize), c.count)
            << c.maximum << ' ' << c.elementSize;
        EXPECT_STREQ(buffer, c.text) << c.maximum << ' ' << c.elementSize;
    }
    char buffer[16] = {};
    EXPECT_EQ(node->CopyBuffer(buffer, 3), 3);
    EXPECT_STREQ(buffer, "012");
    EXPECT_EQ(node->CopyBuffer(buffer, 16), 10);
    EXPECT_EQ(node->CopyBuffer(nullptr, -1), 0);
}

TEST(TagTree, GettersOfAnotherTypeThrowTheirLocation) {
    CRootTagTree root;
    const CTagTree* section = root.CreateSection(1, 0);
    const CTagTree* number = root.SaveLong(2, 1);
    const CTagTree* real = root.SaveDouble(3, 1);
    const CTagTree* text = root.SaveString(4, "text");
    char buffer[8];
    EXPECT_EQ(thrownBy([&] { section->CopyBuffer(buffer, 8); }), "error E0000004 1030411");
    EXPECT_EQ(thrownBy([&] { number->GetArray(buffer, 1, 4); }), "error E0000004 1030411");
    EXPECT_EQ(thrownBy([&] { number->GetDouble(); }), "error E0000004 1030445");
    EXPECT_EQ(thrownBy([&] { real->GetLong(); }), "error E0000004 1030455");
    EXPECT_EQ(thrownBy([&] { text->GetPoint(); }), "error E0000004 1030467");
    EXPECT_EQ(thrownBy([&] { text->CopyBuffer(buffer, 8); }), "none");
    appClearErrors();
}

TEST(TagTree, TheFirstChildOfThatIdAndKindIsFound) {
    CRootTagTree root;
    const CTagTree* number = root.SaveLong(1, 10);
    root.SaveLong(1, 20);
    const CTagTree* text = root.SaveString(1, "x");
    const CTagTree* section = root.CreateSection(1, 3);
    const CTagTree* memory = root.SaveStaticBuffer(1, 7, "x", 1);
    EXPECT_EQ(root.FindTag(1, kImmediate), number);
    EXPECT_EQ(root.FindTag(1, kArray), text);
    EXPECT_EQ(root.FindTag(1, kSection), section);
    EXPECT_EQ(root.FindTag(1, kMemory), memory);
    EXPECT_EQ(root.FindTag(2, kImmediate), nullptr);
    EXPECT_EQ(root.FindTag(1, 0x80000014), nullptr);  // a type word is no kind
    EXPECT_EQ(section->FindTag(1, kImmediate), nullptr);
}

TEST(TagTree, TheFactoryMakesNodesAndTakesThem) {
    CRootTagTree root;
    CTagTree* last = root.SaveLong(1, 1);
    CKorSimpleTree* made = root.AddNewKnot(nullptr, last);
    ASSERT_TRUE(made->IsKindOf(RUNTIME_CLASS(CTagTree)));
    EXPECT_EQ(static_cast<CTagTree*>(made)->GetType(), 0u);
    auto given = std::make_unique<CTagTree>();
    EXPECT_EQ(root.AddNewKnot(given.get()), given.get());
    EXPECT_EQ(root.GetChildCount(), 3);
    EXPECT_EQ(root[0], made);
    EXPECT_EQ(root[2], given.get());
    given.reset();
    EXPECT_EQ(root.GetChildCount(), 2);
}

TEST(TagTree, SizesBeyond32BitsAreRefused) {
    CRootTagTree root;
    const double value = 0;
    EXPECT_EQ(thrownBy([&] { root.SaveStaticDblArray(1, &value, 0x20000000); }), "memory");
    EXPECT_EQ(thrownBy([&] { root.SaveStaticBuffer(1, 0, &value, 0xFFFFFFFD); }), "memory");
    EXPECT_EQ(root.GetChildCount(), 0);
}

}  // namespace
