// Arrays that describe themselves.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

#include "korutil/memory.h"
#include "platform/win32.h"

namespace {

constexpr SIZE_T kWord = sizeof(void*);
constexpr DWORD kTag = 0x12345678;

struct FreeArray {
    void operator()(void* array) const { armFreeReset(&array); }
};
template <class T>
using Array = std::unique_ptr<T, FreeArray>;

template <class T>
Array<T> own(void* array) {
    return Array<T>(static_cast<T*>(array));
}

UINT_PTR wordBefore(const void* array, int distance) {
    return static_cast<const UINT_PTR*>(array)[-distance];
}

SIZE_T blockSize(const void* array) {
    SIZE_T size = 0;
    EXPECT_TRUE(armGetData(array, &size, nullptr, nullptr, nullptr, nullptr));
    return size;
}

SIZE_T roundUp(SIZE_T size) { return (size + kWord - 1) / kWord * kWord; }

// Header, table of two pointers and two rows of three 2-byte elements.
TEST(ArmArray, LaysOutHeaderTableAndRows) {
    const auto array = own<std::int16_t*>(armAllocEx(nullptr, 2, kTag, 2, DWORD{2}, DWORD{3}));
    ASSERT_TRUE(array);
    const SIZE_T row = roundUp(6);
    EXPECT_EQ(wordBefore(array.get(), 1), 2u) << "dimensions";
    EXPECT_EQ(wordBefore(array.get(), 2), 2u) << "dimension 0";
    EXPECT_EQ(wordBefore(array.get(), 3), 3u) << "dimension 1";
    EXPECT_EQ(wordBefore(array.get(), 4), kTag);
    EXPECT_EQ(wordBefore(array.get(), 5), 2u) << "element size";
    EXPECT_EQ(wordBefore(array.get(), 6), 0u) << "the runtime heap";
    EXPECT_EQ(wordBefore(array.get(), 7), kWord * (2 + 5) + kWord * 2 + 2 * row) << "the whole block";
    char* const table = reinterpret_cast<char*>(array.get());
    EXPECT_EQ(reinterpret_cast<char*>(array.get()[0]), table + 2 * kWord);
    EXPECT_EQ(reinterpret_cast<char*>(array.get()[1]), table + 2 * kWord + row);
}

// Walks a whole array by its pointers: each row lies where depth-first order puts it, and all are zero.
class DepthFirst {
  public:
    DepthFirst(void* array, SIZE_T row) : cursor_(static_cast<char*>(array)), row_(row) {
        for (DWORD k = 0; armGetCount(array, k) != 0 || k == 0; ++k)
            counts_.push_back(armGetCount(array, k));
    }
    void check(void* at, std::size_t level = 0) {
        ASSERT_EQ(at, cursor_) << "level " << level;
        if (level + 1 == counts_.size()) {
            for (SIZE_T i = 0; i < row_; ++i)
                ASSERT_EQ(cursor_[i], 0);
            cursor_ += row_;
            return;
        }
        cursor_ += counts_[level] * kWord;
        for (DWORD i = 0; i < counts_[level]; ++i)
            check(static_cast<void**>(at)[i], level + 1);
    }
    char* end() const { return cursor_; }

  private:
    char* cursor_;
    SIZE_T row_;
    std::vector<DWORD> counts_;
};

TEST(ArmArray, TablesStandInDepthFirstOrder) {
    const DWORD two = 2;
    struct Case {
        void* array;
        SIZE_T row;
        DWORD dimensions;
    };
    const Case cases[] = {
        {armAlloc(3, 1, 0, nullptr), roundUp(3), 1},
        {armAllocEx(nullptr, 8, 0, 3, DWORD{2}, DWORD{3}, DWORD{4}), 32, 3},
        {armAllocEx(nullptr, 1, 0, 4, DWORD{3}, DWORD{1}, DWORD{2}, DWORD{5}), roundUp(5), 4},
        {armAllocEx(nullptr, 4, 0, 16, two, two, two, two, two, two, two, two, two, two, two, two, two, two,
                    two, two),
         8, 16},
    };
    for (const Case& c : cases) {
        const auto array = own<void>(c.array);
        DepthFirst walk(array.get(), c.row);
        walk.check(array.get());
        EXPECT_EQ(walk.end(),
                  static_cast<char*>(array.get()) + blockSize(array.get()) - (5 + c.dimensions) * kWord);
    }
}

TEST(ArmArray, RefusesWhatIsOutOfRange) {
    EXPECT_EQ(armAllocEx(nullptr, 1, 0, 0), nullptr);
    EXPECT_EQ(armAllocEx(nullptr, 1, 0, 17, DWORD{1}), nullptr);
    EXPECT_EQ(armAllocEx(nullptr, 65536, 0, 1, DWORD{1}), nullptr);
    EXPECT_EQ(armAlloc(1, 65536, 0, nullptr), nullptr);
    const auto largest = own<char>(armAlloc(1, 65535, 0, nullptr));
    EXPECT_TRUE(largest);
}

TEST(ArmArray, RefusesSizesThatCannotBeRepresented) {
    const DWORD most = 0xFFFFFFFF;
    EXPECT_EQ(armAllocEx(nullptr, 0, 0, 4, most, most, most, most), nullptr) << "tables alone";
    // Products that wrap to something small.
    EXPECT_EQ(armAllocEx(nullptr, 32768, 0, 4, DWORD{65536}, DWORD{65536}, DWORD{65536}, DWORD{2}), nullptr);
    EXPECT_EQ(armAllocEx(GetProcessHeap(), 65535, 0, 3, most, most, most), nullptr);
}

TEST(ArmArray, EmptyArraysAreArrays) {
    const auto none = own<char>(armAlloc(0, 8, 0, nullptr));
    EXPECT_EQ(blockSize(none.get()), 6 * kWord);
    const auto emptyRows = own<void*>(armAllocEx(nullptr, 8, 0, 2, DWORD{3}, DWORD{0}));
    EXPECT_EQ(emptyRows.get()[2], emptyRows.get() + 3);
}

TEST(ArmArray, TellsNothingOfWhatIsNoArray) {
    EXPECT_FALSE(armGetData(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_FALSE(armGetData(reinterpret_cast<void*>(0xFFF8), nullptr, nullptr, nullptr, nullptr, nullptr));
    UINT_PTR words[32] = {};
    for (const UINT_PTR dimensions : {0u, 17u, 63u}) {
        words[20] = dimensions;
        EXPECT_FALSE(armGetData(&words[21], nullptr, nullptr, nullptr, nullptr, nullptr)) << dimensions;
    }
    EXPECT_EQ(armGetCount(nullptr, 0), 0u);
    EXPECT_EQ(armGetHeap(nullptr), nullptr);
    EXPECT_EQ(armShiftPointers(nullptr, 1), nullptr);
    const auto array = own<void>(armAllocEx(nullptr, 1, 0, 2, DWORD{4}, DWORD{7}));
    EXPECT_EQ(armGetCount(array.get(), 1), 7u);
    EXPECT_EQ(armGetCount(array.get(), 2), 0u);
    void* none = nullptr;
    EXPECT_TRUE(armFreeReset(&none));
    EXPECT_FALSE(armFreeReset(nullptr));
    none = reinterpret_cast<void*>(UINT_PTR{0x1234});
    EXPECT_FALSE(armFreeReset(&none));
    EXPECT_NE(none, nullptr);
}

// The runtime heap and a heap of the system.
class ArmHeap : public testing::TestWithParam<bool> {
  protected:
    ~ArmHeap() override {
        if (heap != nullptr) HeapDestroy(heap);
    }
    HANDLE heap = GetParam() ? HeapCreate(0, 0, 0) : nullptr;
};

TEST_P(ArmHeap, GrowthKeepsElementsAndClearsNewOnes) {
    void* array = armAlloc(5, 4, kTag, heap);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(armGetHeap(array), heap);
    auto* values = static_cast<std::int32_t*>(array);
    std::iota(values, values + 5, 1);
    ASSERT_TRUE(armReAlloc(&array, 50000));
    values = static_cast<std::int32_t*>(array);
    for (int i = 0; i < 50000; ++i)
        ASSERT_EQ(values[i], i < 5 ? i + 1 : 0) << i;
    EXPECT_EQ(armGetCount(array, 0), 50000u);
    EXPECT_EQ(blockSize(array), 6 * kWord + 200000);
    ASSERT_TRUE(armReAlloc(&array, 1));
    ASSERT_TRUE(armReAlloc(&array, 2));
    EXPECT_EQ(static_cast<std::int32_t*>(array)[0], 1);
    EXPECT_EQ(static_cast<std::int32_t*>(array)[1], 0) << "it came back, within the padding";
    DWORD element = 0, tag = 0;
    EXPECT_TRUE(armGetData(array, nullptr, nullptr, nullptr, &element, &tag));
    EXPECT_EQ(element, 4u);
    EXPECT_EQ(tag, kTag);
    EXPECT_EQ(armGetHeap(array), heap);
    EXPECT_TRUE(armFreeReset(&array));
    EXPECT_EQ(array, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Arm, ArmHeap, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "OfTheSystem" : "OfTheRuntime"; });

// Both targets run out of memory here: the heap holds no more than its maximum.
TEST(ArmArray, EndsCleanlyWhenTheHeapIsFull) {
    HANDLE heap = HeapCreate(0, 0, 0x10000);
    ASSERT_NE(heap, nullptr);
    EXPECT_EQ(armAllocEx(heap, 8, 0, 2, DWORD{100}, DWORD{100}), nullptr);
    void* array = armAlloc(100, 8, 0, heap);
    ASSERT_NE(array, nullptr);
    static_cast<double*>(array)[99] = 2.5;
    EXPECT_FALSE(armReAlloc(&array, 100000));
    EXPECT_FALSE(armReAlloc(&array, -1));
    EXPECT_FALSE(armCheckSize(&array, 100000, 0));
    EXPECT_FALSE(armCheckSize(&array, 0x7FFFFFFF, 1)) << "beyond a signed count";
    EXPECT_FALSE(armCheckSize(&array, 0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_FALSE(armReSize(&array, 100000, 8, 0, heap));
    EXPECT_EQ(armGetCount(array, 0), 100u);
    EXPECT_EQ(blockSize(array), 6 * kWord + 800);
    EXPECT_EQ(static_cast<double*>(array)[99], 2.5);
    void* second = nullptr;
    EXPECT_FALSE(armReSize(&second, 100000, 8, 0, heap));
    EXPECT_EQ(second, nullptr);
    EXPECT_TRUE(armCheckSize(&array, 100, 5));
    EXPECT_EQ(armGetCount(array, 0), 100u) << "there was room";
    EXPECT_TRUE(armCheckSize(&array, 101, 5));
    EXPECT_EQ(armGetCount(array, 0), 106u);
    EXPECT_TRUE(armFreeReset(&array));
    EXPECT_FALSE(armCheckSize(&array, 1, 0)) << "null";
    EXPECT_TRUE(HeapDestroy(heap));
}

TEST(ArmArray, ReSizeMakesTheArrayOnFirstUse) {
    void* array = nullptr;
    ASSERT_TRUE(armReSize(&array, 3, 4, kTag, nullptr));
    static_cast<std::int32_t*>(array)[2] = 7;
    ASSERT_TRUE(armReSize(&array, 6, 1, 0, GetProcessHeap())) << "the last three are ignored now";
    DWORD element = 0, tag = 0;
    ASSERT_TRUE(armGetData(array, nullptr, nullptr, nullptr, &element, &tag));
    EXPECT_EQ(element, 4u);
    EXPECT_EQ(tag, kTag);
    EXPECT_EQ(armGetHeap(array), nullptr);
    EXPECT_EQ(static_cast<std::int32_t*>(array)[2], 7);
    EXPECT_FALSE(armReSize(&array, 0x80000000, 4, kTag, nullptr)) << "beyond a signed count";
    EXPECT_TRUE(armFreeReset(&array));
    EXPECT_FALSE(armReAlloc(&array, 5)) << "null";
    EXPECT_FALSE(armReAlloc(nullptr, 5));
    array = armAllocEx(nullptr, 2, 0, 2, DWORD{2}, DWORD{3});
    EXPECT_FALSE(armReAlloc(&array, 5)) << "two dimensions";
    EXPECT_EQ(armGetCount(array, 0), 2u);
    EXPECT_TRUE(armFreeReset(&array));
}

TEST(ArmArray, ShiftMovesTheOriginOnce) {
    const auto line = own<std::int16_t>(armAlloc(3, 2, 0, nullptr));
    line.get()[2] = 33;
    auto* fromOne = static_cast<std::int16_t*>(armShiftPointers(line.get(), static_cast<DWORD>(-1)));
    EXPECT_EQ(fromOne[3], 33);
    EXPECT_EQ(armShiftPointers(line.get(), 1), nullptr) << "once";
    EXPECT_EQ(armGetCount(line.get(), 0), 3u);

    const auto cube = own<std::int32_t**>(armAllocEx(nullptr, 4, 0, 3, DWORD{2}, DWORD{3}, DWORD{4}));
    for (int i = 0; i < 24; ++i)
        cube.get()[i / 12][i / 4 % 3][i % 4] = i;
    auto* shifted = static_cast<std::int32_t***>(armShiftPointers(cube.get(), static_cast<DWORD>(-1)));
    ASSERT_NE(shifted, nullptr);
    for (int i = 0; i < 24; ++i)
        ASSERT_EQ(shifted[i / 12 + 1][i / 4 % 3 + 1][i % 4 + 1], i);
    EXPECT_EQ(armShiftPointers(cube.get(), 2), nullptr);
    EXPECT_EQ(wordBefore(cube.get(), 1), 0x80000003u) << "marked in front";
    void* resized = armAlloc(3, 2, 0, nullptr);
    ASSERT_NE(armShiftPointers(resized, 5), nullptr);
    EXPECT_TRUE(armReAlloc(&resized, 4000));
    EXPECT_EQ(armGetCount(resized, 0), 4000u);
    EXPECT_EQ(armShiftPointers(resized, 5), nullptr) << "the mark stays";
    EXPECT_TRUE(armFreeReset(&resized));
}

// An array of arrays in a heap that can tell what is left in it.
class NestedArrays : public testing::Test {
  protected:
    ~NestedArrays() override { HeapDestroy(heap); }

    void** makeList(DWORD count) {
        return static_cast<void**>(armAlloc(count, kWord, ARM_TAG_OF_ARRAYS, heap));
    }
    bool isThere(void* array) const {
        return array != nullptr && HeapValidate(heap, 0, static_cast<UINT_PTR*>(array) - 6);
    }

    HANDLE heap = HeapCreate(0, 0, 0);
};

TEST_F(NestedArrays, AreFreedWithTheirOwner) {
    void** list = makeList(3);
    void* const first = list[0] = armAlloc(4, 4, 0, heap);
    void** inner = makeList(2);
    list[2] = inner;  // the second stays null
    void* const innermost = inner[1] = armAlloc(4, 4, 0, heap);
    ASSERT_TRUE(isThere(first) && isThere(inner) && isThere(innermost));
    void* array = list;
    EXPECT_TRUE(armFreeReset(&array));
    EXPECT_EQ(array, nullptr);
    for (void* freed : {static_cast<void*>(list), first, static_cast<void*>(inner), innermost})
        EXPECT_FALSE(isThere(freed));
}

TEST_F(NestedArrays, DeeperThanSixteenLevelsAreLeftAlone) {
    std::vector<void*> levels;
    void* below = nullptr;
    for (int level = 20; level >= 1; --level) {
        void** list = makeList(1);
        list[0] = below;
        below = list;
        levels.insert(levels.begin(), list);
    }
    EXPECT_TRUE(armFreeReset(&below));
    for (std::size_t i = 0; i < levels.size(); ++i)
        EXPECT_EQ(isThere(levels[i]), i >= 16) << "level " << i + 1;
}

TEST_F(NestedArrays, ElementsThatAreNoArraysAreLeftAlone) {
    void** list = makeList(2);
    list[0] = reinterpret_cast<void*>(static_cast<UINT_PTR>(0x1234));
    void* array = list;
    EXPECT_TRUE(armFreeReset(&array));
    // The tag on elements that cannot be pointers.
    array = armAlloc(100, 1, ARM_TAG_OF_ARRAYS, heap);
    std::memset(array, 0x7F, 100);
    EXPECT_TRUE(armFreeReset(&array));
    array = armAllocEx(heap, 1, ARM_TAG_OF_ARRAYS, 2, DWORD{2}, DWORD{2});
    EXPECT_TRUE(armFreeReset(&array));
}

}  // namespace
