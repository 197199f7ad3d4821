#pragma once
// Windows within each other and beside each other. Everything here is called with the lock held.

#include "platform/posix/user/window_table.h"

namespace kor {

/// Puts a window among the children of another: below the sibling `above`, first when that is null.
void linkWindow(Window& window, Window& parent, Window* above);
void unlinkWindow(Window& window);

/// The sibling below which a window comes to stand when it goes to the top: topmost ones stay above the
/// others.
Window* lastAboveTop(const Window& window, const Window& parent);

/// @return whether `window` is `ancestor` or lies below it
bool isWithin(const Window* window, const Window& ancestor);

/// @return the outermost window around it that is not the desktop
Window& rootOf(Window& window);

/// Whether a window, with what is below it, can become another's child without lying too deep or in itself.
bool canBeWithin(const Window& window, const Window& parent);
/// The same for its owner.
bool canBeOwnedBy(const Window& window, const Window& owner);

/// Whether it and all around it have all the bits of the style, or none of them.
bool allHave(const Window& window, DWORD style);
bool noneHas(const Window& window, DWORD style);

/// The upper left corner on the screen.
POINT screenOrigin(const Window& window);

/// The nearest coordinate that there is.
LONG saturated(std::int64_t value);

}  // namespace kor
