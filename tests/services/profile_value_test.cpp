// Doubles, rows of doubles and blocks of bytes.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <vector>

#include "korutil/profile.h"
#include "platform/win32.h"
#include "tests/services/profiles.h"

using kor::test::Profiles;

namespace {

// What is read from some texts, with 99 for the default, one behind the other.
std::string doublesFrom(const std::vector<const char*>& texts) {
    std::ostringstream read;
    read.imbue(std::locale::classic());
    for (const char* text : texts) {
        EXPECT_TRUE(appWriteProfileString("S", "d", text, 1, nullptr));
        read << appGetProfileDouble("S", "d", 99, 0, nullptr) << ' ';
    }
    return read.str();
}

// A row read over the defaults 91 to 94: the count, then the values.
std::string rowFrom(const char* text, int count) {
    const double defaults[4] = {91, 92, 93, 94};
    double values[4] = {};
    EXPECT_TRUE(appWriteProfileString("S", "a", text, 1, nullptr));
    std::ostringstream read;
    read << appGetProfileDblArray("S", "a", defaults, values, count, 0, nullptr) << ':';
    for (const double value : values)
        read << ' ' << value;
    return read.str();
}

// A block of three bytes read over 9, 9, 9: the result, then the bytes.
std::string structFrom(const char* text, DWORD size) {
    BYTE bytes[3] = {9, 9, 9};
    EXPECT_TRUE(appWriteProfileString("S", "b", text, 1, nullptr));
    std::ostringstream read;
    read << appGetProfileStruct("S", "b", bytes, size, 0, nullptr) << ':';
    for (const BYTE byte : bytes)
        read << ' ' << int{byte};
    return read.str();
}

}  // namespace

TEST(ProfileDouble, IsReadWhenTheTextLooksLikeANumber) {
    const Profiles profiles;
    EXPECT_EQ(doublesFrom({"-.5", "12abc", "+3", ".25", "1.e+002", "7,5", "\"8\""}),
              "-0.5 12 3 0.25 100 7 8 ");
    EXPECT_EQ(doublesFrom({"", "e5", "-", "+.", ".", "- 1", "--1", "nan"}), "99 99 99 99 99 99 99 99 ");
    EXPECT_EQ(doublesFrom({"0x10", "1e999", "-1.#INF"}), "0 inf -inf ");
    EXPECT_EQ(doublesFrom({(std::string(126, '0') + "12").c_str()}), "1 ") << "127 characters are read";
    EXPECT_EQ(appGetProfileDouble("S", "none", 99, 0, nullptr), 99);
}

TEST(ProfileDouble, IsWrittenInItsShortestForm) {
    const Profiles profiles;
    const double values[] = {5, 0.1, -2.5e-7, 1e20, 1.0 / 3};
    EXPECT_TRUE(appWriteProfileDblArray("S", "a", values, 5, 3, nullptr));
    EXPECT_EQ(Profiles::valueIn(profiles.user(), "a"), "5,0.1,-2.5e-007,1e+020,0.333333333333333");
    EXPECT_EQ(Profiles::valueIn(profiles.application(), "a"), "5,0.1,-2.5e-007,1e+020,0.333333333333333");
    EXPECT_TRUE(appWriteProfileDouble("S", "d", 1e20, 0, nullptr));
    EXPECT_EQ(Profiles::valueIn(profiles.user(), "d"), "1e+020");
    EXPECT_TRUE(appWriteProfileDblArray("S", "a", values, 0, 1, nullptr));
    EXPECT_EQ(Profiles::valueIn(profiles.user(), "a"), "");
}

TEST(ProfileRow, EndsAtTheFirstThingThatIsNoNumber) {
    const Profiles profiles;
    EXPECT_EQ(rowFrom("1.5,2.5,,3", 4), "2: 1.5 2.5 93 94");
    EXPECT_EQ(rowFrom("1,2,3,4,5,6", 4), "4: 1 2 3 4");
    EXPECT_EQ(rowFrom("-1e2, 2", 4), "1: -100 92 93 94");
    EXPECT_EQ(rowFrom("1;2", 4), "1: 1 92 93 94");
    EXPECT_EQ(rowFrom("", 4), "0: 91 92 93 94");
    EXPECT_EQ(rowFrom("7,8", 1), "1: 7 0 0 0");
    EXPECT_EQ(rowFrom("7,8", 0), "0: 0 0 0 0");
    EXPECT_EQ(rowFrom("7,8", -1), "-1: 0 0 0 0");
}

TEST(ProfileStruct, IsReadOnlyInItsOwnLength) {
    const Profiles profiles;
    const BYTE data[3] = {0x01, 0xAB, 0xFF};
    EXPECT_TRUE(appWriteProfileStruct("S", "b", data, 3, 0, nullptr));
    EXPECT_EQ(Profiles::valueIn(profiles.user(), "b"), "01ABFF");
    EXPECT_EQ(structFrom("01abff", 3), "1: 1 171 255");
    for (const char* wrong : {"01ABF", "01ABFF0", "01ABFF00", ""})
        EXPECT_EQ(structFrom(wrong, 3), "0: 9 9 9") << wrong;
    EXPECT_EQ(structFrom("01AG02", 3), "0: 1 9 9") << "up to the bad digit";
    EXPECT_EQ(structFrom("", 0), "1: 9 9 9");
    EXPECT_EQ(structFrom("01", 0), "0: 9 9 9");
    EXPECT_FALSE(appGetProfileStruct("S", "b", nullptr, 0xFFFFFFFF, 0, nullptr));
    EXPECT_FALSE(appWriteProfileStruct("S", "b", data, 0x80000001, 0, nullptr));
}

TEST(ProfileStruct, HexadecimalNeedsRoomAndCapitals) {
    const BYTE data[2] = {0x0F, 0xF0};
    char text[6] = "-----";
    EXPECT_FALSE(utlStructToString(data, 2, text, 4));
    EXPECT_FALSE(utlStructToString(data, 0x80000000, text, 1)) << "nothing wraps";
    EXPECT_STREQ(text, "-----");
    EXPECT_TRUE(utlStructToString(data, 2, text, 5));
    EXPECT_STREQ(text, "0FF0");
    BYTE read[2] = {};
    EXPECT_TRUE(utlStringToStruct("0FF0x", 5, read, 2)) << "an odd last character does not count";
    EXPECT_EQ(read[0] << 8 | read[1], 0x0FF0);
    EXPECT_FALSE(utlStringToStruct("0ff0", 4, read, 2));
    EXPECT_FALSE(utlStringToStruct("0FF0", 4, read, 1));
}
