#pragma once
// What VirtualAlloc reserved: regions, and which of their pages are committed with which protection.

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "korutil/platform/memory.h"

namespace kor {

inline constexpr std::uintptr_t kPageSize = 4096;
inline constexpr std::uintptr_t kGranularity = 65536;
inline constexpr std::uintptr_t kLowestAddress = kGranularity;
inline constexpr std::uintptr_t kAddressEnd = 0x7FFFFFFF0000;  // of what a process can use

constexpr std::uintptr_t roundDown(std::uintptr_t value, std::uintptr_t unit) { return value / unit * unit; }
constexpr std::uintptr_t roundUp(std::uintptr_t value, std::uintptr_t unit) {
    return roundDown(value + unit - 1, unit);
}

struct PageRange {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;

    std::size_t size() const { return end - begin; }
    void* start() const { return reinterpret_cast<void*>(begin); }
    bool contains(std::uintptr_t address) const { return begin <= address && address < end; }
    bool contains(const PageRange& other) const { return begin <= other.begin && other.end <= end; }
};

/// One region. Its pages are kept as runs of pages that are alike.
class Reservation {
  public:
    static constexpr DWORD kReservedOnly = 0;

    Reservation(PageRange range, DWORD protect);

    const PageRange& range() const { return range_; }
    DWORD allocationProtect() const { return allocationProtect_; }

    /// The protection of a page, or kReservedOnly.
    DWORD protectionAt(std::uintptr_t address) const;
    /// From the page that holds the address to the last one like it.
    PageRange alikeFrom(std::uintptr_t address) const;
    bool allCommitted(const PageRange& pages) const;
    /// Gives pages a protection, or takes them back to reserved. May throw std::bad_alloc and changes nothing
    /// then.
    void assign(const PageRange& pages, DWORD protect);

  private:
    struct Run {
        std::uintptr_t begin;
        DWORD protect;
    };
    std::size_t runAt(std::uintptr_t address) const;
    std::uintptr_t runEnd(std::size_t run) const;

    PageRange range_;
    DWORD allocationProtect_;
    std::vector<Run> runs_;  // ordered; neighbours differ
};

/// The table of all regions. Its lock is held by whoever uses it.
class ReservationTable {
  public:
    std::mutex mutex;

    /// The region that holds an address, or null.
    Reservation* find(std::uintptr_t address);
    void add(PageRange range, DWORD protect);
    void remove(const Reservation& reservation);
    /// What remains of a range around an address (in no region of ours) when our regions are cut off.
    PageRange clip(PageRange range, std::uintptr_t address) const;

    /// Counts the changes: what was told of the process map before is then no longer relied upon.
    unsigned changes() const { return changes_; }
    void changed() { ++changes_; }

  private:
    std::map<std::uintptr_t, Reservation> regions_;  // by their start
    unsigned changes_ = 0;
};

ReservationTable& reservations();

}  // namespace kor
