#pragma once
// The system's message texts.

#include "korutil/platform.h"

namespace kor {

/// The text of a code that this platform sets, ending in a line break; null for other codes.
const char* systemMessage(DWORD code);

}  // namespace kor
