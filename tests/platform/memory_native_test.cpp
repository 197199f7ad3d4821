// What only our own platform has to prove: guard pages without the system's exceptions, the stacks of threads
// and the process map.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <csetjmp>
#include <csignal>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "platform/posix/kernel/virtual_memory.h"
#include "platform/win32.h"
#include "tests/platform/seeded_call.h"

namespace {

using kor::test::gives;
constexpr SIZE_T kPage = 4096;

struct Release {
    void operator()(void* region) const { VirtualFree(region, 0, MEM_RELEASE); }
};
using Region = std::unique_ptr<char, Release>;

Region commit(SIZE_T size) {
    return Region(static_cast<char*>(VirtualAlloc(nullptr, size, MEM_COMMIT, PAGE_READWRITE)));
}

MEMORY_BASIC_INFORMATION query(const void* address) {
    MEMORY_BASIC_INFORMATION block{};
    EXPECT_EQ(VirtualQuery(address, &block, sizeof block), sizeof block) << address;
    return block;
}

std::vector<MEMORY_BASIC_INFORMATION> walk(const void* address) {
    std::vector<MEMORY_BASIC_INFORMATION> blocks;
    const void* const region = query(address).AllocationBase;
    for (auto block = query(region); block.AllocationBase == region;
         block = query(static_cast<char*>(block.BaseAddress) + block.RegionSize))
        blocks.push_back(block);
    return blocks;
}

// Does what the fault translation does with an access fault: asks whether a guard was hit and leaves.
class FaultCatcher {
  public:
    FaultCatcher() {
        struct sigaction action {};
        action.sa_sigaction = [](int, siginfo_t* info, void*) {
            guardHit = korTakeGuardPage(info->si_addr);
            siglongjmp(back, 1);
        };
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        sigaction(SIGSEGV, &action, &former_);
    }
    ~FaultCatcher() { sigaction(SIGSEGV, &former_, nullptr); }

    // Whether writing a byte faults; `guardHit` then tells why.
    static bool faults(volatile char* address) {
        if (sigsetjmp(back, 1) != 0) return true;
        *address = 1;
        return false;
    }

    static inline BOOL guardHit = FALSE;

  private:
    static inline sigjmp_buf back;
    struct sigaction former_ {};
};

TEST(GuardPage, FaultsOnceAndIsThenAnOrdinaryPage) {
    const Region region = commit(4 * kPage);
    char* const guarded = region.get() + kPage;
    DWORD former = 0;
    ASSERT_TRUE(VirtualProtect(guarded, 2 * kPage, PAGE_READWRITE | PAGE_GUARD, &former));
    const FaultCatcher catcher;
    ASSERT_TRUE(FaultCatcher::faults(guarded + 7));
    EXPECT_TRUE(FaultCatcher::guardHit);
    EXPECT_FALSE(FaultCatcher::faults(guarded + 7)) << "once";
    EXPECT_EQ(query(guarded).Protect, PAGE_READWRITE);
    EXPECT_EQ(query(guarded + kPage).Protect, PAGE_READWRITE | PAGE_GUARD) << "each page has its own guard";
    EXPECT_FALSE(FaultCatcher::faults(region.get())) << "the neighbour never had one";
}

TEST(GuardPage, OtherFaultsAreNoGuardHits) {
    const Region region = commit(2 * kPage);
    DWORD former = 0;
    ASSERT_TRUE(VirtualProtect(region.get(), kPage, PAGE_READONLY, &former));
    const FaultCatcher catcher;
    ASSERT_TRUE(FaultCatcher::faults(region.get()));
    EXPECT_FALSE(FaultCatcher::guardHit);
    EXPECT_FALSE(korTakeGuardPage(nullptr));
    int local = 0;
    EXPECT_FALSE(korTakeGuardPage(&local));
}

TEST(GuardPage, IsRefusedOnMemoryThatIsNotOurs) {
    void* foreign = mmap(nullptr, kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    DWORD former = 0;
    EXPECT_FALSE(VirtualProtect(foreign, kPage, PAGE_READWRITE | PAGE_GUARD, &former));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(VirtualProtect(foreign, kPage, PAGE_READONLY, &former)) << "other protections are not";
    EXPECT_EQ(former, PAGE_READWRITE);
    EXPECT_EQ(query(foreign).Protect, PAGE_READONLY);
    munmap(foreign, kPage);
    EXPECT_FALSE(VirtualProtect(foreign, kPage, PAGE_READONLY, &former));
}

void expectStack(const void* local) {
    const std::vector<MEMORY_BASIC_INFORMATION> blocks = walk(local);
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_EQ(blocks[0].State, MEM_RESERVE);
    EXPECT_EQ(blocks[1].Protect, PAGE_READWRITE | PAGE_GUARD);
    EXPECT_EQ(blocks[1].RegionSize, kPage);
    EXPECT_EQ(blocks[2].State, MEM_COMMIT);
    EXPECT_EQ(blocks[2].Protect, PAGE_READWRITE);
    EXPECT_EQ(query(local).AllocationBase, blocks[0].BaseAddress);
    EXPECT_GE(local, blocks[2].BaseAddress);
    EXPECT_LT(local, static_cast<char*>(blocks[2].BaseAddress) + blocks[2].RegionSize);
    for (const MEMORY_BASIC_INFORMATION& block : blocks)
        EXPECT_EQ(block.Type, MEM_PRIVATE);
}

TEST(StackQuery, TellsTheMainThreadsStack) {
    const int local = 0;
    expectStack(&local);
}

TEST(StackQuery, TellsTheCallingThreadsStack) {
    std::thread([] {
        const int local = 0;
        expectStack(&local);
    }).join();
}

TEST(StackQuery, TellsTheMainThreadsStackInOtherThreadsToo) {
    const int local = 0;
    std::thread([&local] { expectStack(&local); }).join();
}

TEST(ForeignMemory, IsOnePrivateRegionPerEntry) {
    auto* pages = static_cast<char*>(
        mmap(nullptr, 5 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_EQ(mprotect(pages, kPage, PROT_NONE), 0);
    ASSERT_EQ(mprotect(pages + kPage, kPage, PROT_READ), 0);
    ASSERT_EQ(munmap(pages + 3 * kPage, kPage), 0);
    const MEMORY_BASIC_INFORMATION block = query(pages + kPage + 100);
    EXPECT_EQ(block.AllocationBase, pages + kPage);
    EXPECT_EQ(block.RegionSize, kPage);
    EXPECT_EQ(block.Protect, PAGE_READONLY);
    EXPECT_EQ(block.AllocationProtect, PAGE_READONLY);
    EXPECT_EQ(block.Type, MEM_PRIVATE);
    EXPECT_EQ(query(pages).State, MEM_RESERVE) << "address space without access is reserved";
    EXPECT_EQ(query(pages + 3 * kPage).State, MEM_FREE);
    EXPECT_EQ(query(pages + 3 * kPage).RegionSize, kPage) << "up to the next entry";
    munmap(pages, 5 * kPage);
}

// The system joins neighbours that are alike to one entry; our reservation must still be told apart.
TEST(ForeignMemory, EndsWhereAReservationOfOursBegins) {
    auto* place = static_cast<char*>(VirtualAlloc(nullptr, 0x30000, MEM_RESERVE, PAGE_READWRITE));
    ASSERT_TRUE(VirtualFree(place, 0, MEM_RELEASE));
    ASSERT_EQ(mmap(place, 0x30000, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0),
              place);
    ASSERT_EQ(munmap(place + 0x10000, 0x10000), 0);
    const Region ours(
        static_cast<char*>(VirtualAlloc(place + 0x10000, 0x10000, MEM_RESERVE, PAGE_READWRITE)));
    ASSERT_EQ(ours.get(), place + 0x10000);
    EXPECT_EQ(query(place + 0x8000).RegionSize, 0x8000u);
    EXPECT_EQ(query(ours.get()).RegionSize, 0x10000u);
    EXPECT_EQ(query(place + 0x20000).AllocationBase, place + 0x20000);
    munmap(place, 0x10000);
    munmap(place + 0x20000, 0x10000);
}

TEST(VirtualMemory, CommitThatTheMachineCannotGiveLeavesTheReservation) {
    MEMORYSTATUS status;
    GlobalMemoryStatus(&status);
    const SIZE_T size = (status.dwTotalPageFile + (SIZE_T{1} << 40)) & ~SIZE_T{0xFFFF};
    const Region region(static_cast<char*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_READWRITE)));
    ASSERT_TRUE(region) << "address space is not memory";
    EXPECT_EQ(VirtualAlloc(region.get(), size, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(query(region.get()).State, MEM_RESERVE);
    EXPECT_EQ(query(region.get()).RegionSize, size);
}

// Not among the tests of both targets: Wine keeps a lock of its own for good after these two.
TEST(VirtualMemory, RefusesToTellNowhere) {
    const Region region = commit(kPage);
    EXPECT_TRUE(gives([&] { return VirtualProtect(region.get(), kPage, PAGE_READONLY, nullptr); }, FALSE,
                      ERROR_NOACCESS));
    EXPECT_EQ(query(region.get()).Protect, PAGE_READWRITE);
    EXPECT_TRUE(gives([&] { return VirtualQuery(region.get(), nullptr, sizeof(MEMORY_BASIC_INFORMATION)); },
                      SIZE_T{0}, ERROR_NOACCESS));
}

TEST(HeapValidateCall, TakesAnyAddress) {
    const Region region = commit(kPage);
    DWORD former = 0;
    ASSERT_TRUE(VirtualProtect(region.get(), kPage, PAGE_NOACCESS, &former));
    for (const void* address :
         {reinterpret_cast<const void*>(0x10), static_cast<const void*>(region.get() + 64),
          reinterpret_cast<const void*>(~UINT_PTR{15})})
        EXPECT_FALSE(HeapValidate(GetProcessHeap(), 0, address)) << address;
}

}  // namespace
