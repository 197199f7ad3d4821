#pragma once
// UTF-8 and UTF-16, one character at a time. Overlong forms, surrogates in UTF-8 and values past U+10FFFF are
// invalid.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kor {

struct Decoded {
    char32_t character;  ///< U+FFFD when invalid
    std::size_t length;  ///< units consumed, at least 1
    bool valid;
};

/// @param text  not empty; of an invalid sequence the longest start of a valid one is consumed
Decoded decodeUtf8(std::string_view text);
Decoded decodeUtf16(std::u16string_view text);

/// @param bytes  receives up to 4 bytes. @return their number
std::size_t encodeUtf8(char32_t character, char* bytes);

/// @param units  receives up to 2 units. @return their number
std::size_t encodeUtf16(char32_t character, char16_t* units);

/// Nothing when the text is invalid anywhere.
std::optional<std::u16string> utf16FromUtf8(std::string_view text);
std::optional<std::string> utf8FromUtf16(std::u16string_view text);

/// In the case that file names are compared in; invalid bytes stay as they are.
std::string foldedName(std::string_view utf8);

}  // namespace kor
