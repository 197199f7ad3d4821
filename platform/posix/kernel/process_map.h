#pragma once
// The memory of this process as the system tells it, in blocks and regions.

#include <vector>

#include "platform/posix/kernel/reservation.h"

namespace kor {

/// A block of alike pages outside our own reservations.
struct MemoryBlock {
    PageRange pages;
    std::uintptr_t region;  // 0: free
    DWORD allocationProtect;
    DWORD state;
    DWORD protect;
    DWORD type;
};

/// The blocks of the region that holds an address, or the one free block there; read from the process map at
/// once. Empty when the map cannot be read. Our own reservations are not known here.
std::vector<MemoryBlock> readRegion(std::uintptr_t address);

/// Whether all pages of a range are mapped; `protect` then receives the protection of the first.
bool readMapped(const PageRange& pages, DWORD& protect);

}  // namespace kor
