#pragma once
// The system's message boxes about missing media and files, held back for a while.

#include "platform/win32.h"

namespace kor {

inline constexpr UINT kNoErrorBoxes = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;

/// Sets the process's error mode while it lives; 0 keeps the current one.
class ErrorModeScope {
  public:
    explicit ErrorModeScope(UINT mode) : set_(mode != 0), former_(set_ ? SetErrorMode(mode) : 0) {}
    ErrorModeScope(const ErrorModeScope&) = delete;
    ErrorModeScope& operator=(const ErrorModeScope&) = delete;
    ~ErrorModeScope() {
        if (set_) SetErrorMode(former_);
    }

  private:
    bool set_;
    UINT former_;
};

}  // namespace kor
