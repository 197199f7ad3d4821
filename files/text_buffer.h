#pragma once
// Handing a text over in a caller's buffer, whole or not at all.

#include <cstring>
#include <string_view>

#include "korutil/platform.h"

namespace kor {

/// @param text  may lie in the buffer
/// @return 1; 0, and the buffer untouched, when the text with its terminator does not fit
inline int copyWhole(std::string_view text, char* buffer, DWORD size) {
    if (!buffer || text.size() >= size) return 0;
    std::memmove(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return 1;
}

}  // namespace kor
