#pragma once
// The system's wild cards: `*`, `?` and their meaning next to dots.

#include <string>
#include <string_view>

namespace kor {

/// Whether a component holds a wild card.
bool hasWildCard(std::string_view component);

class WildCard {
  public:
    /// @param pattern  one component, UTF-8
    explicit WildCard(std::string_view pattern);

    /// @param name  UTF-8. Time grows with the product of the lengths, no faster.
    bool matches(std::string_view name) const;

  private:
    std::u32string pattern_;
};

}  // namespace kor
