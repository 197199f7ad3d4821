// Texts in code page 932, in a program of its own since the code page of a process is fixed by its first use.
#include <gtest/gtest.h>

#include <cstdlib>

#include "korutil/framework/file_exception.h"
#include "korutil/framework/string.h"

namespace {

const int codePageIsSet = setenv("KORUTIL_CODEPAGE", "932", 1);

// 0x83 0x5C is one character whose second byte is a backslash; 0x83 0x65 0x83 0x58 are two.
#define SO "\x83\x5C"
#define TE "\x83\x65"
#define SU "\x83\x58"

TEST(DoubleByteString, FindsCharactersNotBytes) {
    ASSERT_EQ(codePageIsSet, 0);
    const CString text("C:\\" TE SO "\\a");
    EXPECT_EQ(text.Find('\\'), 2);
    EXPECT_EQ(text.Find('\\', 3), 7);
    EXPECT_EQ(text.ReverseFind('\\'), 7);
    EXPECT_EQ(text.ReverseFind('e'), -1);  // 0x65 is the second byte of TE
    EXPECT_EQ(text.Find('\x83'), -1);
    EXPECT_EQ(text.Find(SO), 5);
    EXPECT_EQ(text.Find("\x5C\\"), -1);
    EXPECT_EQ(text.FindOneOf("e" SO), 5);
    EXPECT_EQ(CString(TE SU TE "x").SpanIncluding(SU TE), TE SU TE);
    EXPECT_EQ(CString(TE SO "\\").SpanExcluding("\\"), TE SO);
}

TEST(DoubleByteString, KeepsCharactersTogether) {
    CString text(TE "a" SO);
    text.MakeReverse();
    EXPECT_EQ(text, SO "a" TE);
    text.MakeUpper();
    EXPECT_EQ(text, SO "A" TE);  // 0x65, a small letter by itself, stays
    EXPECT_EQ(CString(TE "a").CompareNoCase(TE "A"), 0);
    EXPECT_NE(CString("\x83\x41").CompareNoCase("\x83\x61"), 0);
    CString cut("a\x83");
    cut.MakeReverse();  // a lead byte that nothing follows is a character of its own
    EXPECT_EQ(cut,
              "\x83"
              "a");
}

TEST(DoubleByteString, MessagesAreNotCutWithinACharacter) {
    CFileException error(CFileException::diskFull, -1, TE SO SU);
    char buffer[6];
    error.GetErrorMessage(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, TE SO);
}

}  // namespace
