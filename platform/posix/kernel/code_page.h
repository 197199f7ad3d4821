#pragma once
// What every code page can do.

#include <cstddef>
#include <string_view>

#include "korutil/platform.h"

namespace kor {

class CodePage {
  public:
    virtual ~CodePage() = default;

    struct Character {
        char32_t character;
        std::size_t length;  ///< bytes consumed, at least 1
        bool valid;          ///< else `character` is the page's replacement
    };

    /// Takes the first character of a text that is not empty.
    virtual Character decode(std::string_view text) const = 0;

    /// @param bytes  receives up to 4 bytes. @return their number, 0 when the page lacks the character
    virtual std::size_t encode(char32_t character, char* bytes) const = 0;
    virtual bool isLeadByte(unsigned char byte) const = 0;
};

}  // namespace kor
