#pragma once
// The library's own texts, as tests look for them.
#include <string>

#include "platform/win32.h"

namespace kor::test {

inline HMODULE ownLibrary() { return GetModuleHandleA("KorUtil.dll"); }

inline std::string ownText(UINT id) {
    char text[1024];
    return {text, static_cast<std::size_t>(LoadStringA(ownLibrary(), id, text, sizeof(text)))};
}

/// Path of a file in the folder of the test program.
inline std::string besideProgram(const char* name) {
    char path[MAX_PATH];
    const std::string program(path, GetModuleFileNameA(nullptr, path, sizeof(path)));
    return program.substr(0, program.find_last_of('\\') + 1) + name;
}

}  // namespace kor::test
