#pragma once
// What the system does with faults: how it ends a process, and what it calls a trap of the SSE unit.
#include "platform/win32.h"

namespace kor::test {

/// For EXPECT_EXIT: whether the process died from the fault that has the given code.
class DiedFrom {
  public:
    explicit DiedFrom(DWORD code) : code_(code) {}
    bool operator()(int status) const;

  private:
    DWORD code_;
};

/// The code of a division trap of the SSE unit: 32-bit Windows has one code for all of that unit's traps.
extern const DWORD kSseDivisionCode;

}  // namespace kor::test
