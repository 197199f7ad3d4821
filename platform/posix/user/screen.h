#pragma once
// The screen that there is not.

#include "korutil/platform/window.h"

namespace kor {

constexpr RECT screenPlace() { return {0, 0, 1024, 768}; }

}  // namespace kor
