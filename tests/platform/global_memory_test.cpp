// Movable and fixed global memory: handles, lock counts, sizes and flags.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "tests/platform/seeded.h"

namespace {

using kor::test::gives;

TEST(GlobalMemory, CountsLocks) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 100);
    ASSERT_NE(block, nullptr);
    void* address = GlobalLock(block);
    ASSERT_NE(address, nullptr);
    EXPECT_NE(address, static_cast<void*>(block)) << "a movable block's handle is not its address";
    EXPECT_EQ(GlobalLock(block), address);
    EXPECT_EQ(GlobalFlags(block) & GMEM_LOCKCOUNT, 2u);
    EXPECT_TRUE(GlobalUnlock(block)) << "still locked once";
    EXPECT_TRUE(gives([&] { return GlobalUnlock(block); }, FALSE, NO_ERROR));
    EXPECT_TRUE(gives([&] { return GlobalUnlock(block); }, FALSE, ERROR_NOT_LOCKED));
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, StopsCountingLocksAt255) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 1);
    for (int i = 0; i < 300; ++i)
        ASSERT_NE(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalFlags(block), 255u);
    EXPECT_TRUE(GlobalUnlock(block));
    EXPECT_EQ(GlobalFlags(block), 254u);
    EXPECT_EQ(GlobalFree(block), nullptr) << "a locked block may be freed";
}

TEST(GlobalMemory, AnswersInvalidHandles) {
    HGLOBAL stale = GlobalAlloc(GMEM_MOVEABLE, 10);
    EXPECT_EQ(GlobalFree(stale), nullptr);
    constexpr DWORD kInvalid = ERROR_INVALID_HANDLE;
    EXPECT_TRUE(gives([&] { return GlobalLock(stale); }, nullptr, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalUnlock(stale); }, FALSE, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalSize(stale); }, 0u, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalFlags(stale); }, GMEM_INVALID_HANDLE + 0u, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalReAlloc(stale, 20, GMEM_MOVEABLE); }, nullptr, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalFree(stale); }, stale, kInvalid));
    HGLOBAL invented = reinterpret_cast<HGLOBAL>(static_cast<UINT_PTR>(0x12345678));
    EXPECT_TRUE(gives([&] { return GlobalSize(invented); }, 0u, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalFree(invented); }, invented, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalHandle(invented); }, nullptr, kInvalid));
    EXPECT_TRUE(gives([&] { return GlobalHandle(nullptr); }, nullptr, ERROR_INVALID_PARAMETER));
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
    EXPECT_EQ(LocalFree(nullptr), nullptr);
}

TEST(GlobalMemory, FindsTheHandleOfAnAddress) {
    HGLOBAL movable = GlobalAlloc(GMEM_MOVEABLE, 100);
    HGLOBAL fixed = GlobalAlloc(GMEM_FIXED, 100);
    auto* address = static_cast<char*>(GlobalLock(movable));
    EXPECT_EQ(GlobalHandle(address), movable);
    EXPECT_EQ(GlobalHandle(address + 4), nullptr) << "the start only";
    EXPECT_EQ(GlobalHandle(fixed), fixed);
    EXPECT_EQ(GlobalFree(movable), nullptr);
    EXPECT_EQ(GlobalFree(fixed), nullptr);
}

TEST(GlobalMemory, FixedBlocksAreTheirOwnAddress) {
    HGLOBAL block = GlobalAlloc(GPTR, 100);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(static_cast<char*>(block), 100), std::string(100, '\0'));
    EXPECT_EQ(GlobalLock(block), block);
    EXPECT_TRUE(GlobalUnlock(block));
    EXPECT_EQ(GlobalFlags(block), 0u);
    EXPECT_EQ(GlobalReAlloc(block, 50, 0), block);
    EXPECT_EQ(GlobalSize(block), 50u);
    EXPECT_TRUE(gives([&] { return GlobalReAlloc(block, 50000000, 0); }, nullptr, ERROR_NOT_ENOUGH_MEMORY))
        << "it moves only when told that it may";
    block = GlobalReAlloc(block, 500000, GMEM_MOVEABLE | GMEM_ZEROINIT);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), 500000u);
    EXPECT_EQ(static_cast<char*>(block)[499999], 0);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, ResizeClearsWhatIsGained) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 8);
    std::memset(GlobalLock(block), 'x', 8);
    GlobalUnlock(block);
    ASSERT_EQ(GlobalReAlloc(block, 100000, GMEM_MOVEABLE | GMEM_ZEROINIT), block) << "the handle stays";
    EXPECT_EQ(GlobalSize(block), 100000u);
    EXPECT_EQ(std::string(static_cast<char*>(GlobalLock(block)), 100000),
              std::string(8, 'x') + std::string(99992, '\0'));
    EXPECT_EQ(GlobalHandle(GlobalLock(block)), block) << "the new address is known, wherever it is";
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, GrowsStepByStepAndShrinks) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 100);
    for (const SIZE_T size : {70000, 70001, 100000, 90000, 100000, 300000, 5, 70000}) {
        const SIZE_T kept = std::min(GlobalSize(block), size);
        ASSERT_EQ(GlobalReAlloc(block, size, GMEM_MOVEABLE | GMEM_ZEROINIT), block);
        ASSERT_EQ(GlobalSize(block), size);
        auto* bytes = static_cast<char*>(GlobalLock(block));
        EXPECT_EQ(std::count(bytes + kept, bytes + size, '\0'), static_cast<std::ptrdiff_t>(size - kept));
        std::memset(bytes, 'x', size);
    }
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, ALockedBlockMovesOnlyWhenAllowed) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 100);
    void* address = GlobalLock(block);
    EXPECT_EQ(GlobalReAlloc(block, 90, 0), block);
    EXPECT_EQ(GlobalLock(block), address);
    EXPECT_TRUE(gives([&] { return GlobalReAlloc(block, 1000000, 0); }, nullptr, ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_EQ(GlobalSize(block), 90u);
    EXPECT_EQ(GlobalReAlloc(block, 0, GMEM_MOVEABLE), nullptr) << "nor is it discarded";
    EXPECT_EQ(GlobalReAlloc(block, 1000000, GMEM_MOVEABLE), block);
    EXPECT_EQ(GlobalSize(block), 1000000u);
    EXPECT_EQ(GlobalFlags(block), 2u) << "the locks stay";
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, DiscardsAndComesBack) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_DISCARDABLE, 100);
    EXPECT_EQ(GlobalFlags(block), GMEM_DISCARDABLE + 0u);
    EXPECT_TRUE(gives([&] { return GlobalReAlloc(block, 0, 0); }, nullptr, ERROR_INVALID_PARAMETER));
    ASSERT_EQ(GlobalReAlloc(block, 0, GMEM_MOVEABLE), block);
    EXPECT_EQ(GlobalFlags(block), (GMEM_DISCARDABLE | GMEM_DISCARDED) + 0u);
    EXPECT_EQ(GlobalSize(block), 0u);
    EXPECT_TRUE(gives([&] { return GlobalLock(block); }, nullptr, ERROR_DISCARDED));
    ASSERT_EQ(GlobalReAlloc(block, 200, GMEM_MOVEABLE | GMEM_ZEROINIT), block);
    EXPECT_EQ(GlobalFlags(block), GMEM_DISCARDABLE + 0u);
    EXPECT_EQ(std::string(static_cast<char*>(GlobalLock(block)), 200), std::string(200, '\0'));
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, AMovableBlockOfNoBytesIsBornDiscarded) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalFlags(block), GMEM_DISCARDED + 0u);
    EXPECT_TRUE(gives([&] { return GlobalLock(block); }, nullptr, ERROR_DISCARDED));
    EXPECT_EQ(GlobalReAlloc(block, 10, GMEM_MOVEABLE), block);
    EXPECT_EQ(GlobalSize(block), 10u);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, ModifyChangesAttributesOnly) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 100);
    EXPECT_EQ(GlobalReAlloc(block, 0, GMEM_MODIFY | GMEM_MOVEABLE | GMEM_DISCARDABLE), block);
    EXPECT_EQ(GlobalFlags(block), GMEM_DISCARDABLE + 0u);
    EXPECT_EQ(GlobalSize(block), 100u);
    EXPECT_EQ(GlobalFree(block), nullptr);

    HGLOBAL fixed = GlobalAlloc(GMEM_FIXED, 100);
    std::memcpy(fixed, "kept", 5);
    HGLOBAL movable = GlobalReAlloc(fixed, 0, GMEM_MODIFY | GMEM_MOVEABLE);
    ASSERT_NE(movable, nullptr);
    EXPECT_NE(movable, fixed);
    EXPECT_EQ(GlobalSize(movable), 100u);
    EXPECT_STREQ(static_cast<char*>(GlobalLock(movable)), "kept");
    EXPECT_EQ(GlobalFree(movable), nullptr);
}

TEST(GlobalMemory, FailsForSizesThatCannotBe) {
    const auto most = static_cast<SIZE_T>(-1);
    for (const UINT flags : {GMEM_FIXED + 0u, GMEM_MOVEABLE + 0u})
        EXPECT_TRUE(gives([&] { return GlobalAlloc(flags, most); }, nullptr, ERROR_NOT_ENOUGH_MEMORY));
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 10);
    EXPECT_EQ(GlobalReAlloc(block, most, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalSize(block), 10u) << "the old block stays";
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, HandlesStayDistinctAndAreUsedAgain) {
    for (int round = 0; round < 3; ++round) {
        std::set<HGLOBAL> handles;
        for (int i = 0; i < 1000; ++i) {
            HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 4);
            *static_cast<int*>(GlobalLock(block)) = i;
            EXPECT_TRUE(handles.insert(block).second);
        }
        std::set<int> values;
        for (HGLOBAL block : handles) {
            values.insert(*static_cast<int*>(GlobalLock(block)));
            EXPECT_EQ(GlobalFree(block), nullptr);
        }
        EXPECT_EQ(values.size(), 1000u);
    }
}

TEST(LocalMemory, GivesClearedAddresses) {
    HLOCAL block = LocalAlloc(LPTR, 64);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(static_cast<char*>(block), 64), std::string(64, '\0'));
    EXPECT_EQ(LocalFree(block), nullptr);
}

}  // namespace
