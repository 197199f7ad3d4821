#include "host/scan_number.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace kor {
namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// A digit's value in any base up to 16; 16 for what is none.
unsigned digitOf(char character) {
    if (isDigit(character)) return static_cast<unsigned>(character - '0');
    if (character >= 'a' && character <= 'f') return static_cast<unsigned>(character - 'a' + 10);
    if (character >= 'A' && character <= 'F') return static_cast<unsigned>(character - 'A' + 10);
    return 16;
}

bool isSign(std::string_view text, std::size_t at) {
    return at < text.size() && (text[at] == '-' || text[at] == '+');
}

std::size_t skipDigits(std::string_view text, std::size_t at) {
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at;
}

// Behind the number that begins at `at`, with the exponent only when that has digits; `at` when there is
// none.
std::size_t endOfDecimal(std::string_view text, std::size_t at) {
    const std::size_t point = skipDigits(text, at);
    std::size_t end = point;
    if (end < text.size() && text[end] == '.') end = skipDigits(text, end + 1);
    if (end - at == (end > point ? 1u : 0u)) return at;  // no digit at all
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        const std::size_t digits = end + 1 + (isSign(text, end + 1) ? 1 : 0);
        const std::size_t behind = skipDigits(text, digits);
        if (behind > digits) return behind;
    }
    return end;
}

// Whether a number that a double cannot hold is too large rather than too small.
bool isHuge(std::string_view number) {
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, mark);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::size_t first = std::min(digits.find_first_of("123456789"), digits.size());
    if (mark + 1 >= number.size()) return first < point;
    const std::string_view exponent = number.substr(mark + 1);
    std::int32_t power = 0;
    const char* begin = exponent.data() + (exponent.front() == '+' ? 1 : 0);
    if (std::from_chars(begin, exponent.data() + exponent.size(), power).ec ==
        std::errc::result_out_of_range) {
        return exponent.front() != '-';
    }
    return power + static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first) > 0;
}

}  // namespace

std::size_t scanInteger(std::string_view text, char kind, std::uint64_t& value) {
    const bool negative = isSign(text, 0) && text[0] == '-';
    std::size_t at = isSign(text, 0) ? 1 : 0;
    unsigned base = kind == 'o' ? 8 : kind == 'x' || kind == 'X' || kind == 'p' ? 16 : 10;
    const bool mayHavePrefix = base == 16 || kind == 'i';
    const bool hasZero = at < text.size() && text[at] == '0';
    const bool hasPrefix = mayHavePrefix && hasZero && at + 2 < text.size() &&
                           (text[at + 1] == 'x' || text[at + 1] == 'X') && digitOf(text[at + 2]) < 16;
    if (hasPrefix) {
        base = 16;
        at += 2;
    } else if (kind == 'i' && hasZero) {
        base = 8;
    }
    const std::size_t first = at;
    value = 0;
    for (; at < text.size() && digitOf(text[at]) < base; ++at) {
        value = value * base + digitOf(text[at]);
    }
    if (at == first) return 0;
    if (negative) value = 0 - value;
    return at;
}

std::size_t scanDouble(std::string_view text, double& value) {
    const std::size_t first = isSign(text, 0) ? 1 : 0;
    const std::size_t end = endOfDecimal(text, first);
    if (end == first) return 0;
    const std::string_view number = text.substr(first, end - first);
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        value = isHuge(number) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    if (first == 1 && text[0] == '-') value = -value;
    return end;
}

}  // namespace kor
