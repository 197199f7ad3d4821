#pragma once
// Texts of registry files, and the values made of them.

#include <string>
#include <string_view>

namespace kor {

/// Takes the text between quotes off a line that begins behind the first one, with the second one.
/// @return why it cannot be read, or null
const char* takeRegistryString(std::string_view& line, std::string& text);

/// Texts as the functions for the ANSI code page give them: a character that it lacks is a question mark.
std::string ansiFromUtf8(std::string_view utf8);

/// @param bytes  UTF-16, little-endian; an odd byte at the end does not count
std::string ansiFromUtf16Bytes(std::string_view bytes);

}  // namespace kor
