// Describing memory: our own regions from the table, all else from the process map.
#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <vector>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/process_map.h"
#include "platform/posix/kernel/reservation.h"

namespace kor {
namespace {

// The region that this thread asked about last. A walk from block to block within it is answered from here,
// so that it costs one reading of the map and sees one state of it. Without a destructor: to register one
// takes memory, and the process ends when there is none. A region of more blocks than fit is read again on
// the way.
struct Walk {
    std::array<MemoryBlock, 32> blocks;
    std::size_t count;
    std::uintptr_t next;  // where the block told last ended
    unsigned changes;
};
constinit thread_local Walk walk{};

template <class Blocks>
const MemoryBlock* blockAt(const Blocks& blocks, std::uintptr_t page) {
    for (const MemoryBlock& block : blocks)
        if (block.pages.contains(page)) return &block;
    return nullptr;
}

bool readBlock(std::uintptr_t page, unsigned changes, MemoryBlock& told) {
    const std::vector<MemoryBlock> region = readRegion(page);
    const MemoryBlock* block = blockAt(region, page);
    if (block == nullptr) return false;
    told = *block;
    const std::size_t at = static_cast<std::size_t>(block - region.data());
    walk.count = std::min(region.size() - at, walk.blocks.size());
    std::copy_n(block, walk.count, walk.blocks.begin());
    walk.changes = changes;
    return true;
}

bool describeForeign(std::uintptr_t page, const ReservationTable& table, MemoryBlock& told) {
    const MemoryBlock* known = nullptr;
    if (page == walk.next && table.changes() == walk.changes)
        known = blockAt(std::span(walk.blocks).first(walk.count), page);
    if (known != nullptr)
        told = *known;
    else if (!readBlock(page, table.changes(), told))
        return false;
    // The system joins neighbours that are alike, ours among them, to one entry.
    const PageRange own = table.clip(told.pages, page);
    if (told.region == told.pages.begin) told.region = own.begin;
    told.pages = {page, own.end};
    walk.next = own.end;
    return true;
}

bool describe(std::uintptr_t page, MemoryBlock& told) try {
    ReservationTable& table = reservations();
    const std::lock_guard lock(table.mutex);
    const Reservation* region = table.find(page);
    if (region == nullptr) return describeForeign(page, table, told);
    const DWORD protect = region->protectionAt(page);
    told = {region->alikeFrom(page),
            region->range().begin,
            region->allocationProtect(),
            protect != Reservation::kReservedOnly ? MEM_COMMIT : MEM_RESERVE,
            protect,
            MEM_PRIVATE};
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace
}  // namespace kor

SIZE_T WINAPI VirtualQuery(LPCVOID address, PMEMORY_BASIC_INFORMATION information, SIZE_T length) {
    const auto page = kor::roundDown(reinterpret_cast<std::uintptr_t>(address), kor::kPageSize);
    const DWORD code = page >= kor::kAddressEnd        ? ERROR_INVALID_PARAMETER
                       : information == nullptr        ? ERROR_NOACCESS
                       : length < sizeof(*information) ? ERROR_BAD_LENGTH
                                                       : NO_ERROR;
    kor::MemoryBlock told{};
    if (code != NO_ERROR || !kor::describe(page, told)) {
        SetLastError(code != NO_ERROR ? code : ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    *information = {told.pages.start(),
                    reinterpret_cast<void*>(told.region),
                    told.allocationProtect,
                    told.pages.size(),
                    told.state,
                    told.protect,
                    told.type};
    return sizeof *information;
}
