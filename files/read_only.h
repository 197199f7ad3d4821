#pragma once
// Removing what its read-only attribute protects.

#include "platform/win32.h"

namespace kor {

/// For what could not be removed with ERROR_ACCESS_DENIED: takes the read-only attribute away, if it was
/// that, and tries again. What a link leads to is never touched. What stays has its attribute back.
/// @param remove  DeleteFileA or RemoveDirectoryA
/// @return whether it is gone; if not, the last error tells why
bool removeReadOnly(const char* path, BOOL(WINAPI* remove)(LPCSTR));

}  // namespace kor
