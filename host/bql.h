#pragma once
// The bounded formatter and scanner that the library uses, under the names that the maker's library Bql gives
// them. They are Bql's when the process has it loaded, else the embedded host's (host/format.h, host/scan.h).

#include "korutil/platform.h"

namespace kor {

/// Formats into a buffer, which is always terminated; what does not fit is cut off.
/// @param size       of the buffer in characters
/// @param arguments  argument list (KORUTIL_ARGUMENTS, KorArgumentList)
/// @return characters written, without the terminator; 0 or less when formatting failed
int Bql_vszprintf(char* buffer, UINT size, const char* format, void* arguments);

/// Scans a text.
/// @param maxLength  at most so many characters of the text are looked at
/// @param arguments  argument list of pointers
/// @return how many values were stored
int Bql_vszscanf(const char* text, UINT maxLength, const char* format, void* arguments);

}  // namespace kor
