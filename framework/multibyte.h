#pragma once
// Where characters begin and end in texts of the ANSI code page.

#include <cstddef>
#include <string_view>

namespace kor {

/// Whether every byte of the ANSI code page is a character.
bool oneBytePerCharacter();

/// Bytes of the first character of a text, 0 for an empty one. A lead byte that nothing follows, and a byte
/// that begins no character, count as characters of one byte.
std::size_t characterLength(std::string_view text);

}  // namespace kor
