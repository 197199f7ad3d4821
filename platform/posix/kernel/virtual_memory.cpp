// Reserving, committing, protecting and giving back pages.
#include "platform/posix/kernel/virtual_memory.h"

#include <sys/mman.h>

#include <cerrno>
#include <new>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/page_protection.h"
#include "platform/posix/kernel/process_map.h"
#include "platform/posix/kernel/reservation.h"

namespace kor {
namespace {

constexpr DWORD kTransition = MEM_COMMIT | MEM_RESERVE;

LPVOID failWith(DWORD code) {
    SetLastError(code);
    return nullptr;
}

BOOL refuse(DWORD code) {
    SetLastError(code);
    return FALSE;
}

// The pages that hold a range of bytes; nothing (end 0) when it leaves what a process can use.
PageRange pagesOf(const void* address, SIZE_T size) {
    const auto begin = reinterpret_cast<std::uintptr_t>(address);
    if (begin >= kAddressEnd || size > kAddressEnd - begin) return {};
    return {roundDown(begin, kPageSize), roundUp(begin + size, kPageSize)};
}

void* mapReserved(const PageRange& pages, int placement) {
    return ::mmap(pages.start(), pages.size(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | placement, -1, 0);
}

// Finds a place at a multiple of the granularity: maps more than is needed and gives the edges back.
bool reserveAnywhere(std::size_t size, PageRange& pages) {
    const std::size_t most = size + kGranularity - kPageSize;
    void* mapped = mapReserved({0, most}, 0);
    if (mapped == MAP_FAILED) return false;
    const auto begin = reinterpret_cast<std::uintptr_t>(mapped);
    pages.begin = roundUp(begin, kGranularity);
    pages.end = pages.begin + size;
    if (pages.begin > begin) ::munmap(mapped, pages.begin - begin);
    if (begin + most > pages.end) ::munmap(reinterpret_cast<void*>(pages.end), begin + most - pages.end);
    return true;
}

DWORD reserveAt(const PageRange& pages) {
    void* mapped = mapReserved(pages, MAP_FIXED_NOREPLACE);
    if (mapped == pages.start()) return NO_ERROR;
    if (mapped == MAP_FAILED) return errno == ENOMEM ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_ADDRESS;
    ::munmap(mapped, pages.size());  // an older system takes the place as a hint
    return ERROR_INVALID_ADDRESS;
}

bool protectPages(const PageRange& pages, DWORD protect) {
    return ::mprotect(pages.start(), pages.size(), nativeProtection(protect)) == 0;
}

// Gives pages a protection, in the table and for the machine, or in neither.
bool assignPages(Reservation& region, const PageRange& pages, DWORD protect) {
    const Reservation former = region;
    region.assign(pages, protect);
    if (!protectPages(pages, protect)) {
        region = former;
        return false;
    }
    reservations().changed();
    return true;
}

LPVOID reserve(LPVOID address, SIZE_T size, DWORD type, DWORD protect) {
    PageRange pages;
    if (address == nullptr) {
        if (!reserveAnywhere(roundUp(size, kPageSize), pages)) return failWith(ERROR_NOT_ENOUGH_MEMORY);
    } else {
        pages = pagesOf(address, size);
        pages.begin = roundDown(pages.begin, kGranularity);
        if (pages.begin < kLowestAddress) return failWith(ERROR_INVALID_PARAMETER);
        if (const DWORD code = reserveAt(pages); code != NO_ERROR) return failWith(code);
    }
    try {
        reservations().add(pages, protect);
        Reservation& region = *reservations().find(pages.begin);
        if ((type & MEM_COMMIT) == 0 || assignPages(region, pages, protect)) return pages.start();
        reservations().remove(region);
    } catch (const std::bad_alloc&) {
        if (Reservation* region = reservations().find(pages.begin)) reservations().remove(*region);
    }
    ::munmap(pages.start(), pages.size());
    return failWith(ERROR_NOT_ENOUGH_MEMORY);
}

LPVOID commit(const PageRange& pages, DWORD protect) try {
    Reservation* region = reservations().find(pages.begin);
    if (region == nullptr || !region->range().contains(pages)) return failWith(ERROR_INVALID_ADDRESS);
    return assignPages(*region, pages, protect) ? pages.start() : failWith(ERROR_NOT_ENOUGH_MEMORY);
} catch (const std::bad_alloc&) {
    return failWith(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL decommit(Reservation& region, const void* address, SIZE_T size) try {
    PageRange pages = pagesOf(address, size);
    if (size == 0) {
        if (address != region.range().start()) return refuse(ERROR_INVALID_ADDRESS);
        pages = region.range();
    }
    if (!region.range().contains(pages)) return refuse(ERROR_INVALID_PARAMETER);
    const Reservation former = region;
    region.assign(pages, Reservation::kReservedOnly);
    // A new mapping in the old one's place: the memory itself goes back to the system.
    if (mapReserved(pages, MAP_FIXED) == MAP_FAILED) {
        region = former;
        return refuse(ERROR_NOT_ENOUGH_MEMORY);
    }
    reservations().changed();
    return TRUE;
} catch (const std::bad_alloc&) {
    return refuse(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL release(const Reservation& region, const void* address, SIZE_T size) {
    if (size != 0) return refuse(ERROR_INVALID_PARAMETER);
    const PageRange pages = region.range();
    if (address != pages.start()) return refuse(ERROR_INVALID_ADDRESS);
    if (::munmap(pages.start(), pages.size()) != 0) return refuse(ERROR_NOT_ENOUGH_MEMORY);
    reservations().remove(region);
    return TRUE;
}

// Memory that is not from VirtualAlloc: the machine knows its protection, but nothing keeps a guard of it.
BOOL protectForeign(const PageRange& pages, DWORD protect, DWORD& former) {
    if (!readMapped(pages, former)) return refuse(ERROR_INVALID_ADDRESS);
    if ((protect & PAGE_GUARD) != 0) return refuse(ERROR_INVALID_PARAMETER);
    if (reservations().clip(pages, pages.begin).end != pages.end) return refuse(ERROR_INVALID_ADDRESS);
    if (!protectPages(pages, protect)) return refuse(ERROR_ACCESS_DENIED);
    reservations().changed();
    return TRUE;
}

BOOL protectRegion(const PageRange& pages, DWORD protect, DWORD& former) try {
    const std::lock_guard lock(reservations().mutex);
    Reservation* region = reservations().find(pages.begin);
    if (region == nullptr) return protectForeign(pages, protect, former);
    if (!region->range().contains(pages) || !region->allCommitted(pages))
        return refuse(ERROR_INVALID_ADDRESS);
    former = region->protectionAt(pages.begin);
    return assignPages(*region, pages, protect) ? TRUE : refuse(ERROR_NOT_ENOUGH_MEMORY);
} catch (const std::bad_alloc&) {
    return refuse(ERROR_NOT_ENOUGH_MEMORY);
}

}  // namespace
}  // namespace kor

using namespace kor;

LPVOID WINAPI VirtualAlloc(LPVOID address, SIZE_T size, DWORD type, DWORD protect) {
    const bool known = (type & ~(kTransition | MEM_TOP_DOWN)) == 0 && (type & kTransition) != 0;
    if (!known || size == 0 || pagesOf(address, size).end == 0 || !isPageProtection(protect))
        return failWith(ERROR_INVALID_PARAMETER);
    const std::lock_guard lock(reservations().mutex);
    if (address == nullptr || (type & MEM_RESERVE) != 0) return reserve(address, size, type, protect);
    return commit(pagesOf(address, size), protect);
}

BOOL WINAPI VirtualFree(LPVOID address, SIZE_T size, DWORD type) {
    const std::lock_guard lock(reservations().mutex);
    Reservation* region = reservations().find(reinterpret_cast<std::uintptr_t>(address));
    if (region == nullptr) return refuse(ERROR_INVALID_PARAMETER);
    if (type == MEM_DECOMMIT) return decommit(*region, address, size);
    if (type == MEM_RELEASE) return release(*region, address, size);
    return refuse(ERROR_INVALID_PARAMETER);
}

BOOL WINAPI VirtualProtect(LPVOID address, SIZE_T size, DWORD protect, DWORD* former) {
    if (former == nullptr) return refuse(ERROR_NOACCESS);
    const PageRange pages = pagesOf(address, size);
    if (pages.size() == 0 || !isPageProtection(protect)) return refuse(ERROR_INVALID_PARAMETER);
    DWORD before = 0;
    if (!protectRegion(pages, protect, before)) return FALSE;
    *former = before;  // outside the lock: it may lie in a guarded page itself
    return TRUE;
}

BOOL WINAPI korTakeGuardPage(LPCVOID address) try {
    const std::lock_guard lock(reservations().mutex);
    const PageRange page = pagesOf(address, 1);
    Reservation* region = reservations().find(page.begin);
    if (region == nullptr) return FALSE;
    const DWORD protect = region->protectionAt(page.begin);
    if ((protect & PAGE_GUARD) == 0) return FALSE;
    return assignPages(*region, page, protect & ~PAGE_GUARD) ? TRUE : FALSE;
} catch (const std::bad_alloc&) {
    return FALSE;
}
