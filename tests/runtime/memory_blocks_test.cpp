// Blocks of the runtime heap, global memory by its address, reserved blocks, and what an address belongs to.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>

#include "korutil/memory.h"
#include "korutil/virtual_query.h"
#include "platform/win32.h"

namespace {

constexpr SIZE_T kPage = 4096;

TEST(RuntimeBlock, IsSharedWithTheRuntime) {
    auto* block = static_cast<char*>(korMalloc(8, 1, 2, 3));
    std::memcpy(block, "content", 8);
    block = static_cast<char*>(korRealloc(block, 100000, 0, 0, 0));
    EXPECT_STREQ(block, "content");
    std::free(block);
    korFree(korRealloc(nullptr, 10, 0, 0, 0), 0);
    korFree(std::malloc(10), 0);
    korFree(nullptr, 0);
}

TEST(GlobalPointer, IsLockedWhileItLives) {
    auto* block = static_cast<char*>(GlobalAllocPtr(GMEM_MOVEABLE | GMEM_ZEROINIT, 10));
    ASSERT_NE(block, nullptr);
    HGLOBAL handle = GlobalHandle(block);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(GlobalFlags(handle), 1u);
    std::memcpy(block, "content", 8);
    block = static_cast<char*>(GlobalReAllocPtr(block, 100000, GMEM_MOVEABLE | GMEM_ZEROINIT));
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(block, "content");
    EXPECT_EQ(block[99999], 0);
    EXPECT_EQ(GlobalHandle(block), handle);
    EXPECT_EQ(GlobalReAllocPtr(block, static_cast<SIZE_T>(-1), GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalFlags(handle), 1u) << "still locked";
    EXPECT_STREQ(block, "content");
    EXPECT_EQ(GlobalFreePtr(block), nullptr);
    EXPECT_EQ(GlobalSize(handle), 0u) << "the handle is gone with it";
}

TEST(GlobalPointer, IsNullWhenThereIsNothingToLock) {
    EXPECT_EQ(GlobalAllocPtr(GMEM_MOVEABLE, 0), nullptr) << "a block of no bytes is born discarded";
    EXPECT_EQ(GlobalAllocPtr(GMEM_MOVEABLE, static_cast<SIZE_T>(-1)), nullptr);
    void* discarded = GlobalAllocPtr(GMEM_MOVEABLE, 10);
    HGLOBAL handle = GlobalHandle(discarded);
    EXPECT_EQ(GlobalReAllocPtr(discarded, 0, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalFlags(handle), GMEM_INVALID_HANDLE + 0u) << "freed, since it cannot be locked";
    int local = 0;
    EXPECT_EQ(GlobalReAllocPtr(&local, 10, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalFreePtr(&local), nullptr);
}

TEST(ReservedBlock, GrowsInPlaceUpToWhatIsReserved) {
    void* result = nullptr;
    ASSERT_EQ(utlGlobal32Alloc(10, &result, 0x20000, 0), UTL_GLOBAL_DONE);
    auto* block = static_cast<char*>(result);
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "content", 8);
    EXPECT_EQ(utlGlobal32Realloc(block, 0x20000, 0), UTL_GLOBAL_DONE);
    block[0x1FFFF] = 'x';
    EXPECT_STREQ(block, "content");
    EXPECT_EQ(utlGlobal32Realloc(block, 0x20001, 0), UTL_GLOBAL_OUT_OF_MEMORY);
    EXPECT_STREQ(block, "content");
    EXPECT_EQ(utlGlobal32Free(block + kPage, 0), UTL_GLOBAL_INVALID) << "not its start";
    EXPECT_EQ(utlGlobal32Free(block, 0), UTL_GLOBAL_DONE);
    UtlVirtualDescription description;
    ASSERT_TRUE(utlVirtualQuery(block, &description));
    EXPECT_EQ(description.regionType, MEM_FREE + 0u) << "the reservation is gone";
    EXPECT_EQ(utlGlobal32Free(block, 0), UTL_GLOBAL_INVALID);
}

TEST(ReservedBlock, LeavesNothingBehindWhenItFails) {
    int place = 0;
    void* result = &place;
    const SIZE_T tooMuch = ~SIZE_T{0} - 0xFFFF;
    EXPECT_EQ(utlGlobal32Alloc(10, &result, tooMuch, 0), UTL_GLOBAL_OUT_OF_MEMORY);
    EXPECT_EQ(result, nullptr);
    result = &place;
    EXPECT_EQ(utlGlobal32Alloc(0x20001, &result, 0x20000, 0), UTL_GLOBAL_OUT_OF_MEMORY)
        << "more than is reserved";
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(utlGlobal32Alloc(0, &result, 0x20000, 0), UTL_GLOBAL_OUT_OF_MEMORY) << "nothing to commit";
    EXPECT_EQ(utlGlobal32Alloc(10, nullptr, 0x20000, 0), UTL_GLOBAL_INVALID);
    EXPECT_EQ(utlGlobal32Realloc(nullptr, 10, 0), UTL_GLOBAL_INVALID);
    EXPECT_EQ(utlGlobal32Free(nullptr, 0), UTL_GLOBAL_INVALID);
    EXPECT_EQ(utlGlobal32Free(&place, 0), UTL_GLOBAL_INVALID) << "a stack is no such block";
    char bytes[8];
    EXPECT_EQ(utlGlobal16PointerAlloc(bytes, 3, &result, 0, 0), UTL_GLOBAL_DONE);
    EXPECT_EQ(utlGlobal16PointerAlloc(nullptr, 3, &result, 0, 0), UTL_GLOBAL_INVALID);
    EXPECT_EQ(result, bytes + 3);
    EXPECT_EQ(utlGlobal16PointerFree(1, 1, 0), UTL_GLOBAL_DONE);
    EXPECT_EQ(utlGlobal16PointerFree(0, 1, 0), UTL_GLOBAL_INVALID);
    EXPECT_EQ(utlGlobal16PointerFree(1, 0, 0), UTL_GLOBAL_INVALID);
}

UtlVirtualDescription describe(const void* address) {
    UtlVirtualDescription description;
    std::memset(&description, 0xCC, sizeof description);
    EXPECT_TRUE(utlVirtualQuery(address, &description)) << address;
    return description;
}

UINT_PTR word(const void* address) { return reinterpret_cast<UINT_PTR>(address); }

TEST(VirtualDescription, AddsUpTheBlocksOfARegion) {
    auto* region = static_cast<char*>(VirtualAlloc(nullptr, 8 * kPage, MEM_RESERVE, PAGE_READONLY));
    ASSERT_NE(region, nullptr);
    ASSERT_NE(VirtualAlloc(region + 2 * kPage, 3 * kPage, MEM_COMMIT, PAGE_READWRITE), nullptr);

    const UtlVirtualDescription committed = describe(region + 3 * kPage + 5);
    EXPECT_EQ(committed.regionBase, word(region));
    EXPECT_EQ(committed.regionProtection, PAGE_READONLY + 0u);
    EXPECT_EQ(committed.regionSize, 8 * kPage);
    EXPECT_EQ(committed.regionType, MEM_PRIVATE + 0u);
    EXPECT_EQ(committed.blockCount, 3u);
    EXPECT_EQ(committed.isStack, 0u);
    EXPECT_EQ(committed.blockBase, word(region + 3 * kPage));
    EXPECT_EQ(committed.blockProtection, PAGE_READWRITE + 0u);
    EXPECT_EQ(committed.blockSize, 2 * kPage);
    EXPECT_EQ(committed.blockKind, MEM_PRIVATE + 0u);

    const UtlVirtualDescription reserved = describe(region);
    EXPECT_EQ(reserved.blockSize, 2 * kPage);
    EXPECT_EQ(reserved.blockProtection, 0u);
    EXPECT_EQ(reserved.blockKind, MEM_RESERVE + 0u);
    EXPECT_EQ(reserved.regionSize, 8 * kPage);

    ASSERT_TRUE(VirtualFree(region, 0, MEM_RELEASE));
    const UtlVirtualDescription free = describe(region);
    EXPECT_EQ(free.regionBase, word(region));
    EXPECT_EQ(free.regionProtection, PAGE_NOACCESS + 0u);
    EXPECT_GE(free.regionSize, 8 * kPage);
    EXPECT_EQ(free.regionType, MEM_FREE + 0u);
    for (const UINT_PTR rest : {free.blockCount, free.guardCount, free.isStack, free.blockBase,
                                free.blockProtection, free.blockSize, free.blockKind})
        EXPECT_EQ(rest, 0u);
}

// Older systems show a stack by its last four blocks: reserved, without access, read-write, reserved.
TEST(VirtualDescription, KnowsAStackByItsLastFourBlocks) {
    struct Case {
        DWORD protections[6];  // of a page each; 0 is reserved
        UINT_PTR isStack;
        const char* reason;
    };
    constexpr Case kCases[] = {
        {{0, PAGE_NOACCESS, PAGE_READWRITE, 0, 0, 0}, 1, "just those four"},
        {{PAGE_READONLY, 0, PAGE_NOACCESS, PAGE_READWRITE, 0, 0}, 1, "at the end of five"},
        {{0, PAGE_NOACCESS, PAGE_READWRITE, 0, PAGE_READWRITE, 0}, 0, "not at the end"},
        {{PAGE_NOACCESS, PAGE_READWRITE, 0, 0, 0, 0}, 0, "three blocks only"},
        {{0, PAGE_READWRITE, PAGE_NOACCESS, 0, 0, 0}, 0, "another order"},
        {{PAGE_READWRITE, PAGE_READWRITE | PAGE_GUARD, PAGE_READWRITE, PAGE_READWRITE,
          PAGE_READONLY | PAGE_GUARD, PAGE_READONLY},
         1,
         "guards"},
    };
    for (const Case& c : kCases) {
        auto* region = static_cast<char*>(VirtualAlloc(nullptr, 6 * kPage, MEM_RESERVE, PAGE_READWRITE));
        for (int i = 0; i < 6; ++i)
            if (c.protections[i] != 0) VirtualAlloc(region + i * kPage, kPage, MEM_COMMIT, c.protections[i]);
        EXPECT_EQ(describe(region).isStack, c.isStack) << c.reason;
        EXPECT_EQ(describe(region).guardCount, c.reason == std::string_view("guards") ? 2u : 0u);
        VirtualFree(region, 0, MEM_RELEASE);
    }
}

TEST(VirtualDescription, FailsWhereNothingCanBeAndTellsTheLibraryAndAStack) {
    UtlVirtualDescription description;
    std::memset(&description, 0xCC, sizeof description);
    EXPECT_FALSE(utlVirtualQuery(reinterpret_cast<const void*>(~UINT_PTR{15}), &description));
    EXPECT_EQ(description.regionBase, 0u) << "cleared all the same";
    EXPECT_FALSE(utlVirtualQuery(&description, nullptr));
    std::thread([&description] { EXPECT_EQ(describe(&description).isStack, 1u); }).join();
    const UtlVirtualDescription image = describe(reinterpret_cast<const void*>(&utlVirtualQuery));
    EXPECT_EQ(image.regionType, MEM_IMAGE + 0u);
    EXPECT_GE(image.blockCount, 2u);
    EXPECT_EQ(image.isStack, 0u);
}

}  // namespace
