#pragma once
// What the functions of the library that stands in for the maker's answer, and how a test holds it loaded.

#include "platform/win32.h"

inline constexpr int kMakerResult = 4711;

namespace kor::test {

/// Keeps a library loaded that lies beside the test program.
class MakerLibrary {
  public:
    explicit MakerLibrary(const char* name) : module_(LoadLibraryA(name)) {}
    ~MakerLibrary() { FreeLibrary(module_); }
    MakerLibrary(const MakerLibrary&) = delete;
    MakerLibrary& operator=(const MakerLibrary&) = delete;

    bool loaded() const { return module_ != nullptr; }

  private:
    HMODULE module_;
};

}  // namespace kor::test
