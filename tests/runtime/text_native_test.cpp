// Texts in other code pages, which a process chooses once: each row is a process of its own.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "korutil/text.h"
#include "platform/win32.h"

namespace {

using Text = std::string;

Text reduced(Text text) { return strHandleCharExtension(text.data(), TRUE), text; }
Text restored(Text text) { return strHandleCharExtension(text.data(), FALSE), text; }

Text mapped(const char* source, DWORD size) {
    char buffer[8] = "#######";
    return strMapUniCharsX(source, buffer, size) == buffer && buffer[size] == '#' ? buffer : "?";
}

Text loaded(int size) {
    char buffer[20] = "###################";
    const int length = utlLoadString(LoadLibraryA("StringTexts.dll"), 17, buffer, size);
    return length == 6 && buffer[size] == '#' ? buffer : "?";
}

#define EXPECT_IN(page, check)                                                                               \
    EXPECT_EXIT((setenv("KORUTIL_CODEPAGE", page, 1), _exit(check ? 0 : 1)), testing::ExitedWithCode(0), "") \
        << page << ": " << #check

}  // namespace

TEST(TextCodePage, DecidesWhatIsACharacter) {
    EXPECT_IN("1252", reduced("\xB5m\xB2") == "\xB5m\xB2" && restored("u2") == "u2");
    for (const char* page : {"932", "936", "65001"}) {
        EXPECT_IN(page, reduced("\xB5m\xB2 \xB0K \xC5/\xB3") == "um2 oK A/3");
        EXPECT_IN(page, restored("um2 oK A/3") == "\xB5m\xB2 \xB0K \xC5/\xB3");
    }
    EXPECT_IN("936", reduced("\xC5\xB2") == "A2" && restored("uA uo") == "\xB5\xC5 \xB5\xB0");
    EXPECT_IN("932", restored("\x83o") == "\x83o");

    EXPECT_IN("1252", mapped("\xB1x\xB0", 3) == "\xB1x" && mapped(nullptr, 3) == "");
    EXPECT_IN("65001", mapped("\xC2\xB1\xC2\xB0", 4) == "\xC2\xB1");
    EXPECT_IN("932", mapped("\xB1x\xB0", 6) == "\x81\x7Dx\x81\x8B" && mapped("x\xB1", 3) == "x");

    EXPECT_IN("932", loaded(18) == "\x93\xFA\x96\x7B\x8C\xEA ?\?" && loaded(6) == "\x93\xFA\x96\x7B");
    EXPECT_IN("65001", loaded(15) == "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E \xF0\xA0\xAE\x9F");
    EXPECT_IN("65001", loaded(14) == "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E " && loaded(3) == "");

    EXPECT_IN("932", !_tcsistr("\x83\\", "\\") && !_tcsistr("\x83O", "\x83o") && _tcsistr("\x83Oo", "O"));
}
