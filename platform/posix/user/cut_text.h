#pragma once
// Texts of the ANSI code page that are cut, at whole characters.

#include <cstddef>
#include <string_view>

namespace kor {

/// @return where the character begins that the byte at `position` is part of; the text's size from its end on
std::size_t characterStart(std::string_view text, std::size_t position);

/// Copies what fits with a terminator into a buffer of that many bytes, nothing when there is none.
/// @return the length copied
int copyCut(std::string_view text, char* buffer, std::size_t size);

}  // namespace kor
