#pragma once
// Texts between the code page of the library (KORUTIL_CODEPAGE) and the UTF-8 of the command, without loss: a
// byte that the code page does not define is kept as itself and shown as \u00XX.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kor::code_page {

/// A character, or a byte that the code page does not define.
struct Unit {
    char32_t code = 0;
    bool isByte = false;
};

/// The unit that a text begins with, and the number of its bytes.
struct First {
    Unit unit;
    std::size_t length = 1;
};

/// @param bytes  not empty
First firstOf(std::string_view bytes);

/// Takes a text of the code page apart. Never fails.
std::vector<Unit> decode(std::string_view bytes);

/// Takes UTF-8 apart.
/// @param utf8     valid UTF-8
/// @param escaped  offsets of characters U+0080 to U+00FF that stand for the byte of that number where the
/// code
///                 page does not define that byte, ascending
std::vector<Unit> unitsOf(std::string_view utf8, const std::vector<std::size_t>& escaped);

/// Puts a text of the code page together.
/// @param unmappable  receives the first character that the code page cannot express
/// @return nothing when there is such a character
std::optional<std::string> encode(const std::vector<Unit>& units, char32_t& unmappable);

/// Whether a text comes back byte for byte from its units; two byte sequences of one character do not.
bool isFaithful(std::string_view bytes, const std::vector<Unit>& units);

/// Whether a text reads as these characters: a byte among them may join its neighbours to another character.
bool readsAs(std::string_view bytes, const std::vector<Unit>& units);

/// The units in double quotes, as JSON writes them.
std::string quoted(const std::vector<Unit>& units);

/// A text of the code page for messages; a byte that it does not define becomes the character of that number.
std::string toUtf8(std::string_view bytes);

/// UTF-8 into the code page. @throws Failure naming `where` and the character that cannot be expressed
std::string fromUtf8(std::string_view utf8, std::string_view where);

/// "U+20AC '€'", for messages.
std::string nameOf(char32_t code);

}  // namespace kor::code_page
