#include "korutil/virtual_query.h"

#include <algorithm>
#include <array>

#include "platform/win32.h"

namespace kor {
namespace {

using Protections = std::array<DWORD, 4>;

// How the last four blocks of a stack are protected on systems that show no guard page.
constexpr Protections kStackEnd = {0, PAGE_NOACCESS, PAGE_READWRITE, 0};

bool query(UINT_PTR address, MEMORY_BASIC_INFORMATION& block) {
    return VirtualQuery(reinterpret_cast<const void*>(address), &block, sizeof block) != 0;
}

UINT_PTR word(const void* address) { return reinterpret_cast<UINT_PTR>(address); }

bool walkRegion(UtlVirtualDescription& description) {
    Protections last{};
    MEMORY_BASIC_INFORMATION block{};
    for (UINT_PTR at = description.regionBase;
         query(at, block) && word(block.AllocationBase) == description.regionBase;) {
        const DWORD protect = block.State == MEM_RESERVE ? 0 : block.Protect;
        std::rotate(last.begin(), last.begin() + 1, last.end());
        last.back() = protect;
        description.regionSize += block.RegionSize;
        ++description.blockCount;
        if ((protect & PAGE_GUARD) != 0) ++description.guardCount;
        if (description.regionType == MEM_PRIVATE) description.regionType = block.Type;
        if (block.RegionSize == 0 || at + block.RegionSize < at) break;
        at += block.RegionSize;
    }
    const bool endsAsStack = description.blockCount >= last.size() && last == kStackEnd;
    description.isStack = description.guardCount != 0 || endsAsStack;
    return description.blockCount != 0;
}

}  // namespace
}  // namespace kor

BOOL KORUTIL_CALL utlVirtualQuery(const void* address, UtlVirtualDescription* description) {
    if (description == nullptr) return 0;
    *description = {};
    MEMORY_BASIC_INFORMATION block{};
    if (!kor::query(kor::word(address), block)) return 0;
    if (block.State == MEM_FREE) {
        description->regionBase = kor::word(block.BaseAddress);
        description->regionProtection = block.Protect;
        description->regionSize = block.RegionSize;
        description->regionType = MEM_FREE;
        return 1;
    }
    description->regionBase = kor::word(block.AllocationBase);
    description->regionProtection = block.AllocationProtect;
    description->regionType = block.Type;
    description->blockBase = kor::word(block.BaseAddress);
    description->blockProtection = block.Protect;
    description->blockSize = block.RegionSize;
    description->blockKind = block.State == MEM_RESERVE ? MEM_RESERVE : block.Type;
    if (kor::walkRegion(*description)) return 1;
    *description = {};
    return 0;
}
