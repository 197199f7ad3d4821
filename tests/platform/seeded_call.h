#pragma once
// Checks a platform call's result together with the last error that it leaves.

#include <gtest/gtest.h>

#include "platform/win32.h"

namespace kor::test {

inline constexpr DWORD kSeededError = 0xDEAD;

/// Whether a call gives a result and then leaves a last error, which is seeded before.
template <class Call, class Result>
testing::AssertionResult gives(Call call, Result expected, DWORD error) {
    SetLastError(kSeededError);
    const auto result = call();
    const DWORD left = GetLastError();
    if (result == expected && left == error) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "result " << testing::PrintToString(result) << " instead of "
           << testing::PrintToString(expected) << ", last error " << left << " instead of " << error;
}

}  // namespace kor::test
