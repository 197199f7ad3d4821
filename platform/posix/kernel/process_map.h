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

/// One entry of the process map.
struct MapEntry {
    PageRange pages;
    DWORD protect;
    unsigned device[2];
    unsigned long long file;  // 0: none
    bool mainStack;
};

/// The process map as it is now, in order of addresses; empty when it cannot be read.
std::vector<MapEntry> readProcessMap();

/// The blocks of the region that holds an address, or the one free block there. Empty when the map is. Our
/// own reservations are not known here.
std::vector<MemoryBlock> regionAt(const std::vector<MapEntry>& map, std::uintptr_t address);

/// Whether all pages of a range are mapped; `protect` then receives the protection of the first.
bool readMapped(const PageRange& pages, DWORD& protect);

}  // namespace kor
