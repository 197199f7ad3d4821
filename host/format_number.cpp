#include "host/format_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kor {
namespace {

constexpr int kDefaultPrecision = 6;

void makeCapital(std::span<char> text) {
    for (char& each : text) {
        if (each >= 'a' && each <= 'z') each = static_cast<char>(each - 'a' + 'A');
    }
}

std::size_t write(double value, std::chars_format form, int precision, std::span<char> room) {
    const auto end = std::to_chars(room.data(), room.data() + room.size(), value, form, precision).ptr;
    return static_cast<std::size_t>(end - room.data());
}

// The exponent that a number has when it is rounded to so many significant digits.
int roundedExponent(double value, int digits, std::span<char> room) {
    const std::size_t length = write(value, std::chars_format::scientific, digits - 1, room);
    const char* mark = std::find(room.data(), room.data() + length, 'e') + 1;
    int exponent = 0;
    std::from_chars(*mark == '+' ? mark + 1 : mark, room.data() + length, exponent);
    return exponent;
}

// Fixed or exponent form with a fixed number of decimals; '#' keeps the point when there are none.
NumberText withDecimals(double value, std::chars_format form, int decimals, bool keepPoint,
                        std::span<char> room) {
    const int written = std::min(decimals, kMostDecimals);
    std::size_t length = write(value, form, written, room.first(room.size() - 1));
    char* mark = std::find(room.data(), room.data() + length, 'e');
    if (decimals == 0 && keepPoint) {
        std::copy_backward(mark, room.data() + length, room.data() + length + 1);
        *mark++ = '.';
        ++length;
    }
    const auto head = static_cast<std::size_t>(mark - room.data());
    return {{room.data(), head}, decimals - written, {mark, length - head}};
}

NumberText general(double value, int precision, bool keepZeros, std::span<char> room) {
    const int digits = std::max(precision, 1);
    if (!keepZeros) {
        const std::size_t length =
            write(value, std::chars_format::general, std::min(digits, kMostDecimals), room);
        return {{room.data(), length}, 0, {}};
    }
    const int exponent = roundedExponent(value, std::min(digits, kMostDecimals), room);
    if (exponent < -4 || exponent >= digits) {
        return withDecimals(value, std::chars_format::scientific, digits - 1, true, room);
    }
    return withDecimals(value, std::chars_format::fixed, digits - 1 - exponent, true, room);
}

NumberText byKind(double value, const Conversion& conversion, std::span<char> room) {
    const int precision = conversion.precision < 0 ? kDefaultPrecision : conversion.precision;
    switch (conversion.kind) {
        case 'e':
        case 'E':
            return withDecimals(value, std::chars_format::scientific, precision, conversion.alternate, room);
        case 'f':
        case 'F':
            return withDecimals(value, std::chars_format::fixed, precision, conversion.alternate, room);
        default:
            return general(value, precision, conversion.alternate, room);
    }
}

}  // namespace

std::string_view integerDigits(std::uint64_t value, char kind, std::span<char> room) {
    const int base = kind == 'o' ? 8 : kind == 'x' || kind == 'X' ? 16 : 10;
    const auto end = std::to_chars(room.data(), room.data() + room.size(), value, base).ptr;
    const auto length = static_cast<std::size_t>(end - room.data());
    if (kind == 'X') makeCapital(room.first(length));
    return {room.data(), length};
}

NumberText doubleDigits(double value, const Conversion& conversion, std::span<char> room) {
    const bool capital = conversion.kind >= 'A' && conversion.kind <= 'Z';
    if (std::isnan(value)) return {capital ? "NAN" : "nan", 0, {}};
    if (std::isinf(value)) return {capital ? "INF" : "inf", 0, {}};
    const NumberText text = byKind(std::fabs(value), conversion, room);
    if (capital) makeCapital(room.first(text.head.size() + text.tail.size()));
    return text;
}

}  // namespace kor
