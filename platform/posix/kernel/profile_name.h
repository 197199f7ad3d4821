#pragma once
// Names of sections and keys, compared without regard to case.

#include <cstdint>
#include <string_view>

#include "platform/posix/kernel/code_page.h"

namespace kor {

/// The same for names that isSameProfileName takes for one; differs from process to process, so that no file
/// can be made whose names all collide.
std::uint32_t profileNameHash(std::string_view name, const CodePage& page);

/// Whether two names in one code page differ in nothing but case.
bool isSameProfileName(std::string_view first, std::string_view second, const CodePage& page);

}  // namespace kor
