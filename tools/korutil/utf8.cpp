#include "tools/korutil/utf8.h"

namespace kor::utf8 {
namespace {

unsigned char byteAt(std::string_view text, std::size_t offset) {
    return offset < text.size() ? static_cast<unsigned char>(text[offset]) : 0;
}

}  // namespace

Character at(std::string_view text, std::size_t offset) {
    if (offset >= text.size()) return {};
    const unsigned char first = byteAt(text, offset);
    if (first < 0x80) return {first, 1};
    std::size_t length = 0;
    char32_t code = 0;
    char32_t least = 0;
    if ((first & 0xE0) == 0xC0) {
        length = 2, code = first & 0x1Fu, least = 0x80;
    } else if ((first & 0xF0) == 0xE0) {
        length = 3, code = first & 0x0Fu, least = 0x800;
    } else if ((first & 0xF8) == 0xF0) {
        length = 4, code = first & 0x07u, least = 0x10000;
    } else {
        return {};
    }
    for (std::size_t i = 1; i < length; ++i) {
        const unsigned char next = byteAt(text, offset + i);
        if ((next & 0xC0) != 0x80) return {};
        code = code << 6 | (next & 0x3Fu);
    }
    if (code < least || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return {};
    return {code, length};
}

bool isValid(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const Character character = at(text, i);
        if (character.length == 0) return false;
        i += character.length;
    }
    return true;
}

std::size_t count(std::string_view text) {
    std::size_t characters = 0;
    for (const char c : text)
        characters += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return characters;
}

void append(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    const unsigned mark = more == 1 ? 0xC0u : more == 2 ? 0xE0u : 0xF0u;
    out += static_cast<char>(mark | static_cast<unsigned>(code >> (6 * more)));
    for (int i = more - 1; i >= 0; --i)
        out += static_cast<char>(0x80u | ((code >> (6 * i)) & 0x3Fu));
}

}  // namespace kor::utf8
