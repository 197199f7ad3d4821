// Packed lists, and the choice of a value from a sorted row.
#include "korutil/list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/random.h"

namespace {

std::string record(DWORD size, unsigned fill = 'x') {
    std::string bytes(size, static_cast<char>(fill));
    std::memcpy(bytes.data(), &size, sizeof size);
    return bytes;
}

struct List {
    explicit List(DWORD step = 4) : block(lisCreate(step)) {}
    List(const List& other) : block(lisDuplicate(other.block)) {}
    ~List() { lisDestroy(&block); }
    DWORD add(DWORD size, unsigned fill = 'x') { return lisAdd(&block, record(size, fill).data()); }
    DWORD& word(std::size_t index) { return reinterpret_cast<DWORD*>(block)[index]; }
    char* element(DWORD index) { return static_cast<char*>(lisGetPointerToElement(block, index)); }
    // Total size, data offset, count, table, data in use, data capacity, step and 0.
    std::vector<DWORD> words() { return {&word(0), &word(8)}; }

    ListBlock* block;
};
using Words = std::vector<DWORD>;

TEST(PackedList, GrowsByWhatIsNeededPlusTheStepAndShrinksToWhatIsUsed) {
    List list(1);
    EXPECT_EQ(list.words(), (Words{432, 432, 0, 100, 0, 0, 4, 0}));
    ASSERT_EQ(list.add(12), 1u);
    EXPECT_EQ(list.words(), (Words{452, 432, 1, 100, 16, 20, 4, 0}));
    for (DWORD count = 2; count <= 100; ++count)
        ASSERT_EQ(list.add(9, count), count);
    EXPECT_EQ(list.words(), (Words{1640, 432, 100, 100, 1204, 1208, 4, 0}));
    ASSERT_EQ(list.add(4), 101u);
    EXPECT_EQ(list.words(), (Words{836 + 1216, 836, 101, 201, 1212, 1216, 4, 0}));
    EXPECT_EQ(std::string(list.element(99), 12), record(9, 100) + std::string(3, '\0')) << "it moved along";
    for (int i = 0; i < 42; ++i)
        ASSERT_TRUE(lisRemoveData(&list.block, 1));
    EXPECT_EQ(list.words(), (Words{836 + 1216, 836, 59, 201, 708, 1216, 4, 0})) << "508 bytes are free";
    ASSERT_TRUE(lisRemoveData(&list.block, 57));
    EXPECT_EQ(list.words(), (Words{836 + 696, 836, 58, 201, 696, 696, 4, 0}));
    EXPECT_EQ(std::string(list.element(57), 8), record(4) + std::string(4, '\0'));
    EXPECT_EQ(list.word(8 + 58), 0u) << "a slot that is not in use";
}

TEST(PackedList, KeepsItsElementsThroughRandomChanges) {
    auto random = kor::test::generator();
    List list;
    std::vector<std::string> kept{record(4)};
    ASSERT_EQ(list.add(4), 1u);
    for (int step = 0; step < kor::test::scaled(2000); ++step) {
        const auto index = static_cast<DWORD>(random() % kept.size());
        if (kept.size() == 1 || random() % 16 > (step % 1000 < 600 ? 4u : 11u)) {
            const bool own = random() % 4 == 0;  // a copy of one of its own, which may move
            kept.push_back(own ? kept[index] : record(static_cast<DWORD>(4 + random() % 70), random() % 256));
            ASSERT_EQ(lisAdd(&list.block, own ? list.element(index) : kept.back().data()), kept.size());
        } else {
            kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(index));
            ASSERT_TRUE(lisRemoveData(&list.block, index));
        }
        List copy(list);
        ASSERT_EQ(lisGetElementCount(copy.block), kept.size());
        for (DWORD i = 0; i < kept.size(); ++i)
            ASSERT_EQ(std::string(copy.element(i), kept[i].size() + 1), kept[i] + '\0') << "step " << step;
    }
}

TEST(PackedList, IsCheckedAndSoIsWhatIsAdded) {
    List intact;
    for (const DWORD size : {12u, 20u, 8u})
        intact.add(size);
    const Words wrong[] = {{0, 431}, {0, 4},   {0, 0},        {1, 436}, {1, 0xFFFFFFF0}, {2, 101},
                           {3, 99},  {3, 101}, {3, 1u << 30}, {4, 57},  {4, 0xFFFFFFFF}, {5, 0}};
    for (const Words& change : wrong) {
        SCOPED_TRACE(testing::Message() << "word " << change[0] << " = " << change[1]);
        List damaged(intact);
        damaged.word(change[0]) = change[1];
        EXPECT_FALSE(lisGetElementCount(damaged.block) || damaged.element(0) || lisDuplicate(damaged.block));
        EXPECT_FALSE(damaged.add(4) || lisRemoveData(&damaged.block, 0));
    }
    List list(0xFFFFFFFF);
    EXPECT_EQ(list.add(12), 0u) << "4 GB with the step";
    for (const DWORD size : {0u, 3u, 0xFFFFFFFFu, 0xFFFFFFFCu, 0xFFFFFF00u})
        EXPECT_EQ(lisAdd(&intact.block, &size), 0u) << size;
    for (const DWORD offset : {17u, 56u, 0x100u, 0xFFFFFFFCu}) {
        List damaged(intact);
        damaged.word(8 + 1) = offset;
        EXPECT_EQ(damaged.element(1), nullptr) << offset;
        EXPECT_EQ(lisRemoveData(&damaged.block, 0), offset == 17) << "it ends where the next begins";
    }
    intact.word(108 + 4) = 41;
    EXPECT_EQ(intact.element(1), nullptr) << "larger than the rest of the data";
}

TEST(NextInList, SnapsInTheDirectionOfMovement) {
    constexpr WORD kList[] = {1, 2, 5, 10};
    const std::vector<WORD> cases[] = {{3, 2, 5}, {3, 4, 2}, {3, 3, 2}, {11, 10, 10}, {11, 12, 10},
                                       {0, 1, 1}, {0, 0, 1}, {5, 9, 5}, {6, 5, 10},   {65535, 10, 10}};
    for (const auto& each : cases)  // value, previous, result
        EXPECT_EQ(utlGetNextInList(each[0], each[1], kList, 4), each[2]) << each[1] << " to " << each[0];
}

}  // namespace
