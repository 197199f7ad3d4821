#pragma once
// Doubles as texts in settings: the same text on every target and in every locale.

#include <cstddef>
#include <span>

namespace kor {

inline constexpr int kSettingDigits = 15;           // of a double that is written
inline constexpr int kSingleSettingDigits = 14;     // of the helpers that write a single value
inline constexpr std::size_t kNumberTextRoom = 32;  // for any text that numberText writes

/// Writes a double with at most `digits` significant digits (1 to 17), terminated: in fixed form unless the
/// decimal exponent is below -4 or at least `digits`, without trailing zeros, without a trailing point, an
/// exponent with its sign and at least three digits (`5`, `0.1`, `1e+020`, `-0`). What is no number is
/// `1.#INF`, `-1.#INF` or `1.#QNAN`, which numberValue reads back.
/// @return the length without the terminator; 0, with an empty text, when it does not fit
std::size_t numberText(double value, int digits, std::span<char> out);

/// Reads the decimal number at the beginning of a text, behind blanks: strtod's grammar without its
/// hexadecimal numbers and its words, and the forms of other runtimes (`1.e+020`, `1.#INF`, `1.#QNAN`,
/// `-1.#IND`). What a double cannot hold becomes infinite or 0. Looks no further than the number.
/// @param end  receives the end of the number; `text` itself when there is none. May be null
/// @return the number, 0 when there is none
double numberValue(const char* text, const char** end);

/// Whether a text in settings is taken for a number: a digit, a point and a digit, or a sign and either of
/// them.
bool looksLikeNumber(const char* text);

}  // namespace kor
