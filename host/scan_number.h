#pragma once
// Numbers at the beginning of a text, for the scanner.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kor {

/// The integer at the beginning of a text, by a conversion's letter: d u decimal, o octal, x X p hexadecimal
/// (with or without 0x), i by its prefix. Digits that do not fit into 64 bits are lost at the upper end.
/// @return characters used; 0 when there is no integer
std::size_t scanInteger(std::string_view text, char kind, std::uint64_t& value);

/// The decimal floating-point number at the beginning of a text.
/// @return characters used; 0 when there is no number
std::size_t scanDouble(std::string_view text, double& value);

}  // namespace kor
