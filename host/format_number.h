#pragma once
// Digits of numbers for the formatter, without sign and padding.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "host/conversion.h"

namespace kor {

/// Room for any of the texts below: the largest double in fixed form with kMostDecimals decimals.
inline constexpr std::size_t kNumberRoom = 1536;

/// No double has more decimals than this that are not 0.
inline constexpr int kMostDecimals = 1100;

/// A number's text, in parts between which the formatter puts zeros: `zeros` of them stand between head and
/// tail.
struct NumberText {
    std::string_view head;
    int zeros = 0;
    std::string_view tail;
};

/// Digits of an integer by a conversion's letter (d i u o x X).
std::string_view integerDigits(std::uint64_t value, char kind, std::span<char> room);

/// Text of a floating-point number of any sign by a conversion (e E f F g G), its sign left out.
/// @param room  kNumberRoom characters
NumberText doubleDigits(double value, const Conversion& conversion, std::span<char> room);

}  // namespace kor
