#pragma once
// A hash table of positions in a text: eight bytes a place, and no other memory.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kor {

class ProfileTable {
  public:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    /// @param isSame  tells of a position whether it is the one that is looked for
    /// @return the position, or kNone
    template <typename IsSame>
    std::uint32_t find(std::uint32_t hash, IsSame&& isSame) const {
        if (places_.empty()) return kNone;
        for (std::size_t at = hash & mask();; at = (at + 1) & mask()) {
            const Place& place = places_[at];
            if (place.position == kNone) return kNone;
            if (place.hash == hash && isSame(place.position)) return place.position;
        }
    }

    /// Adds a position that find does not find, unless the table then needs more than `budget` bytes at any
    /// moment, or hashes collide as they never do by chance.
    bool add(std::uint32_t hash, std::uint32_t position, std::size_t budget);

    std::size_t bytes() const { return places_.capacity() * sizeof(Place); }
    void clear() { *this = ProfileTable(); }

  private:
    struct Place {
        std::uint32_t hash;
        std::uint32_t position;
    };

    std::size_t mask() const { return places_.size() - 1; }
    std::size_t put(Place added);
    bool grow(std::size_t budget);

    std::vector<Place> places_;  // a power of two of them, or none
    std::size_t used_ = 0;
};

}  // namespace kor
