#pragma once
// The drawing objects that all parts of the application share.

#include "platform/win32.h"

namespace kor {

inline constexpr WORD kStockObjectCount = 18;

/// Makes the object on first use. @return null for an index past the table
HGDIOBJ stockObject(WORD index);

/// Gives all objects back; they are made anew when asked for again. @return whether every one was released
bool releaseStockObjects();

}  // namespace kor
