#include "platform/posix/kernel/reservation.h"

#include <algorithm>
#include <cstddef>
#include <new>

namespace kor {

Reservation::Reservation(PageRange range, DWORD protect)
    : range_(range), allocationProtect_(protect), runs_{{range.begin, kReservedOnly}} {}

std::size_t Reservation::runAt(std::uintptr_t address) const {
    const auto after =
        std::upper_bound(runs_.begin(), runs_.end(), address,
                         [](std::uintptr_t value, const Run& run) { return value < run.begin; });
    return static_cast<std::size_t>(after - runs_.begin()) - 1;
}

std::uintptr_t Reservation::runEnd(std::size_t run) const {
    return run + 1 < runs_.size() ? runs_[run + 1].begin : range_.end;
}

DWORD Reservation::protectionAt(std::uintptr_t address) const { return runs_[runAt(address)].protect; }

PageRange Reservation::alikeFrom(std::uintptr_t address) const {
    return {roundDown(address, kPageSize), runEnd(runAt(address))};
}

bool Reservation::allCommitted(const PageRange& pages) const {
    for (std::size_t i = runAt(pages.begin); i < runs_.size() && runs_[i].begin < pages.end; ++i)
        if (runs_[i].protect == kReservedOnly) return false;
    return true;
}

void Reservation::assign(const PageRange& pages, DWORD protect) {
    std::vector<Run> runs;
    runs.reserve(runs_.size() + 2);
    const auto append = [&runs](const Run& run) {
        if (runs.empty() || runs.back().protect != run.protect) runs.push_back(run);
    };
    const DWORD behind = pages.end < range_.end ? protectionAt(pages.end) : kReservedOnly;
    for (const Run& run : runs_)
        if (run.begin < pages.begin) append(run);
    append({pages.begin, protect});
    if (pages.end < range_.end) append({pages.end, behind});
    for (const Run& run : runs_)
        if (run.begin > pages.end) append(run);
    runs_ = std::move(runs);
}

Reservation* ReservationTable::find(std::uintptr_t address) {
    auto after = regions_.upper_bound(address);
    if (after == regions_.begin()) return nullptr;
    Reservation& region = std::prev(after)->second;
    return region.range().contains(address) ? &region : nullptr;
}

void ReservationTable::add(PageRange range, DWORD protect) {
    regions_.emplace(range.begin, Reservation(range, protect));
    changed();
}

void ReservationTable::remove(const Reservation& reservation) {
    regions_.erase(reservation.range().begin);
    changed();
}

PageRange ReservationTable::clip(PageRange range, std::uintptr_t address) const {
    const auto after = regions_.upper_bound(address);
    if (after != regions_.end()) range.end = std::min(range.end, after->first);
    if (after != regions_.begin()) range.begin = std::max(range.begin, std::prev(after)->second.range().end);
    return range;
}

namespace {
// Outlives every other object's destructor, and needs no memory to begin with.
alignas(ReservationTable) std::byte tableStorage[sizeof(ReservationTable)];
}  // namespace

ReservationTable& reservations() {
    static ReservationTable& table = *new (tableStorage) ReservationTable;
    return table;
}

}  // namespace kor
