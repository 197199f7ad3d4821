#include "tools/korutil/profile_number.h"

#include <algorithm>
#include <charconv>

#include "korutil/platform.h"

namespace kor::profile {
namespace {

// Digits of a number's part; how many there are.
std::size_t digitsAt(std::string_view text, std::size_t start) {
    const std::size_t end = text.find_first_not_of("0123456789", start);
    return std::min(end, text.size()) - std::min(start, text.size());
}

}  // namespace

bool isNumber(std::string_view text) {
    std::size_t at = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
    for (const std::string_view special : {"1.#INF", "1.#QNAN", "1.#SNAN", "1.#IND"}) {
        if (text.substr(at) == special) return true;
    }
    const std::size_t whole = digitsAt(text, at);
    at += whole;
    std::size_t fraction = 0;
    if (text.substr(at).starts_with('.')) fraction = digitsAt(text, ++at);
    at += fraction;
    if (whole + fraction == 0) return false;
    if (at == text.size()) return true;
    if (text[at] != 'e' && text[at] != 'E') return false;
    if (++at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    const std::size_t exponent = digitsAt(text, at);
    return exponent > 0 && at + exponent == text.size();
}

bool areNumbers(std::string_view text) {
    for (;;) {
        const std::size_t comma = text.find(',');
        if (!isNumber(text.substr(0, comma))) return false;
        if (comma == std::string_view::npos) return true;
        text.remove_prefix(comma + 1);
    }
}

bool isWhole32(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with("-+")) return false;
    LONG value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && rest == text.data() + text.size();
}

}  // namespace kor::profile
