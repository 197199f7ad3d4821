#pragma once
// The longest texts that the system's initialisation files take.

#include <cstddef>
#include <cstdint>

namespace kor {

#ifdef _WIN32
/// Of a section's name, a key's and a value each. Systems have been seen to fail, or to lose what they were
/// given, at 32768 characters with the terminator and more.
inline constexpr std::size_t kLongestProfileText = 32766;
/// Of all lines of a section that are written at once, with their zeros.
inline constexpr std::size_t kLongestProfileSection = 65535;
#else
inline constexpr std::size_t kLongestProfileText = SIZE_MAX;
inline constexpr std::size_t kLongestProfileSection = SIZE_MAX;
#endif

}  // namespace kor
