#include <charconv>

#include "tools/korutil/json.h"

namespace kor::json {

void appendByteEscape(std::string& out, unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out += "\\u00";
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
}

void appendEscaped(std::string& out, std::string_view utf8) {
    constexpr std::string_view kSpecial = "\"\\\b\f\n\r\t";
    constexpr std::string_view kLetters = "\"\\bfnrt";
    for (const char c : utf8) {
        const std::size_t which = kSpecial.find(c);
        if (which != std::string_view::npos) {
            out += '\\';
            out += kLetters[which];
        } else if (static_cast<unsigned char>(c) < 0x20) {
            appendByteEscape(out, static_cast<unsigned char>(c));
        } else {
            out += c;
        }
    }
}

void appendString(std::string& out, std::string_view utf8) {
    out += '"';
    appendEscaped(out, utf8);
    out += '"';
}

void appendReal(std::string& out, double value) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.append(digits, end);
}

}  // namespace kor::json
