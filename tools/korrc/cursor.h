#pragma once
// Cursors of 32 x 32 points in black, white, transparent and inverse.

#include <string>
#include <vector>

#include "resource.h"

namespace korrc {

inline constexpr unsigned kCursorSide = 32;

struct Picture {
    unsigned x, y;  // the hot spot
    std::vector<std::string> rows;

    /// What is wrong with the picture, null when nothing is.
    const char* fault() const;
    /// The point's character; what is not drawn is transparent.
    char at(unsigned column, unsigned row) const;
};

Bytes cursorImage(const Picture& picture);
Bytes cursorGroup(unsigned image);

}  // namespace korrc
