#pragma once
// The longest text that the system's initialisation files take.

#include <cstddef>
#include <cstdint>

namespace kor {

#ifdef _WIN32
/// Of a section's name, a key's and a value each. Systems have been seen to fail, or to lose what they were
/// given, at 32768 characters with the terminator and more.
inline constexpr std::size_t kLongestProfileText = 32766;
#else
inline constexpr std::size_t kLongestProfileText = SIZE_MAX;
#endif

}  // namespace kor
