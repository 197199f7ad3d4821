#include "runtime/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "host/scan_number.h"

namespace kor {
namespace {

constexpr int kMostDigits = 17;
constexpr int kLeastFixedExponent = -4;
constexpr std::string_view kInfinity = "#INF";
constexpr std::string_view kNotANumber[] = {"#QNAN", "#SNAN", "#IND"};

bool isDigit(char character) { return character >= '0' && character <= '9'; }
bool isBlank(char character) { return character == ' ' || (character >= '\t' && character <= '\r'); }

// A text that grows in a room that holds it.
class Text {
  public:
    void add(char character) { room_[length_++] = character; }
    void add(std::string_view text) { length_ += text.copy(room_ + length_, text.size()); }
    void addZeros(int count) {
        for (; count > 0; --count)
            add('0');
    }
    std::string_view view() const { return {room_, length_}; }

  private:
    char room_[kNumberTextRoom + kMostDigits] = {};
    std::size_t length_ = 0;
};

void addFixed(Text& text, std::string_view digits, int exponent) {
    const auto count = static_cast<int>(digits.size());
    if (exponent < 0) {
        text.add("0.");
        text.addZeros(-exponent - 1);
        text.add(digits);
        return;
    }
    const auto whole = static_cast<std::size_t>(std::min(count, exponent + 1));
    text.add(digits.substr(0, whole));
    text.addZeros(exponent + 1 - count);
    if (whole == digits.size()) return;
    text.add('.');
    text.add(digits.substr(whole));
}

void addExponential(Text& text, std::string_view digits, int exponent) {
    text.add(digits.front());
    if (digits.size() > 1) {
        text.add('.');
        text.add(digits.substr(1));
    }
    text.add(exponent < 0 ? "e-" : "e+");
    const int size = std::abs(exponent);
    text.add(static_cast<char>('0' + size / 100));
    text.add(static_cast<char>('0' + size / 10 % 10));
    text.add(static_cast<char>('0' + size % 10));
}

void addFinite(Text& text, double magnitude, int digits) {
    char scientific[kNumberTextRoom];
    const auto written = std::to_chars(scientific, scientific + sizeof scientific, magnitude,
                                       std::chars_format::scientific, digits - 1);
    const std::string_view all(scientific, static_cast<std::size_t>(written.ptr - scientific));
    const std::size_t mark = all.find('e');
    char significant[kMostDigits];
    std::size_t count = 0;
    for (const char character : all.substr(0, mark)) {
        if (isDigit(character)) significant[count++] = character;
    }
    while (count > 1 && significant[count - 1] == '0')
        --count;
    int exponent = 0;
    const char* number = all.data() + mark + (all[mark + 1] == '+' ? 2 : 1);
    std::from_chars(number, written.ptr, exponent);
    const bool fixed = exponent >= kLeastFixedExponent && exponent < digits;
    (fixed ? addFixed : addExponential)(text, {significant, count}, exponent);
}

// The characters at the beginning of a text of which a decimal number may be made.
std::string_view numberCharacters(const char* text) { return {text, std::strspn(text, "0123456789+-.eE")}; }

// What stands behind "1." for a value that is no number; 0 when it is none.
std::size_t scanSpecial(std::string_view number, double& value) {
    const bool negative = number.starts_with('-');
    const std::string_view behind = number.substr(number.empty() || isDigit(number.front()) ? 0 : 1);
    if (!behind.starts_with("1.#")) return 0;
    const std::string_view kind = behind.substr(2);
    const auto used = [&](std::string_view word) { return number.size() - kind.size() + word.size(); };
    if (kind.starts_with(kInfinity)) {
        value = negative ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
        return used(kInfinity);
    }
    for (const std::string_view word : kNotANumber) {
        if (!kind.starts_with(word)) continue;
        value = std::numeric_limits<double>::quiet_NaN();
        return used(word);
    }
    return 0;
}

}  // namespace

std::size_t numberText(double value, int digits, std::span<char> out) {
    Text text;
    if (std::signbit(value) && !std::isnan(value)) text.add('-');
    if (std::isnan(value)) {
        text.add("1.#QNAN");
    } else if (std::isinf(value)) {
        text.add("1.#INF");
    } else {
        addFinite(text, std::fabs(value), std::clamp(digits, 1, kMostDigits));
    }
    const std::string_view written = text.view();
    const bool fits = written.size() < out.size();
    if (fits) written.copy(out.data(), written.size());
    if (!out.empty()) out[fits ? written.size() : 0] = '\0';
    return fits ? written.size() : 0;
}

double numberValue(const char* text, const char** end) {
    constexpr std::size_t kLongestSpecial = 8;  // "-1.#QNAN"
    const char* first = text;
    while (isBlank(*first))
        ++first;
    double value = 0;
    std::size_t used = scanSpecial({first, strnlen(first, kLongestSpecial)}, value);
    if (used == 0) used = scanDouble(numberCharacters(first), value);
    if (end) *end = used == 0 ? text : first + used;
    return value;
}

bool looksLikeNumber(const char* text) {
    if (*text == '+' || *text == '-') ++text;
    if (*text == '.') ++text;
    return isDigit(*text);
}

}  // namespace kor
