// Code pages, letter case and order of texts, in the default ANSI code page.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/platform/seeded.h"
#include "tests/support/random.h"

namespace {

using namespace kor::test;
using Units = std::vector<unsigned>;

Units wide(UINT page, DWORD flags, std::string_view text) {
    WCHAR buffer[64];
    const int length =
        MultiByteToWideChar(page, flags, text.data(), static_cast<int>(text.size()), buffer, 64);
    return Units(buffer, buffer + length);
}

std::string narrow(UINT page, const Units& units, BOOL* used = nullptr, const char* fallback = nullptr) {
    const std::vector<WCHAR> text(units.begin(), units.end());
    char buffer[64];
    const int length = WideCharToMultiByte(page, page == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS, text.data(),
                                           static_cast<int>(text.size()), buffer, 64, fallback, used);
    return std::string(buffer, static_cast<std::size_t>(length));
}

TEST(CodePages, ValidTextGoesThereAndBack) {
    struct Case {
        UINT page;
        const char* text;
        Units units;
    };
    const Case cases[] = {
        {1252, "a\x80\xE4\xFF", {'a', 0x20AC, 0xE4, 0xFF}},
        {1252, "\x81\x8D\x8F\x90\x9D", {0x81, 0x8D, 0x8F, 0x90, 0x9D}},  // not defined, but kept
        {CP_ACP, "\x99", {0x2122}},
        {932, "\\~\xB1\x82\xA0\x83\x5C", {'\\', '~', 0xFF71, 0x3042, 0x30BD}},
        {932, "\x81\x60\x87\x90\xFA\x55\xF0\x40", {0xFF5E, 0x2252, 0xFFE4, 0xE000}},
        {936, "\x80\xD6\xD0\xA1\xA4\xAA\xA1", {0x20AC, 0x4E2D, 0xB7, 0xE000}},
        {CP_UTF8, "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", {'a', 0xE4, 0x20AC, 0xD83D, 0xDE00}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(wide(c.page, MB_ERR_INVALID_CHARS, c.text), c.units) << c.page;
        if (c.page == 932) continue;  // two of its characters have two codes; one of them is written
        EXPECT_EQ(narrow(c.page, c.units), c.text) << c.page;
    }
    EXPECT_EQ(narrow(932, {0x2252, 0xFFE4}), "\x81\xE0\xFA\x55");
}

TEST(CodePages, EveryCharacterOfAPageComesBack) {
    for (const UINT page : {1252u, 932u, 936u}) {
        int characters = 0;
        for (unsigned unit = 1; unit < 0x10000; ++unit) {
            BOOL used = FALSE;
            const std::string bytes = narrow(page, {unit}, &used);
            if (used) continue;
            ++characters;
            const Units back = wide(page, 0, bytes);
            ASSERT_EQ(back, Units{unit}) << page << ", " << std::hex << unit;
        }
        // The page's single bytes and pairs, without the second codes of characters that have two.
        EXPECT_EQ(characters, page == 1252 ? 255 : page == 932 ? 9401 : 24069) << page;
    }
}

TEST(CodePages, InvalidTextIsReplacedOrRefused) {
    struct Case {
        UINT page;
        std::string_view text;
        Units units;
        const char* reason;
    };
    using namespace std::string_view_literals;
    const Case cases[] = {
        {932, "\x81"sv, {0x30FB}, "a lead byte at the end"},
        {932, "\x81\x20"sv, {0x30FB}, "no trail byte"},
        {932, "\x85\x80"sv, {0x30FB}, "a pair without a meaning"},
        {932, "\x81\0a"sv, {0x30FB, 0, 'a'}, "a zero is never a trail byte"},
        {932, "\xA0"sv, {0xF8F0}, "a single byte without a meaning"},
        {CP_UTF8, "a\xFF\xC3"sv, {'a', 0xFFFD, 0xFFFD}, "bytes that begin nothing or end too soon"},
        {CP_UTF8, "\xF0\x9F\x98"sv, {0xFFFD}, "cut short by the end"},
        {CP_UTF8, "\xC0\x80"sv, {0xFFFD, 0xFFFD}, "overlong"},
        {CP_UTF8, "\xF4\x90\x80\x80"sv, {}, "past U+10FFFF"},
        {CP_UTF8, "\xED\xA0\x80"sv, {}, "a surrogate"},
    };
    for (const Case& c : cases) {
        // How many replacements stand for one sequence differs between the system's versions where none are
        // given.
        if (!c.units.empty()) {
            EXPECT_EQ(wide(c.page, 0, c.text), c.units) << c.page << ": " << c.reason;
        }
        EXPECT_EQ(errorAfter([&] { EXPECT_TRUE(wide(c.page, MB_ERR_INVALID_CHARS, c.text).empty()); }),
                  DWORD{ERROR_NO_UNICODE_TRANSLATION})
            << c.page << ": " << c.reason;
    }
}

TEST(CodePages, WhatThePageLacksBecomesTheDefaultCharacter) {
    BOOL used = 7;
    EXPECT_EQ(narrow(1252, {'a', 0x100, 'b'}, &used), "a?b");
    EXPECT_EQ(used, TRUE);
    EXPECT_EQ(narrow(1252, {'a', 0xE4}, &used), "a\xE4");
    EXPECT_EQ(used, FALSE);
    EXPECT_EQ(narrow(1252, {0x3042}, nullptr, "##"), "#") << "one character of it";
    EXPECT_EQ(narrow(1252, {0xD83D, 0xDE00}), "??") << "each unit of a pair";
    EXPECT_EQ(narrow(932, {0xE9}, &used), "?");
    EXPECT_EQ(narrow(CP_UTF8, {0xD83D}), "\xEF\xBF\xBD") << "a lone surrogate";
    const WCHAR lone = 0xDC00;
    EXPECT_EQ(errorAfter([&] {
                  char buffer[8];
                  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0x80, &lone, 1, buffer, 8, nullptr, nullptr), 0);
              }),
              DWORD{ERROR_NO_UNICODE_TRANSLATION});
}

TEST(CodePages, SizesAreAskedForAndKept) {
    const char text[] = "ab\xE4";
    const WCHAR units[] = {'a', 'b', 0xE4, 0};
    struct Case {
        int length, size, result;
        DWORD error;
    };
    const DWORD small = ERROR_INSUFFICIENT_BUFFER, wrong = ERROR_INVALID_PARAMETER;
    const Case cases[] = {{3, 0, 3, kSeed},  {-1, 0, 4, kSeed}, {3, 3, 3, kSeed}, {3, 2, 0, small},
                          {-1, 3, 0, small}, {-1, 4, 4, kSeed}, {0, 8, 0, wrong}, {3, -1, 0, wrong}};
    for (const Case& c : cases) {
        WCHAR wideBuffer[9];
        char buffer[9];
        std::memset(wideBuffer, 0xAA, sizeof wideBuffer);
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_TRUE(gives([&] { return MultiByteToWideChar(1252, 0, text, c.length, wideBuffer, c.size); },
                          c.result, c.error))
            << c.length << ", " << c.size;
        EXPECT_TRUE(gives(
            [&] { return WideCharToMultiByte(1252, 0, units, c.length, buffer, c.size, nullptr, nullptr); },
            c.result, c.error))
            << c.length << ", " << c.size;
        const int kept = c.size > 0 ? c.size : 0;
        EXPECT_EQ(wideBuffer[kept], 0xAAAA) << "nothing behind the buffer";
        EXPECT_EQ(buffer[kept], '#');
    }
    WCHAR buffer[4];
    EXPECT_FAILS(wrong, MultiByteToWideChar(4711, 0, text, 3, buffer, 4));
    EXPECT_FAILS(wrong, MultiByteToWideChar(1252, 0, nullptr, 3, buffer, 4));
    EXPECT_FAILS(wrong, MultiByteToWideChar(1252, 0, text, 3, nullptr, 4));
    EXPECT_FAILS(ERROR_INVALID_FLAGS, MultiByteToWideChar(1252, 0x4000, text, 3, buffer, 4));
}

TEST(CodePages, RandomBytesNeverLeaveTheirBuffers) {
    auto random = generator();
    for (int round = 0; round < scaled(2000); ++round) {
        std::string text(1 + random() % 40, '\0');
        for (char& each : text)
            each = static_cast<char>(random());
        for (const UINT page : {1252u, 932u, 936u, 65001u}) {
            const int size = static_cast<int>(text.size());
            const int needed = MultiByteToWideChar(page, 0, text.data(), size, nullptr, 0);
            ASSERT_TRUE(needed > 0 && needed <= size);
            std::vector<WCHAR> units(static_cast<std::size_t>(needed));
            ASSERT_EQ(MultiByteToWideChar(page, 0, text.data(), size, units.data(), needed), needed);
            const bool valid = !wide(page, MB_ERR_INVALID_CHARS, text).empty();
            std::vector<char> back(text.size() * 4);
            const int length = WideCharToMultiByte(page, 0, units.data(), needed, back.data(),
                                                   static_cast<int>(back.size()), nullptr, nullptr);
            if (valid && (page == 1252 || page == 65001)) {
                ASSERT_EQ(std::string(back.data(), static_cast<std::size_t>(length)), text);
            }
        }
    }
}

TEST(LeadBytes, BelongToTheirPage) {
    std::string leads;
    for (const UINT page : {1252u, 932u, 936u, 65001u})
        for (const int byte : {0x80, 0x81, 0x9F, 0xA0, 0xDF, 0xE0, 0xFC, 0xFD, 0xFE, 0xFF})
            leads += IsDBCSLeadByteEx(page, static_cast<BYTE>(byte)) ? 'x' : '.';
    EXPECT_EQ(leads,
              ".........."
              ".xx..xx..."
              ".xxxxxxxx."
              "..........");
}

TEST(Characters, ChangeCaseInTheCodePage) {
    char text[] = "az\xE4\xFF\x9E\xDF\xB5\xF7 1";
    EXPECT_EQ(CharUpperA(text), text);
    EXPECT_STREQ(text, "AZ\xC4\x9F\x8E\xDF\xB5\xF7 1");
    EXPECT_EQ(CharLowerA(text), text);
    EXPECT_STREQ(text, "az\xE4\xFF\x9E\xDF\xB5\xF7 1");
    char part[] = "abc";
    EXPECT_EQ(CharUpperBuffA(part, 2), 2u);
    EXPECT_STREQ(part, "ABc");
    EXPECT_EQ(CharLowerBuffA(part, 1), 1u);
    EXPECT_STREQ(part, "aBc");
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(CharUpperA(reinterpret_cast<LPSTR>(ULONG_PTR{0xE4}))), 0xC4u);
    EXPECT_EQ(CharNextA(text + 1), text + 2);
    EXPECT_EQ(*CharNextA(""), 0) << "not past the end";
    EXPECT_EQ(CharPrevA(text, text + 3), text + 2);
    EXPECT_EQ(CharPrevA(text, text), text) << "not before the start";
}

TEST(Characters, HaveTheirKind) {
    std::string letters, digits, capitals;
    for (int byte = 1; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        if (IsCharAlphaA(character)) letters += character;
        if (IsCharAlphaNumericA(character) && !IsCharAlphaA(character)) digits += character;
        if (IsCharUpperA(character)) capitals += character;
        EXPECT_FALSE(IsCharUpperA(character) && IsCharLowerA(character)) << byte;
    }
    EXPECT_EQ(digits, "0123456789\xB2\xB3\xB9");
    EXPECT_EQ(letters.size(), 126u) << letters;
    EXPECT_EQ(capitals.substr(26),
              "\x8A\x8C\x8E\x9F\xC0\xC1\xC2\xC3\xC4\xC5\xC6\xC7\xC8\xC9\xCA\xCB\xCC\xCD\xCE\xCF"
              "\xD0\xD1\xD2\xD3\xD4\xD5\xD6\xD8\xD9\xDA\xDB\xDC\xDD\xDE");
}

TEST(Texts, AreComparedAsWords) {
    struct Case {
        const char *first, *second;
        int order, orderWithoutCase;
    };
    const Case cases[] = {
        {"a", "A", -1, 0},     {"a", "B", -1, -1},        {"B", "a", 1, 1},         {"Abc", "aBc", 1, 0},
        {"ab", "abc", -1, -1}, {"", "a", -1, -1},         {"_", "1", -1, -1},       {"10", "9", -1, -1},
        {"a b", "ab", -1, -1}, {"\xE4", "a", 1, 1},       {"\xE4", "b", -1, -1},    {"\xE4", "\xC4", -1, 0},
        {"\xE4z", "az", 1, 1}, {"coop", "co-op", -1, -1}, {"co-op", "cop", -1, -1}, {"-", "a", -1, -1},
        {"[", "A", -1, -1},
    };
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const Case& c : cases) {
        EXPECT_EQ(sign(lstrcmpA(c.first, c.second)), c.order) << c.first << " and " << c.second;
        EXPECT_EQ(sign(lstrcmpA(c.second, c.first)), -c.order) << c.second << " and " << c.first;
        EXPECT_EQ(sign(lstrcmpiA(c.first, c.second)), c.orderWithoutCase) << c.first << " and " << c.second;
    }
    EXPECT_LT(lstrcmpiA(nullptr, "a"), 0);
    EXPECT_GT(lstrcmpiA("a", nullptr), 0);
    EXPECT_EQ(lstrcmpiA(nullptr, nullptr), 0);
    EXPECT_EQ(CompareStringA(LOCALE_USER_DEFAULT, NORM_IGNORECASE, "abcX", 3, "ABC", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(LOCALE_USER_DEFAULT, 0, "b", 1, "a", 1), CSTR_GREATER_THAN);
    EXPECT_FAILS(ERROR_INVALID_PARAMETER, CompareStringA(LOCALE_USER_DEFAULT, 0, nullptr, 0, "a", 1));
}

TEST(Texts, AreCopiedWithinTheirBuffer) {
    char buffer[6];
    for (const int size : {5, 4, 3, 1}) {
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(lstrcpynA(buffer, "abc", size), buffer);
        EXPECT_EQ(std::string(buffer), std::string("abc").substr(0, static_cast<std::size_t>(size - 1)));
        EXPECT_EQ(buffer[size], '#');
    }
    std::memset(buffer, '#', sizeof buffer);
    lstrcpynA(buffer, "abc", 0);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(lstrlenA("abc"), 3);
    EXPECT_EQ(lstrlenA(nullptr), 0);
}

}  // namespace
