// The rules for paths, which look at no disk.
#include "korutil/path.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "tests/support/shown_warnings.h"

namespace {

struct Buffer {
    explicit Buffer(const std::string& start) {
        std::memset(text, '#', sizeof text);
        std::memcpy(text, start.c_str(), start.size() + 1);
    }
    char text[1024];
};

// A path of that length, all of `a` behind the start.
std::string longPath(const std::string& start, std::size_t length) {
    return start + std::string(length - start.size(), 'a');
}

TEST(PathRules, SayWhatAPathIs) {
    const struct {
        const char* path;
        int absolute, network, root;
    } cases[] = {{"c:\\", 1, 0, 1},     {"Z:\\a", 1, 0, 0}, {"\\\\server", 1, 1, 0}, {"\\\\", 1, 1, 1},
                 {"c:", 0, 0, 1},       {"c:a", 0, 0, 0},   {"1:\\", 0, 0, 0},       {"\\a", 0, 0, 0},
                 {"/usr/lib", 0, 0, 0}, {"c:/", 0, 0, 0},   {"a", 0, 0, 0},          {"", 0, 0, 0},
                 {"\\", 0, 0, 0},       {"//s", 0, 0, 0},   {"\xE4:\\", 0, 0, 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(sysIsAbsPath(c.path), c.absolute) << c.path;
        EXPECT_EQ(sysIsUNCPath(c.path), c.network) << c.path;
        EXPECT_EQ(sysIsRootDir(c.path), c.root) << c.path;
    }
}

TEST(PathRules, KnowReservedNames) {
    const std::string longest = longPath("", 255);
    for (const std::string path : {R"(c:\temp\LPT1.log)", R"(c:\data\con.txt)", "aux", "Ept.a.b",
                                   R"(c:\NUL\a.b)", "clock$.", R"(a\\prn\)"})
        EXPECT_EQ(sysIsReservedFileName(path.c_str()), 1) << path;
    for (const std::string path : {R"(c:\temp\lpt10)", "com5", R"(c:\console)", R"(c:\xcon)", R"(c:\a.con)",
                                   "c:con", "a/con", "", R"(a\.con)", R"(com\1)", "con "})
        EXPECT_EQ(sysIsReservedFileName(path.c_str()), 0) << path;
    EXPECT_EQ(sysIsReservedFileName((longest + "\\conx").c_str()), 1) << "the 260th byte is not seen";
    EXPECT_EQ(sysIsReservedFileName((longest + "a\\con").c_str()), 0) << "cut before its end";
}

TEST(PathRules, KnowTheCharactersOfAName) {
    std::string refused;
    for (unsigned character = 0; character < 256; ++character)
        if (!sysIsValidFileNameChar(character)) refused += static_cast<char>(character);
    EXPECT_EQ(refused, "\"*/:;<>?\\|");
    EXPECT_EQ(sysIsValidFileNameChar(0x835C), 1) << "a double-byte character";
    EXPECT_EQ(sysContainsWildCards("c:\\a*.b") + sysContainsWildCards("a?"), 2);
    EXPECT_EQ(sysContainsWildCards("\\\\?\\c:\\a") + sysContainsWildCards(""), 0);
}

TEST(PathRules, FindTheExtension) {
    for (const std::string path : {"a.b>.c", "a>.", R"(c:\>.x)", "a>.b/c", R"(c:\a.b\c)", "a", R"(..\x)"}) {
        const std::size_t dot = path.find('>');
        const std::string whole = dot == path.npos ? path : path.substr(0, dot) + path.substr(dot + 1);
        const char* found = whole.c_str();
        EXPECT_EQ(sysGetFileExt(whole.c_str(), &found), dot != path.npos) << path;
        EXPECT_EQ(found, dot == path.npos ? nullptr : whole.c_str() + dot) << path;
    }
}

// Each row is a text and what becomes of it, with " > " between; nothing behind it stands for failure.
using Rows = std::vector<std::string>;

template <typename Change>
void checkRows(const Rows& rows, Change change, const std::string& note = {}) {
    for (const std::string& row : rows) {
        const std::size_t arrow = row.find(" > ");
        const std::string before = row.substr(0, arrow), after = row.substr(arrow + 3);
        Buffer path(before);
        EXPECT_EQ(change(path.text), !after.empty()) << before << note;
        EXPECT_EQ(path.text, after.empty() ? before : after) << before << note;
    }
}

TEST(PathRules, ChangeAPathInPlace) {
    checkRows({R"(a > a\)", R"(a\ > a\)"}, sysAppendBackslash);
    checkRows({R"(a\\ > a\)", R"(c:\ > c:)"}, sysDeleteBackslash);
    checkRows({R"(c: > c:\)", R"(c:\ > c:\)", R"(\\ > \\)", R"(\\srv\d\ > \\srv\d)", R"(c:\a\ > c:\a)"},
              sysMakeCommdlgDir);
    for (const auto change : {sysAppendBackslash, sysDeleteBackslash, sysMakeCommdlgDir}) {
        Buffer empty("");
        EXPECT_EQ(change(empty.text), 1);
        EXPECT_STREQ(empty.text, "");
    }
    checkRows({R"(C:\WINNT\SYSTEM32\FILE.DAT > C:\Winnt\System32\File.dat)", R"(MyFile.TXT > MyFile.TXT)",
               R"(A/BC:DE\EIGHTLET.ABC > A/BC:De\Eightlet.abc)", R"(LONGFILENAME.TXT > LONGFILENAME.TXT)",
               R"(NINELETTE/A.FOUR/.ABC/A.B.C > NINELETTE/A.FOUR/.abc/A.b.c)",
               "\xC4\xD6.\xDC > \xC4\xF6.\xFC", "\xC4\xF6.TXT > \xC4\xF6.TXT"},
              [](char* path) { return sysBeautifyPathname(path, 0); });
    checkRows({R"(c:/a//b*c. \con.x\ > c:\a\b_c\_con.x)", "//srv\\d\x01| > \\\\srv\\d__", R"(c: > c:\)",
               R"(..\.\a > ..\.\a)", R"(\ > \)", R"( ./  > )"},
              [](char* path) { return sysMakeValidDirPath(path, 260); });
    checkRows(
        {"con > "}, [](char* path) { return sysMakeValidDirPath(path, 4); }, ": no room for _");
}

TEST(PathRules, AppendATooLongTextAfterTheWarning) {
    kor::test::ShownWarnings warnings;
    Buffer path(longPath("c:\\", 250));
    EXPECT_EQ(sysConcatPath(path.text, "\\12345678"), 1);
    EXPECT_EQ(std::strlen(path.text), 259u);
    EXPECT_TRUE(warnings.take().empty());
    EXPECT_EQ(sysConcatPath(path.text, "9"), 1);
    EXPECT_EQ(path.text, longPath("c:\\", 250) + "\\123456789");
    const auto shown = warnings.takeOne();
    EXPECT_EQ(shown.text, "The path is too long:\n" + std::string(path.text) +
                              "\nIt must have fewer than 260 characters.");
    EXPECT_EQ(shown.record.style, UINT_PTR{MB_ICONEXCLAMATION});
    EXPECT_EQ(shown.record.textId, 10006u);
    EXPECT_EQ(sysPathTooLong("x", 3), kor::test::ShownWarnings::kAnswer);
}

TEST(PathParts, AreTakenApartAndPutTogether) {
    const char* const cases[][5] = {{R"(c:\a.b\c.d.e)", "c:", R"(\a.b\)", "c.d", ".e"},
                                    {R"(\\s\h\f)", "", R"(\\s\h\)", "f", ""},
                                    {"c:f.", "c:", "", "f", "."},
                                    {"a/b\\", "", "a/b\\", "", ""},
                                    {"..", "", "", ".", "."}};
    for (const auto& [whole, drive, folder, name, extension] : cases) {
        char pieces[4][9], path[16];
        ASSERT_EQ(sysSplitPathEx(whole, pieces[0], 3, pieces[1], 9, pieces[2], 4, pieces[3], 3), 1) << whole;
        EXPECT_EQ(std::string(pieces[0]) + '|' + pieces[1] + '|' + pieces[2] + '|' + pieces[3],
                  std::string(drive) + '|' + folder + '|' + name + '|' + extension);
        const auto size = static_cast<DWORD>(std::strlen(whole) + 1);
        EXPECT_EQ(sysMakePathEx(path, size - 1, drive, folder, name, extension), 0) << whole;
        EXPECT_EQ(sysMakePathEx(path, size, drive, folder, name, extension), 1) << whole;
        EXPECT_STREQ(path, whole);
    }
    char name[4] = "old", extension[2] = "o", path[16] = "a";
    EXPECT_EQ(sysSplitPathEx("f.txt", nullptr, 0, nullptr, 0, name, 4, extension, 2), 0);
    EXPECT_STREQ(name, "old") << "nothing is written when a piece does not fit";
    EXPECT_EQ(sysMakePathEx(path, 16, "c", path, "b", "x"), 1);
    EXPECT_STREQ(path, R"(c:a\b.x)");
}

using Convert = int(KORUTIL_CALL*)(char*, const char*, DWORD);

void checkConversion(Convert convert, const std::string& base, const Rows& rows) {
    checkRows(
        rows, [&](char* path) { return convert(path, base.c_str(), 0); }, " to " + base);
}

TEST(PathConversion, GivesRelativeForms) {
    checkConversion(
        sysCvtToRelPath, R"(c:\a\x\y)",
        {R"(c:\a\b\c.txt > ..\b\c.txt)", R"(C:\A\X\c.txt > c.txt)", R"(c:\a\x > .)", R"(c:\a > ..)",
         R"(c:\ > ..\..)", R"(c: > ..\..)", R"(c:\a\x\y > .)", R"(d: > d:\)", R"(c:\ab\f > ..\..\ab\f)",
         R"(d:\a > d:\a)", R"(c:\a\x\b\ > b\)", R"(\\s\h\b > \\s\h\b)", R"(a\b > a\b)"});
    checkConversion(sysCvtToRelPath, "c:\\\xE4\\y", {"c:\\\xC4\\b > b", R"(c:\ > ..)"});
    checkConversion(sysCvtToRelPath, R"(c:\y)", {R"(c:\ > .)", R"(c:\b > b)"});
    checkConversion(sysCvtToRelPath, R"(\\s\h\x\y)",
                    {R"(\\S\h\b > ..\b)", R"(\\t\h > ..\..\..\t\h)", R"(c:\a > c:\a)"});
    checkConversion(sysCvtToRelPath, "", {"a > ", "c: > "});
    checkConversion(sysCvtToRelPath, "a", {R"(c:\a > )", "c: > ", "b > b"});
    const std::string fits = longPath("c:\\b\\", 250), tooLong = fits + 'a';
    checkConversion(sysCvtToRelPath, R"(c:\a\b\c\d\f)",
                    {fits + R"( > ..\..\..\..)" + fits.substr(2), tooLong + " > " + tooLong});
}

TEST(PathConversion, GivesAbsoluteForms) {
    checkConversion(
        sysCvtToAbsPath, R"(c:\a\b\file)",
        {R"(..\d.txt > c:\a\d.txt)", R"(D.TXT > c:\a\b\D.txt)", R"(.\d > c:\a\b\d)", R"(. > c:\a\b\)",
         R"(.\ > c:\a\b\)", R"(.. > c:\a\)", R"(x\..\d > c:\a\d)", R"(..\..\d > c:\d)", R"(..\..\..\d > )",
         R"(\d > c:\d)", R"(d: > d:\)", R"(D:\ABC > D:\Abc)", " > "});
    checkConversion(sysCvtToAbsPath, R"(\\t\x\file)",
                    {R"(..\..\s\h > \\s\h)", R"(..\..\..\h > )", R"(\d > \\d)", R"(d > \\t\x\d)"});
    checkConversion(sysCvtToAbsPath, "a", {"d > ", R"(\d > )", R"(d: > d:\)", R"(c:\d > c:\d)"});
    checkConversion(sysCvtToAbsPath, "", {"d > ", R"(c:\d > )"});
    const std::string folder = longPath("c:\\", 258), most(256, 'b');
    checkConversion(sysCvtToAbsPath, folder + "\\file", {". > " + folder + '\\', "b > "});
    checkConversion(sysCvtToAbsPath, folder + "a\\file", {". > "});
    checkConversion(
        sysCvtToAbsPath, "c:\\a",
        {'\\' + most + " > c:\\" + most, '\\' + most + "b > ", most + " > c:\\" + most, most + "b > "});
}

TEST(PathConversion, MakesEveryEntryOfAListAbsolute) {
    const std::string tooLong(260, 'b');
    const struct {
        std::string list;
        DWORD size;
        int count;
        const char* result;
    } cases[] = {{"a;;b", 260, 2, R"(c:\x\a;c:\x\b)"},
                 {R"(c:\x\A;..\b)", 260, 2, R"(c:\x\A;c:\b)"},
                 {R"(a;..\..\b;c;)", 260, 2, R"(c:\x\a;c:\x\c)"},
                 {"a;" + tooLong, 260, 1, R"(c:\x\a)"},
                 {"a;b", 14, 2, R"(c:\x\a;c:\x\b)"},
                 {"a;b", 13, 0, "a;b"},
                 {"a;b", 0, 0, "a;b"},
                 {";", 1, 0, ""}};
    for (const auto convert : {sysCvtToRelPath, sysCvtToAbsPath}) {
        for (const auto& c : cases) {
            Buffer list(c.list);
            EXPECT_EQ(convert(list.text, R"(c:\x\base)", c.size), c.count) << c.list << " in " << c.size;
            EXPECT_STREQ(list.text, c.result);
        }
    }
}

TEST(PathConversion, TakesTheHostExecutableForItsBase) {
    char host[MAX_PATH];
    ASSERT_NE(GetModuleFileNameA(nullptr, host, sizeof host), 0u);
    const std::string folder = std::string(host).substr(0, std::string(host).rfind('\\'));
    Buffer path(folder + "\\sub\\x");
    EXPECT_EQ(sysCvtToRelPath(path.text, nullptr, sizeof path.text), 1);
    EXPECT_STREQ(path.text, "sub\\x");
    EXPECT_EQ(sysCvtToAbsPath(path.text, nullptr, sizeof path.text), 1);
    EXPECT_EQ(lstrcmpiA(path.text, (folder + "\\sub\\x").c_str()), 0) << path.text;
}

}  // namespace
