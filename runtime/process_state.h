#pragma once
// The process-wide state on which the whole library stands. It knows no other part of the library.

#include "platform/win32.h"

namespace kor {

inline constexpr const char* kFirstCaption = "Lumetra";

struct ProcessState {
    HINSTANCE library = nullptr;          // this library's own module
    HINSTANCE host = nullptr;             // the host executable
    HINSTANCE resources = nullptr;        // set by utlSetResourceHandle; null until then
    const char* caption = kFirstCaption;  // of every warning; kept by pointer
    HWND mainWindow = nullptr;            // from utlInitDLL2
    HCURSOR cursor = nullptr;             // cursor 105, from utlInitDLL1 on
    int displayHook = 0;                  // non-zero while hook 14061 is registered
};

ProcessState& processState();

/// The module that the library's own texts come from: the one set by the host, else the library itself.
HINSTANCE resourceModule();

}  // namespace kor
