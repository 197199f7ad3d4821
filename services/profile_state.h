#pragma once
// The names of the two profiles, and where the last value was found.

#include <array>
#include <cstddef>
#include <string_view>

#include "platform/win32.h"

namespace kor {

inline constexpr std::size_t kProfileNameRoom = MAX_PATH;  // of a name with its terminator

using ProfileName = std::array<char, kProfileNameRoom>;

struct ProfileState {
    ProfileName application{};
    ProfileName user{};
    bool sameFile = true;
    bool foundInUser = false;
};

ProfileState& profileState();

/// A selector taken apart.
class ProfileSelector {
  public:
    /// @param zero  what selector 0 stands for
    ProfileSelector(UINT_PTR selector, UINT_PTR zero);

    UINT_PTR number() const { return number_; }

    /// The caller's own file, null for the profiles.
    const char* file() const;
    bool user() const;
    bool application() const;

  private:
    UINT_PTR number_;
};

ProfileSelector readSelector(UINT_PTR selector);
ProfileSelector writeSelector(UINT_PTR selector);

/// Whether `text` begins with `start`, without regard to case.
bool startsWithoutCase(std::string_view text, std::string_view start);

}  // namespace kor
