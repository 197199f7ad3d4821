// Reserving, committing and protecting pages, and what VirtualQuery tells of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/win32.h"
#include "tests/platform/region.h"
#include "tests/platform/seeded.h"
#include "tests/support/random.h"

namespace {

using namespace kor::test;

Region reserve(SIZE_T size) {
    return Region(static_cast<char*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_READWRITE)));
}

TEST(VirtualMemory, ReservesWholePagesAtMultiplesOf64K) {
    const Region region = reserve(0x12345);
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(region.get()) % 0x10000, 0u);
    const MEMORY_BASIC_INFORMATION block = query(region.get() + 0x5432);
    EXPECT_EQ(block.BaseAddress, region.get() + 0x5000) << "from the page asked about";
    EXPECT_EQ(block.AllocationBase, region.get());
    EXPECT_EQ(block.AllocationProtect, PAGE_READWRITE + 0u);
    EXPECT_EQ(block.RegionSize, 0x13000u - 0x5000u);
    EXPECT_EQ(block.Type, MEM_PRIVATE + 0u);
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    EXPECT_TRUE(info.dwPageSize == kPage && info.dwAllocationGranularity == 0x10000);
    EXPECT_TRUE(&info > info.lpMinimumApplicationAddress && &info < info.lpMaximumApplicationAddress);
}

TEST(VirtualMemory, CommitsPagesThatTheBytesTouch) {
    const Region region = reserve(0x10000);
    char* const start = region.get();
    EXPECT_EQ(VirtualAlloc(start + 0x1100, 0x1000, MEM_COMMIT, PAGE_READWRITE), start + 0x1000);
    EXPECT_EQ(query(start).RegionSize, 0x1000u);
    const MEMORY_BASIC_INFORMATION block = query(start + 0x1000);
    EXPECT_EQ(block.State, MEM_COMMIT + 0u);
    EXPECT_EQ(block.Protect, PAGE_READWRITE + 0u);
    EXPECT_EQ(block.RegionSize, 2 * kPage);
    EXPECT_EQ(query(start + 0x3000).State, MEM_RESERVE + 0u);
    EXPECT_EQ(start[0x1000], 0);
    start[0x2FFF] = 'x';
    EXPECT_EQ(VirtualAlloc(start, 0x10000, MEM_COMMIT, PAGE_READWRITE), start)
        << "committed pages may be there";
    EXPECT_EQ(start[0x2FFF], 'x') << "and keep their bytes";
}

TEST(VirtualMemory, ReservesAtAGivenAddressWhenItIsFree) {
    char* place = reserve(0x20000).get();  // released again at once
    const Region region(
        static_cast<char*>(VirtualAlloc(place + 0x1234, 0x1000, MEM_RESERVE, PAGE_READWRITE)));
    ASSERT_EQ(region.get(), place) << "rounded down to 64 KB";
    EXPECT_EQ(query(place).RegionSize, 0x3000u) << "and up to the page of the last byte";
    EXPECT_FALSE(VirtualAlloc(place, 1, MEM_RESERVE, PAGE_READWRITE));
}

TEST(VirtualMemory, RefusesBadArguments) {
    struct Case {
        SIZE_T size;
        DWORD type, protect;
        const char* reason;
    };
    constexpr Case kCases[] = {
        {0, MEM_RESERVE, PAGE_READWRITE, "no bytes"},
        {10, 0, PAGE_READWRITE, "nothing to do"},
        {10, MEM_RESERVE, 0, "no protection"},
        {10, MEM_RESERVE, PAGE_WRITECOPY, "write-copy is for files"},
        {~SIZE_T{0} - 0xFFFF, MEM_RESERVE, PAGE_READWRITE, "more than the address space"},
    };
    for (const Case& c : kCases)
        EXPECT_TRUE(gives([&] { return VirtualAlloc(nullptr, c.size, c.type, c.protect); }, nullptr,
                          ERROR_INVALID_PARAMETER))
            << c.reason;
    MEMORY_BASIC_INFORMATION block;
    EXPECT_TRUE(gives([&] { return VirtualQuery(&block, &block, sizeof block - 1); }, 0u, ERROR_BAD_LENGTH));
    EXPECT_TRUE(gives(
        [&] { return VirtualQuery(reinterpret_cast<const void*>(~UINT_PTR{15}), &block, sizeof block); }, 0u,
        ERROR_INVALID_PARAMETER));
    const Region region = reserve(0x10000);
    const auto commit = [&](SIZE_T offset, SIZE_T size) {
        return VirtualAlloc(region.get() + offset, size, MEM_COMMIT, PAGE_READWRITE);
    };
    EXPECT_TRUE(gives([&] { return commit(0xF000, 0x2000); }, nullptr, ERROR_INVALID_ADDRESS))
        << "beyond the reservation";
    EXPECT_EQ(query(region.get() + 0xF000).State, MEM_RESERVE + 0u) << "and nothing was committed";
}

TEST(VirtualMemory, FreesByTheRules) {
    Region region = reserve(0x10000);
    char* const start = region.get();
    ASSERT_NE(VirtualAlloc(start, 0x10000, MEM_COMMIT, PAGE_READWRITE), nullptr);
    struct Case {
        SIZE_T offset, size;
        DWORD type, error;
        const char* reason;
    };
    const Case cases[] = {
        {0, 0x10000, MEM_RELEASE, ERROR_INVALID_PARAMETER, "a release takes no size"},
        {0x1000, 0, MEM_RELEASE, ERROR_INVALID_ADDRESS, "a release takes the start"},
        {0, 0, 0, ERROR_INVALID_PARAMETER, "nothing to do"},
        {0, 0, MEM_RELEASE | MEM_DECOMMIT, ERROR_INVALID_PARAMETER, "both at once"},
        {0xF000, 0x2000, MEM_DECOMMIT, ERROR_INVALID_PARAMETER, "beyond the reservation"},
    };
    for (const Case& c : cases)
        EXPECT_TRUE(gives([&] { return VirtualFree(start + c.offset, c.size, c.type); }, FALSE, c.error))
            << c.reason;
    EXPECT_EQ(query(start).RegionSize, 0x10000u) << "nothing was freed";

    start[0x1000] = 'x';
    EXPECT_TRUE(VirtualFree(start + 0x1000, 1, MEM_DECOMMIT));
    EXPECT_EQ(query(start + 0x1000).State, MEM_RESERVE + 0u);
    ASSERT_NE(VirtualAlloc(start + 0x1000, 1, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(start[0x1000], 0) << "committed anew, the page is zero";
    EXPECT_TRUE(VirtualFree(start, 0, MEM_DECOMMIT)) << "all of it";
    EXPECT_EQ(query(start + 0xF000).State, MEM_RESERVE + 0u);
    EXPECT_TRUE(VirtualFree(region.release(), 0, MEM_RELEASE));
    EXPECT_EQ(query(start).State, MEM_FREE + 0u);
    EXPECT_FALSE(VirtualFree(start, 0, MEM_RELEASE)) << "once only";
}

TEST(VirtualMemory, ChangesProtectionAndTellsTheFormerOne) {
    const Region region = reserve(0x10000);
    char* const start = region.get();
    ASSERT_NE(VirtualAlloc(start, 4 * kPage, MEM_COMMIT, PAGE_READWRITE), nullptr);
    DWORD former = 0;
    EXPECT_TRUE(VirtualProtect(start + kPage, kPage, PAGE_READONLY, &former));
    EXPECT_EQ(former, PAGE_READWRITE + 0u);
    EXPECT_TRUE(VirtualProtect(start + kPage + 1, 1, PAGE_READWRITE | PAGE_GUARD, &former));
    EXPECT_EQ(former, PAGE_READONLY + 0u);
    EXPECT_EQ(query(start).RegionSize, kPage);
    EXPECT_EQ(query(start + kPage).Protect, (PAGE_READWRITE | PAGE_GUARD) + 0u);
    EXPECT_EQ(query(start + 2 * kPage).RegionSize, 2 * kPage);
    EXPECT_TRUE(VirtualProtect(start, 4 * kPage, PAGE_READWRITE, &former));
    EXPECT_EQ(query(start).RegionSize, 4 * kPage) << "alike pages are one block again";

    const auto protect = [&](SIZE_T size, DWORD protection) {
        return [=, &former] { return VirtualProtect(start, size, protection, &former); };
    };
    EXPECT_TRUE(gives(protect(5 * kPage, PAGE_READONLY), FALSE, ERROR_INVALID_ADDRESS))
        << "a page that is only reserved";
    EXPECT_TRUE(gives(protect(kPage, 0), FALSE, ERROR_INVALID_PARAMETER));
    EXPECT_EQ(query(start).Protect, PAGE_READWRITE + 0u) << "nothing has changed";
}

TEST(VirtualMemory, TellsTheBlocksOfARegionThroughRandomUse) {
    constexpr std::size_t kPages = 48;
    const Region region = reserve(kPages * kPage);
    char* const start = region.get();
    std::vector<DWORD> model(kPages, 0);  // a page's protection; 0: reserved
    auto random = kor::test::generator();
    const DWORD protections[] = {PAGE_READWRITE, PAGE_READONLY, PAGE_NOACCESS, PAGE_READWRITE | PAGE_GUARD};
    const int steps = kor::test::scaled(400);
    for (int step = 0; step < steps; ++step) {
        const std::size_t first = random() % kPages;
        const std::size_t count = 1 + random() % (kPages - first);
        const DWORD protect = random() % 3 == 0 ? 0 : protections[random() % std::size(protections)];
        char* const at = start + first * kPage;
        if (protect == 0)
            ASSERT_TRUE(VirtualFree(at, count * kPage, MEM_DECOMMIT));
        else
            ASSERT_EQ(VirtualAlloc(at, count * kPage, MEM_COMMIT, protect), at);
        std::fill_n(model.begin() + static_cast<std::ptrdiff_t>(first), count, protect);
        for (std::size_t page = 0; page < kPages;) {
            const MEMORY_BASIC_INFORMATION block = query(start + page * kPage);
            ASSERT_EQ(block.State, model[page] != 0 ? MEM_COMMIT + 0u : MEM_RESERVE + 0u) << "step " << step;
            const auto other = std::find_if(model.begin() + static_cast<std::ptrdiff_t>(page), model.end(),
                                            [&](DWORD of) { return of != model[page]; });
            const std::size_t end = static_cast<std::size_t>(other - model.begin());
            // Where decommitted pieces meet, one system joins them to one block and another does not.
            if (model[page] != 0) {
                ASSERT_EQ(block.Protect, model[page]) << "step " << step;
                ASSERT_EQ(block.RegionSize, (end - page) * kPage) << "step " << step << ", page " << page;
            }
            ASSERT_GE(block.RegionSize, kPage);
            page += std::min<std::size_t>(block.RegionSize / kPage, end - page);
        }
    }
}

TEST(VirtualQueryCall, TellsTheProgramAsOneImageAndTheRestAsFree) {
    const MEMORY_BASIC_INFORMATION none = query(nullptr);
    EXPECT_TRUE(none.State == MEM_FREE && none.Protect == PAGE_NOACCESS && !none.AllocationBase &&
                none.Type == 0);
    EXPECT_GE(none.RegionSize, 0x10000u) << "the lowest 64 KB are never used";
    static const char kConstant[] = "constant";
    const MEMORY_BASIC_INFORMATION code = query(reinterpret_cast<const void*>(
        static_cast<DWORD (*)(const void*)>([](const void* address) { return query(address).State; })));
    const MEMORY_BASIC_INFORMATION data = query(kConstant);
    EXPECT_EQ(code.Type, MEM_IMAGE + 0u);
    EXPECT_EQ(code.State, MEM_COMMIT + 0u);
    EXPECT_NE(code.Protect & (PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY), 0u);
    EXPECT_EQ(data.Type, MEM_IMAGE + 0u);
    EXPECT_EQ(data.AllocationBase, code.AllocationBase) << "one region";
    EXPECT_NE(data.BaseAddress, code.BaseAddress) << "of several blocks";
}

}  // namespace
