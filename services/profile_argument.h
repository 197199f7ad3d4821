#pragma once
// Names given as texts or as numbers of string resources.

#include <span>

#include "platform/win32.h"

namespace kor {

enum class NameRole { section, key, defaultText };

/// Resolves a name. A text that is loaded stays in the role's one buffer until the role's next one is.
/// @param module  null for the module that the library takes its texts from
/// @param name    a text, a number or null; becomes the text
/// @return false when the text of a number cannot be loaded
bool resolveName(const char*& name, NameRole role, HINSTANCE module);

/// The same into a buffer of the caller's.
bool resolveInto(const char*& name, HINSTANCE module, std::span<char> buffer);

}  // namespace kor
