#pragma once
// Integers as texts in settings.

#include "korutil/platform.h"

namespace kor {

/// Reads the decimal integer at the beginning of a text, behind blanks and a sign, as the runtime's atoi
/// does: 0 when there is none. What does not fit becomes the nearest integer that does.
LONG integerValue(const char* text);

}  // namespace kor
