#pragma once
// What of a value's text counts as a number.

#include <string_view>

namespace kor::profile {

/// Whether all of a text is a number as settings have it.
bool isNumber(std::string_view text);

/// Whether all of a text is numbers joined by commas.
bool areNumbers(std::string_view text);

/// Whether all of a text is a whole number of 32 bits.
bool isWhole32(std::string_view text);

}  // namespace kor::profile
