#pragma once
// How the platform's functions return a text into a caller's buffer.

#include <string_view>

#include "korutil/platform.h"

namespace kor {

/// Copies the text with a terminator when it fits.
/// @return the length without the terminator, or the size needed with it when the buffer is too small
DWORD textResult(std::string_view text, char* buffer, DWORD size);

/// The same for a UTF-8 text, in the code page; 0 with ERROR_NO_UNICODE_TRANSLATION when it cannot be
/// expressed.
DWORD utf8Result(std::string_view utf8, char* buffer, DWORD size);

}  // namespace kor
