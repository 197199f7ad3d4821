// Heaps: the process's and created ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "platform/win32.h"
#include "tests/platform/seeded.h"
#include "tests/support/random.h"

namespace {

using kor::test::gives;
constexpr SIZE_T kNoSize = static_cast<SIZE_T>(-1);

struct DestroyHeap {
    void operator()(void* heap) const { HeapDestroy(heap); }
};
using HeapOwner = std::unique_ptr<void, DestroyHeap>;

HeapOwner makeHeap(SIZE_T maximum) { return HeapOwner(HeapCreate(0, 0, maximum)); }

bool allBytesAre(const void* block, std::size_t from, std::size_t to, unsigned char value) {
    const auto* bytes = static_cast<const unsigned char*>(block);
    for (std::size_t i = from; i < to; ++i)
        if (bytes[i] != value) return false;
    return true;
}

// Both kinds of heap keep the same promises.
class AnyHeap : public testing::TestWithParam<bool> {
  protected:
    HeapOwner created = GetParam() ? makeHeap(0) : nullptr;
    HANDLE heap = created ? created.get() : GetProcessHeap();
};

TEST_P(AnyHeap, RemembersTheSizeThatWasAskedFor) {
    for (const SIZE_T size : {SIZE_T{0}, SIZE_T{1}, SIZE_T{15}, SIZE_T{4097}, SIZE_T{1000000}}) {
        void* block = HeapAlloc(heap, 0, size);
        ASSERT_NE(block, nullptr) << size;
        EXPECT_EQ(HeapSize(heap, 0, block), size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0u) << size;
        EXPECT_TRUE(HeapValidate(heap, 0, block));
        EXPECT_TRUE(HeapFree(heap, 0, block));
    }
}

TEST_P(AnyHeap, ClearsNewBlocksAndWhatABlockGains) {
    void* dirty = HeapAlloc(heap, 0, 600);
    ASSERT_NE(dirty, nullptr);
    std::memset(dirty, 0xCC, 600);
    HeapFree(heap, 0, dirty);
    void* block = HeapAlloc(heap, HEAP_ZERO_MEMORY, 600);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(allBytesAre(block, 0, 600, 0));
    std::memset(block, 0x55, 600);
    block = HeapReAlloc(heap, HEAP_ZERO_MEMORY, block, 70000);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(allBytesAre(block, 0, 600, 0x55));
    EXPECT_TRUE(allBytesAre(block, 600, 70000, 0));
    block = HeapReAlloc(heap, 0, block, 20);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(HeapSize(heap, 0, block), 20u);
    EXPECT_TRUE(allBytesAre(block, 0, 20, 0x55));
    EXPECT_TRUE(HeapFree(heap, 0, block));
}

TEST_P(AnyHeap, RefusesWhatIsNoBlockOfIts) {
    auto* block = static_cast<char*>(HeapAlloc(heap, HEAP_ZERO_MEMORY, 200));
    for (void* wrong : {static_cast<void*>(block + 8), static_cast<void*>(block + 64)}) {
        EXPECT_TRUE(gives([&] { return HeapSize(heap, 0, wrong); }, kNoSize, ERROR_INVALID_PARAMETER));
        EXPECT_FALSE(HeapFree(heap, 0, wrong));
        EXPECT_EQ(HeapReAlloc(heap, 0, wrong, 10), nullptr);
        EXPECT_FALSE(HeapValidate(heap, 0, wrong));
    }
    EXPECT_FALSE(HeapValidate(makeHeap(0).get(), 0, block)) << "another heap's";
    EXPECT_TRUE(HeapValidate(heap, 0, nullptr)) << "the heap itself";
    EXPECT_TRUE(HeapFree(heap, 0, nullptr));
    EXPECT_TRUE(gives([&] { return HeapDestroy(GetProcessHeap()); }, FALSE, ERROR_INVALID_HANDLE));
    EXPECT_EQ(HeapReAlloc(heap, 0, nullptr, 10), nullptr);
    EXPECT_TRUE(HeapFree(heap, 0, block));
}

TEST_P(AnyHeap, FailsForSizesThatCannotBe) {
    for (const SIZE_T size : {kNoSize, kNoSize - 16, kNoSize / 2})
        EXPECT_TRUE(gives([&] { return HeapAlloc(heap, 0, size); }, nullptr, ERROR_NOT_ENOUGH_MEMORY))
            << size;
    void* block = HeapAlloc(heap, 0, 100);
    void* fence = HeapAlloc(heap, 0, 100);
    EXPECT_EQ(HeapReAlloc(heap, 0, block, kNoSize - 8), nullptr);
    EXPECT_EQ(HeapReAlloc(heap, HEAP_REALLOC_IN_PLACE_ONLY, block, 50), block);
    EXPECT_TRUE(gives([&] { return HeapReAlloc(heap, HEAP_REALLOC_IN_PLACE_ONLY, block, 400000); }, nullptr,
                      ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_EQ(HeapSize(heap, 0, block), 50u) << "the old block stays";
    HeapFree(heap, 0, fence);
    HeapFree(heap, 0, block);
}

TEST_P(AnyHeap, KeepsBlocksApartThroughRandomUse) {
    struct Block {
        unsigned char* data = nullptr;
        std::size_t size = 0;
        unsigned char fill = 0;
    };
    std::vector<Block> blocks(40);
    auto random = kor::test::generator();
    for (int step = 0; step < kor::test::scaled(3000); ++step) {
        Block& block = blocks[random() % blocks.size()];
        const std::size_t size = 1 + random() % 3000;
        ASSERT_TRUE(allBytesAre(block.data, 0, block.size, block.fill)) << "step " << step;
        if (block.data && random() % 2 == 0) {
            ASSERT_TRUE(HeapFree(heap, 0, block.data));
            block = {};
            continue;
        }
        void* made = block.data ? HeapReAlloc(heap, 0, block.data, size) : HeapAlloc(heap, 0, size);
        ASSERT_NE(made, nullptr);
        ASSERT_TRUE(allBytesAre(made, 0, std::min(size, block.size), block.fill)) << "step " << step;
        block = {static_cast<unsigned char*>(made), size, static_cast<unsigned char>(random())};
        std::memset(block.data, block.fill, block.size);
    }
    EXPECT_TRUE(HeapValidate(heap, 0, nullptr));
    for (const Block& block : blocks)
        EXPECT_TRUE(HeapFree(heap, 0, block.data));
}

INSTANTIATE_TEST_SUITE_P(Heaps, AnyHeap, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Created" : "OfTheProcess"; });

TEST(CreatedHeap, HoldsNoMoreThanItsMaximum) {
    constexpr SIZE_T kMaximum = 0x10000;
    const HeapOwner heap = makeHeap(kMaximum);
    ASSERT_TRUE(heap);
    std::vector<void*> blocks;
    while (void* block = HeapAlloc(heap.get(), 0, 1000)) {
        blocks.push_back(block);
        ASSERT_LE(blocks.size() * 1000, kMaximum);
    }
    EXPECT_GE(blocks.size(), 55u) << "most of it can be used";
    EXPECT_TRUE(gives([&] { return HeapAlloc(heap.get(), 0, 1000); }, nullptr, ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_EQ(HeapReAlloc(heap.get(), 0, blocks.front(), 5000), nullptr);
    EXPECT_EQ(HeapSize(heap.get(), 0, blocks.front()), 1000u);
    EXPECT_TRUE(HeapFree(heap.get(), 0, blocks.back()));
    EXPECT_NE(HeapAlloc(heap.get(), 0, 1000), nullptr) << "freed room can be used again";
}

TEST(CreatedHeap, ServesThreadsAtOnce) {
    const HeapOwner heap = makeHeap(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&heap] {
            for (int i = 0; i < 2000; ++i) {
                void* block = HeapAlloc(heap.get(), 0, static_cast<SIZE_T>(i % 300));
                void* moved = HeapReAlloc(heap.get(), 0, block, 500);
                HeapFree(heap.get(), 0, moved);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(HeapValidate(heap.get(), 0, nullptr));
}

}  // namespace
