#include "runtime/integer_text.h"

#include <charconv>
#include <cstring>
#include <limits>

namespace kor {

LONG integerValue(const char* text) {
    text += std::strspn(text, " \t\n\v\f\r");
    if (text[0] == '+' && text[1] != '-') ++text;
    LONG value = 0;
    const auto read = std::from_chars(text, text + std::strlen(text), value);
    if (read.ec != std::errc::result_out_of_range) return value;
    return *text == '-' ? std::numeric_limits<LONG>::min() : std::numeric_limits<LONG>::max();
}

}  // namespace kor
