#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"
#include "tests/platform/seeded.h"

using kor::test::kSeed;

namespace {

std::string formatted(DWORD flags, const char* source, DWORD_PTR* arguments = nullptr) {
    char buffer[400] = "";
    SetLastError(kSeed);
    const DWORD length =
        FormatMessageA(flags | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, source, 0, 0,
                       buffer, sizeof buffer, reinterpret_cast<va_list*>(arguments));
    return {buffer, length};
}

DWORD formatList(char* buffer, DWORD size, const char* source, ...) {
    va_list list;
    va_start(list, source);
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_STRING, source, 0, 0, buffer, size, &list);
    va_end(list);
    return length;
}

}  // namespace

TEST(FormatMessage, PutsArgumentsInAnyOrderAndForm) {
    DWORD_PTR arguments[] = {reinterpret_cast<DWORD_PTR>("one"), 42, static_cast<DWORD_PTR>(-7), 0xBEEF};
    const std::pair<const char*, const char*> cases[] = {
        {"%1", "one"},
        {"%2!d! after %1 after %2!u!", "42 after one after 42"},
        {"%3!d!, %3!hd!, %3!li!", "-7, -7, -7"},
        {"%4!x! %4!08lX! %4!#x!", "beef 0000BEEF 0xbeef"},
        {"[%1!8s!] [%1!-6s!] [%1!.2s!]", "[     one] [one   ] [on]"},
        {"100%% %. %! %x", "100% . ! x"},
        {"end%0 of it", "end"},
        {"a\nb\r\nc%nd", "a\r\nb\r\nc\r\nd"},
    };
    for (const auto& [source, text] : cases)
        EXPECT_EQ(formatted(0, source, arguments), text) << source;
}

TEST(FormatMessage, TakesAnArgumentListInOrder) {
    char buffer[100];
    EXPECT_GT(formatList(buffer, sizeof buffer, "%3!d!-%1!s!-%2", "first", "second", 3), 0u);
    EXPECT_STREQ(buffer, "3-first-second");
    EXPECT_EQ(formatted(FORMAT_MESSAGE_IGNORE_INSERTS, "a %1 b"), "a %1 b");
}

TEST(FormatMessage, BreaksLinesAtTheWidth) {
    EXPECT_EQ(formatted(10, "The quick brown fox jumps over the lazy dog"),
              "The quick\r\nbrown fox\r\njumps\r\nover the\r\nlazy dog");
    EXPECT_EQ(formatted(10, "abcdefghijklmnopqrstuvwxyz abc"), "abcdefghij\r\nklmnopqrst\r\nuvwxyz\r\nabc");
    EXPECT_EQ(formatted(FORMAT_MESSAGE_MAX_WIDTH_MASK, "a\nb\r\nc%nd"), "a b c\r\nd")
        << "only the explicit one stays";
}

TEST(FormatMessage, FailsWithAReason) {
    char buffer[8] = "#######";
    const auto fails = [&](DWORD flags, LPCVOID source, DWORD id) {
        return kor::test::errorAfter(
            [&] { EXPECT_EQ(FormatMessageA(flags, source, id, 0, buffer, sizeof buffer, nullptr), 0u); });
    };
    EXPECT_EQ(fails(0, "text", 0), DWORD{ERROR_INVALID_PARAMETER}) << "no source";
    EXPECT_EQ(fails(FORMAT_MESSAGE_FROM_STRING, "%1", 0), DWORD{ERROR_INVALID_PARAMETER}) << "no arguments";
    EXPECT_EQ(fails(FORMAT_MESSAGE_FROM_STRING, "text%", 0), DWORD{ERROR_INVALID_PARAMETER})
        << "an escape without end";
    EXPECT_EQ(fails(FORMAT_MESSAGE_FROM_STRING, "12345678", 0), DWORD{ERROR_INSUFFICIENT_BUFFER})
        << "no room for the terminator";
    EXPECT_EQ(fails(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 0x12345678), 317u) << "no such message";
    EXPECT_EQ(FormatMessageA(FORMAT_MESSAGE_FROM_STRING, "1234567", 0, 0, buffer, sizeof buffer, nullptr),
              7u);
    EXPECT_STREQ(buffer, "1234567");
}

TEST(FormatMessage, AllocatesItsBuffer) {
    char* text = nullptr;
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                                        ERROR_FILE_NOT_FOUND, 0, reinterpret_cast<LPSTR>(&text), 0, nullptr);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::string(text).size(), length);
    EXPECT_TRUE(std::string(text).ends_with("\r\n")) << text;
    EXPECT_EQ(LocalFree(text), nullptr);
    text = reinterpret_cast<char*>(&text);
    EXPECT_EQ(FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 0x12345678,
                             0, reinterpret_cast<LPSTR>(&text), 0, nullptr),
              0u);
    EXPECT_EQ(text, nullptr) << "nothing to free after a failure";
}
