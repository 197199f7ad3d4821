#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/debugger_output.h"

namespace kor::test {
namespace {

// The platform looks at the environment when the first text is sent.
[[maybe_unused]] const bool isDebugging = setenv("KORUTIL_DEBUG", "1", 1) == 0;

}  // namespace

DebuggerOutput::DebuggerOutput() { testing::internal::CaptureStderr(); }

DebuggerOutput::~DebuggerOutput() { take(); }

std::string DebuggerOutput::take() {
    if (!listening_) return {};
    listening_ = false;
    return testing::internal::GetCapturedStderr();
}

}  // namespace kor::test
