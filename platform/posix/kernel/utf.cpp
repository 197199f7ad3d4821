#include "platform/posix/kernel/utf.h"

#include "platform/posix/kernel/letter_case.h"

namespace kor {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr unsigned byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

// What a lead byte promises: the number of bytes and the bounds of the second one.
struct Lead {
    std::size_t length;
    unsigned secondFirst;
    unsigned secondLast;
};

constexpr Lead leadOf(unsigned byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, 0xBF};
    if (byte == 0xE0) return {3, 0xA0, 0xBF};
    if (byte == 0xED) return {3, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {3, 0x80, 0xBF};
    if (byte == 0xF0) return {4, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3) return {4, 0x80, 0xBF};
    if (byte == 0xF4) return {4, 0x80, 0x8F};
    return {0, 0, 0};
}

}  // namespace

Decoded decodeUtf8(std::string_view text) {
    const unsigned first = byteAt(text, 0);
    if (first < 0x80) return {first, 1, true};
    const Lead lead = leadOf(first);
    if (lead.length == 0) return {kReplacement, 1, false};
    char32_t character = first & (0x7Fu >> lead.length);
    for (std::size_t index = 1; index < lead.length; ++index) {
        if (index >= text.size()) return {kReplacement, index, false};
        const unsigned byte = byteAt(text, index);
        const bool second = index == 1;
        if (byte < (second ? lead.secondFirst : 0x80u) || byte > (second ? lead.secondLast : 0xBFu)) {
            return {kReplacement, index, false};
        }
        character = (character << 6) | (byte & 0x3F);
    }
    return {character, lead.length, true};
}

Decoded decodeUtf16(std::u16string_view text) {
    const char32_t first = text[0];
    if (first < 0xD800 || first > 0xDFFF) return {first, 1, true};
    if (first > 0xDBFF || text.size() < 2 || text[1] < 0xDC00 || text[1] > 0xDFFF)
        return {kReplacement, 1, false};
    return {0x10000 + ((first - 0xD800) << 10) + (text[1] - 0xDC00u), 2, true};
}

std::size_t encodeUtf8(char32_t character, char* bytes) {
    const auto tail = [character](int shift) {
        return static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        bytes[0] = static_cast<char>(character);
        return 1;
    }
    if (character < 0x800) {
        bytes[0] = static_cast<char>(0xC0 | (character >> 6));
        bytes[1] = tail(0);
        return 2;
    }
    if (character < 0x10000) {
        bytes[0] = static_cast<char>(0xE0 | (character >> 12));
        bytes[1] = tail(6);
        bytes[2] = tail(0);
        return 3;
    }
    bytes[0] = static_cast<char>(0xF0 | (character >> 18));
    bytes[1] = tail(12);
    bytes[2] = tail(6);
    bytes[3] = tail(0);
    return 4;
}

std::size_t encodeUtf16(char32_t character, char16_t* units) {
    if (character < 0x10000) {
        units[0] = static_cast<char16_t>(character);
        return 1;
    }
    units[0] = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
    units[1] = static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    return 2;
}

std::optional<std::u16string> utf16FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Decoded next = decodeUtf8(text);
        if (!next.valid) return std::nullopt;
        char16_t units[2];
        result.append(units, encodeUtf16(next.character, units));
        text.remove_prefix(next.length);
    }
    return result;
}

std::optional<std::string> utf8FromUtf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Decoded next = decodeUtf16(text);
        if (!next.valid) return std::nullopt;
        char bytes[4];
        result.append(bytes, encodeUtf8(next.character, bytes));
        text.remove_prefix(next.length);
    }
    return result;
}

std::string foldedName(std::string_view utf8) {
    std::string result;
    result.reserve(utf8.size());
    while (!utf8.empty()) {
        const Decoded next = decodeUtf8(utf8);
        if (next.valid && next.character < 0x10000) {
            char bytes[4];
            result.append(bytes, encodeUtf8(upperCase(static_cast<char16_t>(next.character)), bytes));
        } else {
            result.append(utf8.substr(0, next.length));
        }
        utf8.remove_prefix(next.length);
    }
    return result;
}

}  // namespace kor
