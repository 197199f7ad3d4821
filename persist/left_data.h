#pragma once
// Data that was left in a file belongs to that file only.

#include <cstdint>
#include <functional>
#include <string_view>

#include "korutil/framework/file.h"

namespace kor {

/// What a node remembers of the file that its data was left in: the object, and what it was open on, since it
/// may be opened again on something else, or another file may be made in its place.
inline std::uintptr_t fileMark(const CFile& file) {
    const CString path = file.GetFilePath();
    return reinterpret_cast<std::uintptr_t>(&file) ^ std::hash<std::string_view>()(static_cast<LPCSTR>(path));
}

}  // namespace kor
