#pragma once
// Fonts as drawing objects.

#include "korutil/platform.h"

namespace kor {

/// @return whether the object was a font, which is gone now
bool deleteFont(HGDIOBJ object);

}  // namespace kor
