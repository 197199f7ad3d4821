#pragma once
// The double-byte code pages, read once from the C library's converters.

#include <memory>

#include "platform/posix/kernel/code_page.h"

namespace kor {

/// 932 and 936; null when the C library's converter is not installed.
std::unique_ptr<CodePage> japanesePage();
std::unique_ptr<CodePage> chinesePage();

}  // namespace kor
