#pragma once
// Calls with the last error seeded before, so that a test sees whether the call set it.

#include <gtest/gtest.h>

#include "platform/win32.h"

namespace kor::test {

inline constexpr DWORD kSeed = 0xBADF00D;

/// The last error that `call` leaves; kSeed when it left it alone.
template <typename Call>
DWORD errorAfter(Call&& call) {
    SetLastError(kSeed);
    call();
    return GetLastError();
}

/// Whether a call gives a result and then leaves a last error.
template <class Call, class Result>
testing::AssertionResult gives(Call call, Result expected, DWORD error) {
    SetLastError(kSeed);
    const auto result = call();
    const DWORD left = GetLastError();
    if (result == expected && left == error) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "result " << testing::PrintToString(result) << " instead of "
           << testing::PrintToString(expected) << ", last error " << left << " instead of " << error;
}

/// Whether a call gives 0, FALSE or null, and then leaves this last error.
#define EXPECT_FAILS(error, ...) EXPECT_TRUE(kor::test::fails([&] { return __VA_ARGS__; }, error))
template <class Call>
testing::AssertionResult fails(Call call, DWORD error) {
    return gives(call, decltype(call()){}, error);
}

/// A file handle that is closed at the end of the test.
class File {
  public:
    explicit File(HANDLE handle) : handle_(handle) {}
    File(const char* path, DWORD access, DWORD share, DWORD disposition, DWORD flags = 0) : handle_(nullptr) {
        SetLastError(kSeed);
        handle_ = CreateFileA(path, access, share, nullptr, disposition, flags, nullptr);
        error_ = GetLastError();
    }
    ~File() { close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void close() {
        if (isOpen()) CloseHandle(handle_);
        handle_ = INVALID_HANDLE_VALUE;
    }
    bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

    /// What opening left as the last error.
    DWORD error() const { return error_; }

  private:
    HANDLE handle_;
    DWORD error_ = 0;
};

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

}  // namespace kor::test
