#pragma once
// The data of the tag tree benchmark, and the peer that stores the same data in its own way.

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace kor::bench {

inline constexpr std::uint32_t kSections = 1000;
inline constexpr std::uint32_t kLeaves = 100;

enum class LeafKind { number, real, text, values };

struct Leaf {
    LeafKind kind;
    std::int32_t number = 0;
    double real = 0;
    std::string text{};
    std::array<double, 8> values{};
};

/// The leaves take turns in kind.
inline Leaf leafAt(std::uint32_t section, std::uint32_t leaf) {
    const double value = section * 0.37 + leaf;
    switch (leaf % 4) {
        case 0:
            return {LeafKind::number, static_cast<std::int32_t>(section * 1009 + leaf)};
        case 1:
            return {LeafKind::real, 0, value};
        case 2:
            return {LeafKind::text, 0, 0,
                    "parameter " + std::to_string(section) + " of " + std::to_string(leaf)};
        default:
            return {LeafKind::values,
                    0,
                    0,
                    {},
                    {value, -value, value / 3, 1 / (value + 1), 0, 1, 2, value * value}};
    }
}

class TreePeer {
  public:
    virtual ~TreePeer() = default;
    virtual void save() const = 0;
    /// Loads what was saved, and frees it.
    virtual void load() const = 0;
};

/// @return null when the peer is not installed
std::unique_ptr<TreePeer> makeTreePeer();

}  // namespace kor::bench
