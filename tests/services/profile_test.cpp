// Names of the profiles, from which of them a read is answered, and which of them a write reaches.
#include "korutil/profile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "korutil/argument_list.h"
#include "korutil/lifecycle.h"
#include "platform/profile_limit.h"
#include "platform/win32.h"
#include "runtime/reserve.h"
#include "services/reserve_setting.h"
#include "tests/services/profiles.h"

namespace {

using kor::test::bytesOf;
using kor::test::Profiles;

const char* const kOwnText = MAKEINTRESOURCEA(10002);  // a string of the library's own
const char* const kNoText = MAKEINTRESOURCEA(65000);

// The text read, whether its length is another one than the result, and whether it is the user's.
std::string readString(const char* key, const char* defaultText, DWORD size, UINT_PTR selector) {
    char buffer[64] = "untouched";
    const DWORD length = appGetProfileString("S", key, defaultText, buffer, size, selector, nullptr);
    return buffer +
           std::string(length == std::strlen(buffer) ? "" : " with result " + std::to_string(length)) +
           (appFoundInUserProfile() ? " in user" : "");
}

}  // namespace

TEST(Profile, NamesAreKeptAndCutToWhatAPathMayHave) {
    const std::string longName(300, 'x');
    char application[MAX_PATH];
    char user[MAX_PATH];
    EXPECT_TRUE(appSetProfiles("C:\\A\\suite.INI", "c:\\a\\SUITE.ini")) << "letter case does not count";
    EXPECT_FALSE(appSetProfiles("C:\\A\\suite.ini", "C:\\A\\suite.in"));
    EXPECT_FALSE(appSetProfiles("C:\\A\\suite.ini", longName.c_str()));
    EXPECT_FALSE(appGetProfiles(application, nullptr));
    EXPECT_FALSE(appGetProfiles(nullptr, user));
    EXPECT_STREQ(application, "C:\\A\\suite.ini");
    EXPECT_EQ(user, longName.substr(0, 259));
    EXPECT_STREQ(appGetProfilePathname(), "C:\\A\\suite.ini");
    EXPECT_FALSE(appGetUserProfile(user, 259));
    EXPECT_STREQ(user, "");
    EXPECT_TRUE(appGetUserProfile(user, 260));
    EXPECT_TRUE(appSetProfiles(appGetProfilePathname(), appGetProfilePathname()));
    EXPECT_STREQ(appGetProfilePathname(), "C:\\A\\suite.ini") << "set to itself";
    EXPECT_FALSE(appGetUserProfile(user, 0));
}

TEST(Profile, WithoutANameTheApplicationProfileIsNamedAfterTheExecutable) {
    appSetProfiles("", "user.ini");
    char path[MAX_PATH];
    const std::string executable(path, GetModuleFileNameA(nullptr, path, MAX_PATH));
    const std::string folder = executable.substr(0, executable.rfind('\\') + 1);
    const std::string expected = executable.substr(0, executable.find('.', folder.size())) + ".ini";
    EXPECT_EQ(appGetProfilePathname(), expected);
    EXPECT_FALSE(appGetProfiles(path, nullptr));
    EXPECT_EQ(path, expected) << "kept";
    EXPECT_EQ(appGetExeDir(), folder);
    EXPECT_TRUE(utlMakeHelpPathName(path, MAX_PATH, "suite.hlp"));
    EXPECT_EQ(path, folder + "suite.hlp");
    EXPECT_FALSE(utlMakeHelpPathName(path, static_cast<DWORD>(folder.size()), nullptr));
    EXPECT_STREQ(path, "");
}

TEST(Profile, TheUsersRootFallsBackToTheHelpFiles) {
    char root[MAX_PATH];
    {
        const Profiles profiles("[System]\r\nRoot=C:\\Data\\\r\n");
        EXPECT_EQ(appGetUserRootDir(root, MAX_PATH), 1);
        EXPECT_STREQ(root, "C:\\Data");
        EXPECT_EQ(appGetUserRootDir(root, 4), 1);
        EXPECT_STREQ(root, "C:") << "cut, and its backslash taken off";
    }
    const Profiles profiles;
    EXPECT_EQ(appGetUserRootDir(root, MAX_PATH), 1);
    EXPECT_EQ(std::string(root) + '\\', appGetExeDir());
    EXPECT_EQ(appGetUserRootDir(root, 6), 1);
    EXPECT_EQ(root, std::string(appGetExeDir(), 5)) << "cut as well";
    EXPECT_EQ(appGetUserRootDir(root, 0), 0);
}

TEST(Profile, AStringFallsBackOnlyWhenTheUserProfileLacksTheKey) {
    const Profiles profiles("[S]\r\nboth=user\r\nempty=\r\n", "[S]\r\nboth=app\r\nempty=app\r\nonly=app\r\n");
    const UINT_PTR file = profileFile(profiles.application());
    EXPECT_EQ(readString("both", "d", 64, 0), "user in user");
    EXPECT_EQ(readString("both", "d", 64, 2), "app");
    EXPECT_EQ(readString("both", "d", 64, 4), "app") << "without bit 0";
    EXPECT_EQ(readString("both", "d", 64, file), "app");
    EXPECT_EQ(readString("empty", "d", 64, 3), " in user");
    EXPECT_EQ(readString("only", "d", 64, 3), "app");
    EXPECT_EQ(readString("only", "d", 64, 1), "d");
    EXPECT_EQ(readString("none", "d", 64, 3), "d");
    EXPECT_EQ(readString("none", nullptr, 64, 3), "");
    EXPECT_EQ(readString("none", "d", 64, file), "d");
    EXPECT_EQ(readString("both", "d", 3, 3), "us in user");
    EXPECT_EQ(readString("both", "d", 1, 3), " in user");
    EXPECT_EQ(readString("both", "d", 0, 3), "untouched with result 0");
    EXPECT_EQ(readString("none", "whole default", 1, 1), "whole default") << "required";
    EXPECT_EQ(readString("none", "cut default", 4, 3), "cut") << "by the read of the application profile";
    appSetProfiles(profiles.user(), profiles.user());
    EXPECT_EQ(readString("none", "whole default", 4, 3), "whole default") << "not read twice";
}

TEST(Profile, AnIntegerFallsBackOnlyWhenTheUserProfileLacksTheKey) {
    const Profiles profiles("[S]\r\nfive=5\r\nzero=0\r\ntext=abc\r\nempty=\r\n",
                            "[S]\r\nzero=6\r\ntext=6\r\nempty=6\r\nonly=-8x\r\n");
    const auto read = [](const char* key, UINT_PTR selector) {
        const int value = appGetProfileInt("S", key, 99, selector, nullptr);
        return std::to_string(value) + (appFoundInUserProfile() ? " in user" : "");
    };
    EXPECT_EQ(read("five", 0), "5 in user");
    EXPECT_EQ(read("five", 2), "99");
    EXPECT_EQ(read("five", profileFile(profiles.user())), "5");
    EXPECT_EQ(read("zero", 3), "0 in user");
    EXPECT_EQ(read("text", 3), "0 in user");
    EXPECT_EQ(read("empty", 3), "6");
    EXPECT_EQ(read("only", 3), "-8");
    EXPECT_EQ(read("only", 1), "99");
    EXPECT_EQ(read("none", profileFile(profiles.user())), "99");
}

TEST(Profile, ASelectorChoosesTheFilesThatAreWritten) {
    const struct {
        UINT_PTR selector;
        const char* user;
        const char* application;
    } cases[] = {
        {0, "7", "<none>"}, {1, "7", "<none>"}, {2, "<none>", "7"}, {3, "7", "7"}, {4, "<none>", "<none>"}};
    for (const auto& c : cases) {
        const Profiles profiles;
        EXPECT_EQ(appWriteProfileInt("S", "k", 7, c.selector, nullptr), 1) << c.selector;
        EXPECT_EQ(Profiles::valueIn(profiles.user(), "k"), c.user) << c.selector;
        EXPECT_EQ(Profiles::valueIn(profiles.application(), "k"), c.application) << c.selector;
    }
    const Profiles profiles;
    const std::string other = profiles.folder().path("other.ini");
    EXPECT_EQ(appWriteProfileInt("S", "k", -2147483647 - 1, profileFile(other.c_str()), nullptr), 1);
    EXPECT_EQ(Profiles::valueIn(other.c_str(), "k"), "-2147483648");
    EXPECT_EQ(bytesOf(profiles.user()), "");
    const std::string missing = profiles.folder().path("no folder\\user.ini");
    appSetProfiles(profiles.application(), missing.c_str());
    EXPECT_EQ(appWriteProfileString("S", "k", "v", 3, nullptr), 0);
    EXPECT_EQ(bytesOf(profiles.application()), "") << "not written after a failure";
    EXPECT_EQ(appWriteProfileString("S", nullptr, nullptr, profileFile(other.c_str()), nullptr), 1);
    EXPECT_EQ(bytesOf(other), "") << "without its section";
}

TEST(Profile, ATextThatTheSystemCannotTakeIsNotWritten) {
    const Profiles profiles("[S]\r\nk=old\r\n");
    std::string text(32766, 'x');
    EXPECT_TRUE(appWriteProfileString("S", "k", text.c_str(), 1, nullptr));
    EXPECT_EQ(bytesOf(profiles.user()), "[S]\r\nk=" + text + "\r\n");
    text += 'x';
    const bool takes = text.size() <= kor::kLongestProfileText;
    EXPECT_EQ(appWriteProfileString("S", "k", text.c_str(), 1, nullptr), takes);
    EXPECT_EQ(appWriteProfileString("S", text.c_str(), "v", 1, nullptr), takes);
    EXPECT_EQ(appWriteProfileString(text.c_str(), "k", "v", 1, nullptr), takes);
    EXPECT_EQ(bytesOf(profiles.user()).size(), takes ? 98323u : 32775u);
}

TEST(Profile, NamesMayBeNumbersOfStrings) {
    const Profiles profiles;
    char text[MAX_PATH];
    ASSERT_GT(LoadStringA(GetModuleHandleA("KorUtil"), 10002, text, MAX_PATH), 0);
    EXPECT_EQ(appWriteProfileString(kOwnText, "k", "v", 1, nullptr), 1);
    EXPECT_EQ(appGetProfileInt("S", kOwnText, 3, 0, GetModuleHandleA("KorUtil")), 3);
    char value[MAX_PATH];
    EXPECT_EQ(appGetProfileString(text, "k", "", value, MAX_PATH, 1, nullptr), 1u);
    EXPECT_EQ(appGetProfileString("S", "none", kOwnText, value, MAX_PATH, 0, nullptr), std::strlen(text));
    EXPECT_STREQ(value, text);
    const std::string before = bytesOf(profiles.user());
    EXPECT_EQ(appWriteProfileString("S", kNoText, "v", 1, nullptr), 0);
    EXPECT_EQ(appWriteProfileInt(kNoText, "k", 1, 1, nullptr), 0);
    EXPECT_EQ(bytesOf(profiles.user()), before);
    EXPECT_EQ(appGetProfileInt("S", kNoText, 3, 0, nullptr), 0) << "not the default";
    EXPECT_EQ(appGetProfileString("S", "k", kNoText, value, MAX_PATH, 0, nullptr), 0u);
    EXPECT_EQ(appVScanProfileString("S", "k", 0, kNoText, nullptr, nullptr), 0);
    EXPECT_EQ(appVPrintProfileString("S", "k", 0, kNoText, nullptr, nullptr), 0);
}

TEST(Profile, ASinglePathIsStoredRelativeToItsFileAndAListAbsolute) {
    const Profiles profiles;
    const std::string& folder = profiles.folder().path();
    const std::string deep = folder + "\\Data\\Image.tif";
    const std::string list = deep + ";Data\\b.tif";
    char path[MAX_PATH];
    const struct {
        const std::string value;
        const std::string stored;
        int count;
        const std::string read;
    } cases[] = {{deep, "Data\\Image.tif", 1, deep},
                 {list, deep + ";" + folder + "\\Data\\b.tif", 2, deep + ";" + folder + "\\Data\\b.tif"},
                 {"", "", 0, ""},
                 {"Sub\\c.tif", "Sub\\c.tif", 1, folder + "\\Sub\\c.tif"}};
    for (const auto& c : cases) {
        EXPECT_EQ(appWriteProfilePaths("S", "p", c.value.c_str(), 3, nullptr), 1) << c.value;
        EXPECT_EQ(Profiles::valueIn(profiles.user(), "p"), c.stored);
        EXPECT_EQ(Profiles::valueIn(profiles.application(), "p"), c.stored);
        EXPECT_EQ(appGetProfilePaths("S", "p", "", path, MAX_PATH, 0, nullptr), c.count) << c.value;
        EXPECT_EQ(path, c.read);
    }
    EXPECT_EQ(appGetProfilePaths("S", "none", "d.tif", path, MAX_PATH, 0, nullptr), 1);
    EXPECT_EQ(path, folder + "\\d.tif") << "a default is relative to the application profile";
    EXPECT_EQ(appGetProfilePaths("S", "p", "", path, 12, 0, nullptr), 0) << "its absolute form does not fit";
    EXPECT_STREQ(path, "Sub\\c.tif");
    appSetProfiles("", "no folder.ini");
    for (const char* text : {"a;b", "a", ";"}) {
        EXPECT_EQ(appGetProfilePaths("S", "none", text, path, MAX_PATH, 1, nullptr), 0);
        EXPECT_STREQ(path, text);
    }
    appSetProfiles(profiles.application(), profiles.user());
    EXPECT_EQ(appWriteProfilePaths("S", "p", std::string(40000, 'x').c_str(), 1, nullptr), 0);
    EXPECT_EQ(Profiles::valueIn(profiles.user(), "p"), "Sub\\c.tif");
    EXPECT_EQ(appWriteProfilePaths("S", "p", nullptr, 3, nullptr), 1);
    EXPECT_EQ(Profiles::valueIn(profiles.application(), "p"), "<none>");
}

TEST(Profile, ValuesAreFormattedAndScanned) {
    const Profiles profiles;
    EXPECT_EQ(appPrintProfileString("S", "f", 1, "%d;%s;%.2f", 42, "cell", 0.5), 12);
    EXPECT_EQ(Profiles::valueIn(profiles.user(), "f"), "42;cell;0.50");
    int number = 0;
    char name[260] = "";
    double value = 0;
    EXPECT_EQ(appScanProfileString("S", "f", 0, "%d;%[a-z];%lf", &number, name, &value), 3);
    EXPECT_EQ(number, 42);
    EXPECT_STREQ(name, "cell");
    EXPECT_EQ(value, 0.5);
    KorArgumentList arguments;
    arguments.add(&number);
    EXPECT_EQ(appVScanProfileString("S", "none", 0, "%d", arguments.arguments(), nullptr), 0);
    EXPECT_EQ(appVScanProfileString("S", "f", 0, nullptr, arguments.arguments(), nullptr), 0);
    EXPECT_EQ(appVPrintProfileString("S", "f", 1, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(appPrintProfileString("S", "f", 1, "%s", std::string(400, 'x').c_str()), 259);
    EXPECT_EQ(Profiles::valueIn(profiles.user(), "f"), std::string(259, 'x'));
}

namespace {

struct Walk {
    std::string visits;  // selector, key, tail and index of each
    int stopAt = 0;
    int count = 0;
};

int KORUTIL_CALL visit(ProfileEnumRecord* record) {
    auto& walk = *reinterpret_cast<Walk*>(record->userData);
    EXPECT_STREQ(record->section, "S");
    EXPECT_TRUE(std::all_of(record->reserved, record->reserved + 5, [](UINT_PTR word) { return word == 0; }));
    walk.visits += (record->selector < 0x10000 ? std::to_string(record->selector) : "file") + " " +
                   record->key + " " + record->keyTail + " " + std::to_string(record->index) + ", ";
    return ++walk.count == walk.stopAt ? 0 : 2;
}

// The visits, then the result and the found-in-user flag.
std::string walk(const char* prefix, UINT_PTR selector, int stopAt = 0) {
    Walk walk;
    walk.stopAt = stopAt;
    const int result =
        appEnumProfileKeys("S", prefix, visit, reinterpret_cast<UINT_PTR>(&walk), selector, nullptr);
    return walk.visits + std::to_string(result) + " " + std::to_string(appFoundInUserProfile());
}

}  // namespace

TEST(Profile, EnumerationNeverMixesTheTwoProfiles) {
    const Profiles profiles("[S]\r\nitem1=a\r\nItemx=b\r\nIt=c\r\n", "[S]\r\nItem9=d\r\nOther=e\r\n");
    EXPECT_EQ(walk("Item", 0), "1 item1 1 1, 1 Itemx x 2, 1 1");
    EXPECT_EQ(walk("Item", 2), "2 Item9 9 1, 1 0");
    EXPECT_EQ(walk("Item", 4), "2 Item9 9 1, 1 0") << "neither bit: as for reads";
    EXPECT_EQ(walk("Item", 5), "1 item1 1 1, 1 Itemx x 2, 1 1");
    EXPECT_EQ(walk("OTHER", 3), "2 Other  1, 1 0");
    EXPECT_EQ(walk("OTHER", 1), "1 0");
    EXPECT_EQ(walk("none", 3), "1 0");
    EXPECT_EQ(walk(nullptr, 3, 2), "1 item1 item1 1, 1 Itemx Itemx 2, 0 1");
    EXPECT_EQ(walk("", profileFile(profiles.application())), "file Item9 Item9 1, file Other Other 2, 1 0");
    EXPECT_EQ(appEnumProfileKeys(nullptr, "", visit, 0, 0, nullptr), 0);
    EXPECT_EQ(appEnumProfileKeys("", "", visit, 0, 0, nullptr), 0);
}

TEST(Profile, EnumerationOfTooManyNamesVisitsOnlyWholeOnes) {
    std::string text = "[S]\r\n";
    for (int number = 10000; number < 20000; ++number)
        text += "key" + std::to_string(number) + "=v\r\n";
    const Profiles profiles(text);
    const std::string visits = walk("key", 1);
    const std::string end = "1 key16825 16825 6826, 1 1";
    EXPECT_EQ(visits.substr(visits.size() - end.size()), end) << "61438 characters hold 6826 names";
}

TEST(ReserveSetting, IsAnUnsignedNumberInTheProfile) {
    const struct {
        const char* stored;
        DWORD size;
    } cases[] = {
        {"5000000", 10000000}, {"30000000", 30000000}, {"4000000000", 4000000000}, {"no number", 10000000}};
    for (const auto& c : cases) {
        const Profiles profiles("", std::string("[System]\r\nReserve-Memory=") + c.stored + "\r\n");
        kor::ReserveSize reserve;
        reserve.keepIn(&kor::reserveSetting());
        EXPECT_EQ(reserve.get(), c.size) << c.stored;
    }
    const Profiles profiles;
    EXPECT_NE(appSetReserveSizeForVirtualAlloc(0), 0);
    EXPECT_EQ(bytesOf(profiles.user()), "[System]\r\nReserve-Memory=10000000\r\n");
    appSetProfiles("", "");
    EXPECT_EQ(appSetReserveSizeForVirtualAlloc(20000000), 0) << "there is no profile to keep it";
    EXPECT_EQ(appGetReserveSizeForVirtualAlloc(), 20000000u);
}
