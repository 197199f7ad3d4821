#pragma once
// Text-or-resource arguments: a text, or the number (below 0x10000) of a string resource.

#include <span>

#include "korutil/platform.h"

namespace kor {

inline const char* textNumber(UINT id) { return MAKEINTRESOURCEA(id); }

/// Whether an argument is a number; null is neither.
inline bool isTextNumber(const char* textOrNumber) { return textOrNumber && IS_INTRESOURCE(textOrNumber); }

/// The text that an argument stands for: itself, or the string loaded into `buffer` (cut to it, terminated).
/// @param module  of the string; with null a number is no text
/// @return null when there is no text
const char* resolveText(const char* textOrNumber, HINSTANCE module, std::span<char> buffer);

/// One of the library's own texts, loaded into `buffer`.
/// @param arguments  what its conversions may take, as formatTakes has it; a text of a resource module that
/// asks
///                   for something else counts as missing. Null: it is not formatted
/// @return an empty text when it is missing
const char* loadOwnText(UINT id, std::span<char> buffer, const char* arguments = nullptr);

}  // namespace kor
