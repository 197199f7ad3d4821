// The choice of a language and the conversion to the code page, which the environment decides natively when a
// process first asks: each case is a process of its own.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "platform/win32.h"

namespace {

// Ends the process, with status 0 when string 320 in a buffer of this size is this text.
void expectString(const char* language, const char* codePage, int size, const std::string& text) {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        unsetenv(variable);
    setenv("LANG", language, 1);
    setenv("KORUTIL_CODEPAGE", codePage, 1);
    const HMODULE library = LoadLibraryA("KorTestLanguages.dll");
    char buffer[40];
    const int length = LoadStringA(library, 320, buffer, size);
    _exit(library && std::string(buffer) == text && length == static_cast<int>(text.size()) ? 0 : 1);
}

}  // namespace

TEST(StringLanguage, IsTheUsersElseTheFirstAndNoCharacterIsCut) {
    struct {
        const char *language, *codePage;
        int size;
        const char* text;
    } const cases[] = {
        {"ja_JP.UTF-8", "65001", 7, "\xE6\x97\xA5\xE6\x9C\xAC"},
        {"ja_JP.UTF-8", "65001", 3, ""},
        {"ja_JP.UTF-8", "932", 6, "\x93\xFA\x96\x7B"},
        {"ja_JP.UTF-8", "1252", 40, "???"},
        {"fr_CA.UTF-8", "65001", 6, "Fran"},
        {"xx_YY.UTF-8", "1252", 40, "Deutsch"},
    };
    for (const auto& each : cases)
        EXPECT_EXIT(expectString(each.language, each.codePage, each.size, each.text),
                    testing::ExitedWithCode(0), "")
            << each.codePage << " in " << each.size;
}
