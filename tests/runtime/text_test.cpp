// Strings from resources, splitting, searching, buffers in one block.
#include "korutil/text.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"
#include "tests/support/shown_warnings.h"

namespace {

std::string split(const char* text, const char* separator) {
    CStringArray array;
    array.Add(text);
    strSplit(array[0], array, separator);  // a result may be the text
    std::string parts;
    for (int i = 0; i < array.GetSize(); ++i)
        parts += std::string("[").append(array[i]) + "]";
    return parts;
}

TEST(Split, EndsAtAnEmptyField) {
    EXPECT_EQ(split("a,b,,c", ","), "[a][b][,c]");
    EXPECT_EQ(split(",a", ","), "[,a]");
    EXPECT_EQ(split("a,", ","), "[a][]");
    EXPECT_EQ(split("a b", ""), "[a b]");
    EXPECT_EQ(split("1; 2;3", "; "), "[1][2;3]");
    CString left("name.ext"), right;
    EXPECT_EQ(strSplitFromEnd(left, left, right, '.'), 4);
    EXPECT_TRUE(left == "name" && right == "ext");
    EXPECT_EQ(strSplitFromEnd("a.b", right, left, '/'), -1);
    EXPECT_TRUE(left.IsEmpty() && right.IsEmpty());
}

TEST(FindWithoutCase, GivesThePlaceInTheGivenText) {
    const char* const text = "a r\xE4tseL";
    EXPECT_EQ(_tcsistr(text, "R\xC4TSEL"), text + 2);
    EXPECT_EQ(_tcsistr(text, "raetsel"), nullptr);
    EXPECT_EQ(_tcsistr(nullptr, "a"), nullptr);
}

TEST(TextBlock, HoldsThePiecesInOrder) {
    char *first, *second;
    void* block = strAlloc(2, &first, DWORD{10}, &second, DWORD{5});
    ASSERT_TRUE(block && first == block && second == first + 10);
    EXPECT_EQ(std::string(first, 15 + 8), std::string(15 + 8, '\0'));
    strFree(block);
    EXPECT_EQ(strAlloc(2, &first, DWORD{10}, nullptr, DWORD{5}), nullptr);
    EXPECT_EQ(first, nullptr);
}

TEST(StringResource, IsCutToItsTargetAndMissedWithAWarning) {
    kor::test::ShownWarnings shown;
    const HMODULE module = LoadLibraryA("StringTexts.dll");
    const struct {
        UINT id;
        int size, length;
        const char* text;
    } cases[] = {{1, 9, 3, "One"}, {1, 4, 3, "One"},       {1, 3, 3, "On"},
                 {1, 1, 3, ""},    {1, 0, 3, "#########"}, {1, -1, 3, "#########"},
                 {2, 9, 0, ""},    {1584, 9, 2, "AB"},     {1585, 9, 0, ""}};
    for (const auto& each : cases) {
        char buffer[10] = "#########";
        EXPECT_EQ(utlLoadString(module, each.id, buffer, each.size), each.length) << each.id;
        EXPECT_STREQ(buffer, each.text) << each.id << " in " << each.size;
        EXPECT_EQ(buffer[8], '#') << each.size;
    }
    for (const UINT id : {100u, 65535u, 65536u + 1}) {
        EXPECT_EQ(utlLoadString(module, id, nullptr, 0), 0);
        EXPECT_NE(shown.takeOne().text.find(std::to_string(id)), std::string::npos);
    }
    CString text;
    for (const BOOL direct : {TRUE, FALSE}) {
        EXPECT_EQ(strLoadString(module, 33, text, direct), 256) << "of 300";
        EXPECT_EQ(text.Mid(248), "062.063.");
        EXPECT_EQ(strLoadString(module, 100, text, direct), 0);
        EXPECT_EQ(shown.take().size(), direct ? 1u : 0u);
    }
    FreeLibrary(module);
}

}  // namespace
