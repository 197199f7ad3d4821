// Describing memory: our own regions from the table, all else from the process map.
#include <pthread.h>

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/process_map.h"
#include "platform/posix/kernel/reservation.h"

namespace kor {
namespace {

// The walk from block to block that goes on: it is answered from one reading of the map, and sees one state
// of it. Walks that cross each other read the map more often, that is all. Kept for the process, under the
// table's lock: a thread_local of this size would not fit a second time where libraries come and go.
struct Walk {
    std::vector<MapEntry> map;
    std::vector<MemoryBlock> blocks;  // of the region told last; none: no walk
    pthread_t thread;
    unsigned changes;
    std::uintptr_t next;    // where the block told last ended
    std::uintptr_t region;  // where its region starts, to which a walk may go back once; 0: not

    bool goesOnAt(std::uintptr_t page, unsigned changesNow) const {
        return !blocks.empty() && changes == changesNow && pthread_equal(thread, pthread_self()) != 0 &&
               (page == next || (page == region && region != 0));
    }
};

// Outlives every other object's destructor, as the table does.
alignas(Walk) std::byte walkStorage[sizeof(Walk)];

Walk& lastWalk() {
    static Walk& walk = *new (walkStorage) Walk{};
    return walk;
}

const MemoryBlock* blockAt(const std::vector<MemoryBlock>& blocks, std::uintptr_t page) {
    for (const MemoryBlock& block : blocks)
        if (block.pages.contains(page)) return &block;
    return nullptr;
}

// The block at a page, as the walk has read it or, where none goes on, as it is now.
bool readBlock(std::uintptr_t page, unsigned changes, MemoryBlock& told) {
    Walk& walk = lastWalk();
    const bool goesOn = walk.goesOnAt(page, changes);
    if (const MemoryBlock* known = goesOn ? blockAt(walk.blocks, page) : nullptr) {
        told = *known;
        walk.region = 0;
        return true;
    }
    Walk fresh{{}, {}, pthread_self(), changes, 0, 0};
    fresh.map = goesOn ? std::move(walk.map) : readProcessMap();
    fresh.blocks = regionAt(fresh.map, page);
    const MemoryBlock* block = blockAt(fresh.blocks, page);
    if (block != nullptr) told = *block;
    const bool found = block != nullptr;
    // The step out of its region is a walk's last.
    walk = goesOn ? Walk{} : std::move(fresh);
    return found;
}

bool describeForeign(std::uintptr_t page, const ReservationTable& table, MemoryBlock& told) {
    if (!readBlock(page, table.changes(), told)) return false;
    // The system joins neighbours that are alike, ours among them, to one entry.
    const PageRange own = table.clip(told.pages, page);
    if (told.region == told.pages.begin) told.region = own.begin;
    told.pages = {page, own.end};
    Walk& walk = lastWalk();
    if (walk.next == 0 && page != told.region) walk.region = told.region;
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
