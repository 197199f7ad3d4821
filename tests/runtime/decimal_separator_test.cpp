// A program of its own, which is not linked to the library: the separator is read once a load.
#include <gtest/gtest.h>

#include <string>

#include "korutil/text.h"
#include "platform/win32.h"

// Both directions of a text, under a setting that is written before the library is loaded.
static std::string handled(const char* setting, std::string text) {
    EXPECT_TRUE(WritePrivateProfileStringA("intl", "sDecimal", setting, "win.ini"));
    const HMODULE library = LoadLibraryA("KorUtil");
    const auto handle = reinterpret_cast<decltype(&strHandleDecimal)>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, "strHandleDecimal")));
    std::string fromLocal = text;
    handle(text.data(), TRUE);
    handle(fromLocal.data(), FALSE);
    FreeLibrary(library);
    EXPECT_TRUE(WritePrivateProfileStringA("intl", "sDecimal", nullptr, "win.ini"));
    return text + " " + fromLocal;
}

TEST(DecimalSeparator, FollowsTheProfile) {
    EXPECT_EQ(handled(",", "1.5,2"), "1,5,2 1.5.2");
    EXPECT_EQ(handled(".", "1.5,2"), "1.5,2 1.5,2");
    EXPECT_EQ(handled(";,", "1.5;2"), "1;5;2 1.5.2") << "its first character";
    EXPECT_EQ(handled("", "1.5,2"), "1.5,2 1.5,2") << "empty counts as a point";
}
