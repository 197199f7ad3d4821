#pragma once
// UTF-8, one character at a time.

#include <cstddef>
#include <string>
#include <string_view>

namespace kor::utf8 {

/// One character and its length in bytes; length 0 marks bytes that are not UTF-8 (overlong forms, surrogates
/// and numbers past U+10FFFF included) or the end of the text.
struct Character {
    char32_t code = 0;
    std::size_t length = 0;
};

/// The character that begins at an offset.
Character at(std::string_view text, std::size_t offset);

/// Whether all of the text is UTF-8.
bool isValid(std::string_view text);

/// Number of characters of a valid text.
std::size_t count(std::string_view text);

/// Appends one character.
void append(std::string& out, char32_t code);

}  // namespace kor::utf8
