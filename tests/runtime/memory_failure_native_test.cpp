// What memory functions leave behind when memory runs out, at every single allocation that they make.
#include <gtest/gtest.h>

#include <cstring>

#include "korutil/info_store.h"
#include "korutil/memory.h"
#include "korutil/text.h"
#include "korutil/virtual_query.h"
#include "platform/win32.h"
#include "tests/support/failing_allocator.h"

namespace {

using kor::test::failEachAllocation;
using kor::test::FailingAllocation;

constexpr SIZE_T kPage = 4096;

// The first allocation fails, the whole call fails; the second time it works.
template <class Call>
void failsWithoutMemory(Call call) {
    FailingAllocation failing(1);
    const bool worked = call();
    const bool happened = failing.happened();
    failing.stop();
    EXPECT_TRUE(happened);
    EXPECT_FALSE(worked);
    EXPECT_TRUE(call());
}

TEST(MemoryFailure, BlocksAndArraysAreNull) {
    void* made = nullptr;
    failsWithoutMemory([&] { return (made = korMalloc(10, 0, 0, 0)) != nullptr; });
    korFree(made, 0);
    failsWithoutMemory([&] { return (made = armAlloc(10, 4, 0, nullptr)) != nullptr; });
    armFreeReset(&made);
    failsWithoutMemory([&] { return armReSize(&made, 10, 4, 0, nullptr) != 0; });
    armFreeReset(&made);
    failsWithoutMemory([&] { return (made = armAllocEx(nullptr, 4, 0, 2, DWORD{3}, DWORD{4})) != nullptr; });
    armFreeReset(&made);
    failsWithoutMemory(
        [&] { return (made = armAllocEx(GetProcessHeap(), 4, 0, 2, DWORD{3}, DWORD{4})) != nullptr; });
    armFreeReset(&made);
}

TEST(MemoryFailure, AnArrayThatCannotGrowStays) {
    for (HANDLE heap : {HANDLE{nullptr}, GetProcessHeap()}) {
        void* array = armAlloc(3, 4, 7, heap);
        auto* const values = static_cast<std::int32_t*>(array);
        values[2] = 5;
        {
            const FailingAllocation failing(1, FailingAllocation::After::fails);
            EXPECT_FALSE(armReAlloc(&array, 100000));
            EXPECT_FALSE(armCheckSize(&array, 100000, 10));
            EXPECT_FALSE(armReSize(&array, 100000, 4, 7, heap));
        }
        EXPECT_EQ(array, values);
        EXPECT_EQ(values[2], 5);
        EXPECT_EQ(armGetCount(array, 0), 3u);
        EXPECT_TRUE(armReAlloc(&array, 100000));
        EXPECT_TRUE(armFreeReset(&array));
    }
}

TEST(MemoryFailure, GlobalBlocksComeWholeOrNotAtAll) {
    const int failures = failEachAllocation([] {
        for (const UINT flags : {GMEM_FIXED, GMEM_MOVEABLE}) {
            SetLastError(0);
            void* block = GlobalAllocPtr(flags, 100);
            if (block == nullptr) {
                ASSERT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
                continue;
            }
            std::memset(block, 'x', 100);
            void* grown = GlobalReAllocPtr(block, 100000, GMEM_MOVEABLE);
            char* const left = static_cast<char*>(grown != nullptr ? grown : block);
            ASSERT_EQ(left[99], 'x');
            ASSERT_EQ(GlobalSize(GlobalHandle(left)), grown != nullptr ? 100000u : 100u);
            ASSERT_EQ(GlobalFlags(GlobalHandle(left)), flags == GMEM_MOVEABLE ? 1u : 0u);
            ASSERT_EQ(GlobalFreePtr(left), nullptr);
        }
    });
    EXPECT_GE(failures, 6) << "data, entry and growth of both kinds";
}

TEST(MemoryFailure, AFixedBlockThatCannotBecomeMovableStaysFixed) {
    failEachAllocation([] {
        HGLOBAL fixed = GlobalAlloc(GMEM_FIXED, 10);
        if (fixed == nullptr) return;
        HGLOBAL movable = GlobalReAlloc(fixed, 0, GMEM_MODIFY | GMEM_MOVEABLE);
        ASSERT_EQ(GlobalSize(movable != nullptr ? movable : fixed), 10u);
        ASSERT_EQ(GlobalFree(movable != nullptr ? movable : fixed), nullptr);
    });
}

TEST(MemoryFailure, DiscardedBlocksStayDiscarded) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 0);
    const int failures = failEachAllocation([block] {
        if (GlobalReAlloc(block, 50, GMEM_MOVEABLE) == nullptr) {
            ASSERT_EQ(GlobalFlags(block), GMEM_DISCARDED);
            return;
        }
        ASSERT_EQ(GlobalSize(block), 50u);
        ASSERT_EQ(GlobalReAlloc(block, 0, GMEM_MOVEABLE), block);
    });
    EXPECT_GE(failures, 2);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(MemoryFailure, AHeapIsNotMade) {
    HANDLE heap = nullptr;
    failsWithoutMemory([&heap] { return (heap = HeapCreate(0, 0, 0)) != nullptr; });
    void* block = nullptr;
    failsWithoutMemory([&] { return (block = HeapAlloc(heap, 0, 10)) != nullptr; });
    failsWithoutMemory([&] { return HeapReAlloc(heap, 0, block, 100000) != nullptr; });
    EXPECT_TRUE(HeapValidate(heap, 0, nullptr));
    EXPECT_TRUE(HeapDestroy(heap));
}

TEST(MemoryFailure, ReservedBlocksLeaveNothingBehind) {
    const int failures = failEachAllocation([] {
        void* block = nullptr;
        const WORD made = utlGlobal32Alloc(kPage, &block, 16 * kPage, 0);
        if (made != UTL_GLOBAL_DONE) {
            ASSERT_EQ(made, UTL_GLOBAL_OUT_OF_MEMORY);
            ASSERT_EQ(block, nullptr);
            return;
        }
        const WORD grown = utlGlobal32Realloc(block, 2 * kPage, 0);
        MEMORY_BASIC_INFORMATION committed;
        ASSERT_NE(VirtualQuery(block, &committed, sizeof committed), 0u);
        ASSERT_EQ(committed.RegionSize, grown == UTL_GLOBAL_DONE ? 2 * kPage : kPage);
        const WORD freed = utlGlobal32Free(block, 0);
        if (freed != UTL_GLOBAL_DONE) {
            ASSERT_EQ(freed, UTL_GLOBAL_INVALID);
            ASSERT_TRUE(VirtualFree(block, 0, MEM_RELEASE)) << "all of it is still there";
        }
    });
    EXPECT_GE(failures, 4);
}

TEST(MemoryFailure, QueriesFailCleanly) {
    const int failures = failEachAllocation([] {
        UtlVirtualDescription description;
        const int local = 0;
        if (utlVirtualQuery(&local, &description)) {
            ASSERT_EQ(description.isStack, 1u);
        } else {
            ASSERT_EQ(description.regionBase, 0u);
        }
    });
    EXPECT_GE(failures, 2);
}

TEST(MemoryFailure, ListsStoresAndTextsStayWhatTheyWere) {
    constexpr DWORD kRecord[] = {12, 1, 2};
    ListBlock* list = nullptr;
    failsWithoutMemory([&] { return (list = lisCreate(4)) != nullptr; });
    failsWithoutMemory([&] { return lisAdd(&list, kRecord) == 1; });
    EXPECT_TRUE(lisDestroy(&list));
    bool consistent = true;
    const int failures = failEachAllocation([&] {
        const bool stored = infSet(&list, 7, "x", 1) != 0;
        consistent = consistent && stored == (list != nullptr);
    });
    EXPECT_TRUE(consistent) << "an entry without a store, or the reverse";
    EXPECT_EQ(failures, 3) << "for the entry, the list and its data";
    lisDestroy(&list);
    char* piece = nullptr;
    failsWithoutMemory([&] { return strAlloc(1, &piece, DWORD{5}) == piece && piece; });
    strFree(piece);
    failsWithoutMemory([] { return _tcsistr("AB", "b") != nullptr; });
}

}  // namespace
