// Our own message texts; other systems lack some of them.
#include <gtest/gtest.h>

#include "last_error_codes.h"
#include "platform/win32.h"

TEST(FormatMessage, HasATextForEveryCodeThatIsNamed) {
    for (const auto& [name, code] : kLastErrorCodes) {
        char buffer[300] = "";
        const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                            nullptr, code, 0, buffer, sizeof buffer, nullptr);
        EXPECT_GT(length, 5u) << name << " (" << code << ")";
    }
}
