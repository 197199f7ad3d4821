#include "platform/posix/kernel/profile_table.h"

#include <utility>

namespace kor {

bool ProfileTable::add(std::uint32_t hash, std::uint32_t position, std::size_t budget) {
    if ((used_ + 1) * 4 > places_.size() * 3 && !grow(budget)) return false;
    ++used_;
    constexpr std::size_t kMostProbes = 4096;
    return put({hash, position}) <= kMostProbes;
}

// @return how many places were in its way
std::size_t ProfileTable::put(Place added) {
    std::size_t at = added.hash & mask();
    std::size_t probes = 0;
    for (; places_[at].position != kNone; ++probes)
        at = (at + 1) & mask();
    places_[at] = added;
    return probes;
}

bool ProfileTable::grow(std::size_t budget) {
    constexpr std::size_t kSmallest = 16;
    const std::size_t size = places_.empty() ? kSmallest : places_.size() * 2;
    if ((size + places_.size()) * sizeof(Place) > budget) return false;
    std::vector<Place> former(size, Place{0, kNone});
    std::swap(former, places_);
    for (const Place& place : former) {
        if (place.position != kNone) put(place);
    }
    return true;
}

}  // namespace kor
