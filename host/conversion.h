#pragma once
// One conversion of a format ("%-08.3lf"), as the formatter and the scanner read it.

#include <cstdint>

namespace kor {

/// How wide an integer is. `l` means 32 bits on every target.
enum class IntegerSize : std::uint8_t { k8 = 1, k16 = 2, k32 = 4, k64 = 8 };

struct Conversion {
    static constexpr int kNone = -1;
    static constexpr int kFromArgument = -2;
    static constexpr int kLargest = 1 << 20;  // of a width or precision; larger numbers count as this

    bool left = false;       // '-'
    bool plus = false;       // '+'
    bool blank = false;      // ' '
    bool alternate = false;  // '#'
    bool zero = false;       // '0'
    int width = kNone;
    int precision = kNone;
    IntegerSize size = IntegerSize::k32;
    bool isLong = false;  // 'l', which for the scanner's floating-point numbers means a double
    char kind = 0;        // the letter; 0 when it was refused
};

/// Reads the conversion behind a '%' of a formatter's format.
/// @param format  where it begins; moved behind it
/// @return a conversion of kind 0 when there is no valid one (an unknown letter, %n, a size that does not go
/// with
///         the letter)
Conversion readConversion(const char*& format);

/// Reads a size (hh h l ll I I32 I64 j t z) and moves `format` behind it.
/// @return whether one was there
bool readSize(const char*& format, Conversion& conversion);

/// Reads digits as a number of at most kLargest and moves `format` behind them; kNone when there are none.
int readCount(const char*& format);

/// Whether a format can be given these arguments: it is valid and its conversions take, in order, no more and
/// no other arguments than listed. For formats that come from a resource module.
/// @param arguments  one letter each: i a 32-bit integer, l a 64-bit integer, d a double, s a text, p a
/// pointer
bool formatTakes(const char* format, const char* arguments);

}  // namespace kor
