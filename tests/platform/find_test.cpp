// Finding the entries of a folder.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;
using Names = std::vector<std::string>;

class Find : public testing::Test {
  protected:
    Find() {
        for (const char* name : {"b.txt", "A.TXT", "noext", "ab", "abc", "a.b.c", "_u", "10", "9", "z z.t t",
                                 "foo.htm", "foo.html", "[x]"}) {
            scratch_.file(name);
        }
        scratch_.folder("sub");
    }

    Names found(const char* pattern) const { return namesOf(scratch_.path(pattern)); }

    ScratchFolder scratch_;
};

const Names kAll = {".",     "..",      "10",       "9",     "a.b.c", "A.TXT",   "ab",  "abc",
                    "b.txt", "foo.htm", "foo.html", "noext", "sub",   "z z.t t", "[x]", "_u"};

TEST_F(Find, AllEntriesComeInTheOrderOfTheirCapitals) {
    for (const char* pattern : {"*", "*.*", "**"})
        EXPECT_EQ(found(pattern), kAll) << pattern;
}

TEST_F(Find, PatternsChoose) {
    const std::pair<const char*, Names> cases[] = {
        {"*.txt", {"A.TXT", "b.txt"}},
        {"a*", {"a.b.c", "A.TXT", "ab", "abc"}},
        {"*.htm", {"foo.htm"}},
        {"*b*", {"a.b.c", "ab", "abc", "b.txt", "sub"}},
        {"*[x*", {"[x]"}},
        {"??ext", {"noext"}},
        {"x*", {}},
    };
    for (const auto& [pattern, wanted] : cases) {
        // The system compares with the 8.3 names of files too where it keeps them; those of foo.html match
        // *.htm.
        Names names = found(pattern);
        if (std::string(pattern) == "*.htm") std::erase(names, "foo.html");
        EXPECT_EQ(names, wanted) << pattern;
    }
}

TEST_F(Find, ANameWithoutWildCardsFindsItselfAsItIsSpelled) {
    EXPECT_EQ(found("a.txt"), Names{"A.TXT"});
    EXPECT_EQ(found("sub\\."), Names{"sub"});
    EXPECT_EQ(found("./A.txt"), Names{"A.TXT"});
}

TEST_F(Find, TellsWhyNothingIsFound) {
    const std::pair<const char*, DWORD> cases[] = {
        {"missing", ERROR_FILE_NOT_FOUND},    {"missing*", ERROR_FILE_NOT_FOUND},
        {"missing\\*", ERROR_PATH_NOT_FOUND}, {"sub\\", ERROR_FILE_NOT_FOUND},
        {"*\\a", ERROR_INVALID_NAME},         {"sub\\missing", ERROR_FILE_NOT_FOUND}};
    WIN32_FIND_DATAA data;
    for (const auto& [pattern, error] : cases) {
        const std::string path = scratch_.path(pattern);
        EXPECT_TRUE(gives([&] { return FindFirstFileA(path.c_str(), &data); }, INVALID_HANDLE_VALUE, error))
            << path;
    }
}

TEST_F(Find, EndsWithNoMoreFilesAgainAndAgain) {
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA(scratch_.path("ab").c_str(), &data);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    for (int call = 0; call < 2; ++call)
        EXPECT_FAILS(ERROR_NO_MORE_FILES, FindNextFileA(find, &data));
    EXPECT_TRUE(FindClose(find));
    for (const HANDLE wrong : {HANDLE{nullptr}, INVALID_HANDLE_VALUE})
        EXPECT_FAILS(ERROR_INVALID_HANDLE, FindClose(wrong));
}

TEST_F(Find, TellsWhatTheEntryIs) {
    scratch_.file("data", "12345");
    SetFileAttributesA(scratch_.path("data").c_str(), FILE_ATTRIBUTE_READONLY);
    WIN32_FIND_DATAA data;
    std::memset(&data, 0xAA, sizeof data);
    HANDLE find = FindFirstFileA(scratch_.path("DATA").c_str(), &data);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    FindClose(find);
    EXPECT_STREQ(data.cFileName, "data");
    EXPECT_EQ(data.dwFileAttributes, DWORD{FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY});
    EXPECT_EQ(data.nFileSizeLow, 5u);
    EXPECT_EQ(data.nFileSizeHigh, 0u);
    find = FindFirstFileA(scratch_.path("SU?").c_str(), &data);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    FindClose(find);
    EXPECT_STREQ(data.cFileName, "sub");
    EXPECT_EQ(data.dwFileAttributes, DWORD{FILE_ATTRIBUTE_DIRECTORY});
    EXPECT_EQ(data.nFileSizeLow, 0u);
}

TEST(FindRoot, ADrivesRootHasNoOwnNames) {
    WIN32_FIND_DATAA data;
    EXPECT_EQ(errorAfter([&] { EXPECT_EQ(FindFirstFileA("C:\\", &data), INVALID_HANDLE_VALUE); }),
              DWORD{ERROR_FILE_NOT_FOUND});
    for (const std::string& name : namesOf("C:\\*"))
        EXPECT_TRUE(name != "." && name != "..");
}

}  // namespace
