#pragma once
// Whole small files of the system.

#include <string>

namespace kor {

/// The contents of a file; as far as it can be read, and empty when it is not there.
std::string nativeText(const char* path);

}  // namespace kor
