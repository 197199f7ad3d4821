// Drives, names and code pages over the native file system, and what only it can show.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/transfer.h"
#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

using Converter = DWORD (*)(LPCSTR, LPSTR, DWORD);

std::string converted(Converter convert, const std::string& text) {
    char buffer[4096];
    return std::string(buffer, convert(text.c_str(), buffer, sizeof buffer));
}

std::string nativeOf(const std::string& path) { return converted(korNativePath, path); }
std::string windowsOf(const std::string& path) { return converted(korWindowsPath, path); }

TEST(NativeNames, DriveZIsTheRoot) {
    EXPECT_EQ(nativeOf("Z:\\"), "/");
    EXPECT_EQ(nativeOf("Z:\\usr"), "/usr");
    EXPECT_EQ(nativeOf("/usr/"), "/usr") << "rooted names are on the current drive";
    EXPECT_EQ(nativeOf("z:\\USR\\Bin\\missing\\X"), "/usr/bin/missing/X")
        << "what is missing keeps its spelling";
    EXPECT_EQ(nativeOf("nul"), "/dev/null");
    EXPECT_EQ(windowsOf("/"), "Z:\\");
    EXPECT_EQ(windowsOf("/a/../usr//x/./y/"), "Z:\\usr\\x\\y");
    EXPECT_EQ(windowsOf("/caf\xC3\xA9"), "Z:\\caf\xE9");
    EXPECT_EQ(nativeOf("Z:\\caf\xE9"), "/caf\xC3\xA9");
    const ScratchFolder scratch;
    char before[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, before);
    ASSERT_TRUE(SetCurrentDirectoryA(scratch.path().c_str()));
    EXPECT_EQ(windowsOf("x/y"), scratch.path("x\\y"));
    EXPECT_EQ(std::filesystem::current_path().string(), nativeOf(scratch.path())) << "the process went along";
    SetCurrentDirectoryA(before);
}

TEST(NativeNames, WhatCannotBeExpressedIsRefused) {
    struct Case {
        Converter convert;
        const char* text;
        DWORD error;
    };
    const Case cases[] = {
        {korWindowsPath, "", ERROR_PATH_NOT_FOUND},
        {korWindowsPath, "/\xE3\x81\x82", ERROR_INVALID_NAME},
        {korWindowsPath, "/a\xFF", ERROR_INVALID_NAME},
        {korWindowsPath, "/a:b", ERROR_INVALID_NAME},
        {korWindowsPath, "/a\\b", ERROR_INVALID_NAME},
        {korWindowsPath, "/a./b", ERROR_INVALID_NAME},
        {korNativePath, "", ERROR_PATH_NOT_FOUND},
        {korNativePath, "Q:\\x", ERROR_PATH_NOT_FOUND},
        {korNativePath, "Z:\\a*", ERROR_INVALID_NAME},
        {korNativePath, "\\\\server\\x", ERROR_BAD_NETPATH},
        {korNativePath, "com1", ERROR_FILE_NOT_FOUND},
        {korTextFromUtf8, "\xC0\x80", ERROR_NO_UNICODE_TRANSLATION},
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorAfter([&] { EXPECT_EQ(converted(c.convert, c.text), ""); }), c.error) << c.text;
    EXPECT_EQ(converted(korTextFromUtf8, "a\xE2\x82\xAC"), "a\x80");
    EXPECT_EQ(converted(korUtf8FromText, "a\x80\x81"), "a\xE2\x82\xAC\xC2\x81");
    char buffer[4] = "###";
    EXPECT_EQ(korNativePath("Z:\\usr", buffer, 4), 5u);
    EXPECT_STREQ(buffer, "###");
}

// A folder whose native files the platform's view is compared with.
class NativeFolder : public testing::Test {
  protected:
    NativeFolder() : native_(nativeOf(scratch_.path()) + "/") {}
    ~NativeFolder() override {
        std::error_code ignored;
        std::filesystem::remove_all(native_, ignored);
    }

    void make(const std::string& name) const { std::ofstream(native_ + name) << name; }

    ScratchFolder scratch_;
    std::string native_;
};

TEST_F(NativeFolder, TheExactNameComesFirstThenTheFirstByItsBytes) {
    for (const char* name : {"Name", "NAME", "name"})
        make(name);
    EXPECT_EQ(bytesOf(scratch_.path("name")), "name");
    EXPECT_EQ(bytesOf(scratch_.path("NAME")), "NAME");
    EXPECT_EQ(bytesOf(scratch_.path("nAME")), "NAME");
    make("\xC3\x84pfel");
    EXPECT_EQ(bytesOf(scratch_.path("\xE4PFEL")), "\xC3\x84pfel") << "also beyond ASCII";
}

TEST_F(NativeFolder, MovingChangesTheCaseOfAName) {
    make("name");
    EXPECT_TRUE(MoveFileA(scratch_.path("name").c_str(), scratch_.path("NAME").c_str()));
    EXPECT_EQ(namesOf(scratch_.path("*")), (std::vector<std::string>{".", "..", "NAME"}));
}

TEST_F(NativeFolder, LookUpsPassOverNamesThatAreNoneThereAndOverDevicesUnlessThePathTakesNoneForOne) {
    for (const char* name : {"plain", "\xE3\x81\x82", "a:b", "b\\c", "bad\xFF", "dot.", "blank ", "star*",
                             "con", "nul.c", "con1"})
        make(name);
    EXPECT_EQ(namesOf(scratch_.path("*")), (std::vector<std::string>{".", "..", "con1", "plain"}));
    EXPECT_EQ(namesOf("\\\\?\\" + scratch_.path("*n*")),
              (std::vector<std::string>{"con", "con1", "nul.c", "plain"}));
    EXPECT_EQ(bytesOf("\\\\?\\" + scratch_.path("con")), "con");
}

TEST_F(NativeFolder, WildCardsKeepTheSystemsRulesNextToDots) {
    for (const char* name : {"a", "ab", "abc", "a.b", "a.b.c", "noext", "x.txt"})
        make(name);
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"*.", {".", "..", "a", "ab", "abc", "noext"}},
        {"a??", {"a", "ab", "abc"}},
        {"?.?", {".", "a", "a.b"}},
        {"*.?", {".", "..", "a", "a.b", "a.b.c", "ab", "abc", "noext"}},
        {"*.*.c", {"a.b.c"}},
    };
    for (const auto& [pattern, names] : cases)
        EXPECT_EQ(namesOf(scratch_.path(pattern)), names) << pattern;
    // A pattern that makes a careless matcher try every division of the name.
    make(std::string(200, 'a'));
    std::string pattern;
    for (int star = 0; star < 60; ++star)
        pattern += "*a";
    EXPECT_TRUE(namesOf(scratch_.path(pattern + "b")).empty());
}

TEST_F(NativeFolder, ReadOnlyIsALackOfWritePermissionEvenToRoot) {
    make("file");
    const std::string path = scratch_.path("file");
    chmod((native_ + "file").c_str(), 0444);
    EXPECT_EQ(GetFileAttributesA(path.c_str()), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY);
    const DWORD denied = ERROR_ACCESS_DENIED;
    EXPECT_EQ(File(path.c_str(), GENERIC_WRITE, 0, OPEN_EXISTING).error(), denied);
    EXPECT_EQ(File(path.c_str(), GENERIC_WRITE, 0, CREATE_ALWAYS).error(), denied);
    EXPECT_TRUE(File(path.c_str(), GENERIC_READ, 0, OPEN_EXISTING).isOpen());
    make("other");
    EXPECT_FAILS(denied,
                 MoveFileExA(scratch_.path("other").c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING));
    EXPECT_FAILS(denied, CopyFileA(scratch_.path("other").c_str(), path.c_str(), FALSE));
    EXPECT_EQ(bytesOf(path), "file");
    EXPECT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL));
    struct stat status {};
    ASSERT_EQ(stat((native_ + "file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0644u);
    make(".hidden");
    EXPECT_EQ(GetFileAttributesA(scratch_.path(".hidden").c_str()),
              FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(NativeFolder, LinksAreFollowedButDeletedThemselves) {
    make("file");
    std::filesystem::create_symlink("file", native_ + "link");
    std::filesystem::create_symlink("nowhere", native_ + "dangling");
    EXPECT_EQ(bytesOf(scratch_.path("link")), "file");
    EXPECT_EQ(File(scratch_.path("dangling").c_str(), GENERIC_READ, 0, OPEN_EXISTING).error(),
              DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_TRUE(DeleteFileA(scratch_.path("link").c_str()));
    EXPECT_TRUE(DeleteFileA(scratch_.path("dangling").c_str()));
    EXPECT_EQ(bytesOf(scratch_.path("file")), "file");
}

// Runs the checks in a process of its own; its exit status is the number of the first that failed.
using Checks = std::function<bool()>;

int firstFailed(std::initializer_list<Checks> checks) {
    int number = 0;
    for (const Checks& check : checks) {
        ++number;
        if (!check()) return number;
    }
    return 0;
}

bool isRefused(const std::string& path, DWORD access, DWORD error) {
    const File file(path.c_str(), access, kShareAll, OPEN_EXISTING);
    return !file.isOpen() && file.error() == error;
}

TEST_F(NativeFolder, ShareModesHoldBetweenProcesses) {
    make("file");
    const std::string path = scratch_.path("file");
    File first(path.c_str(), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_TRUE(first.isOpen());
    for (const bool held : {true, false}) {
        const pid_t child = fork();
        if (child == 0) std::_Exit(isRefused(path, GENERIC_WRITE, ERROR_SHARING_VIOLATION) == held ? 0 : 1);
        int result = -1;
        waitpid(child, &result, 0);
        EXPECT_EQ(result, 0) << "held: " << held;
        first.close();
    }
}

std::string emptyHome() {
    std::string home = std::filesystem::temp_directory_path() / "korhome-XXXXXX";
    return mkdtemp(home.data()) ? home : std::string();
}

// Every way in which a name starts at the current folder.
bool relativeNamesAreRefused(DWORD error) {
    char text[MAX_PATH];
    WIN32_FIND_DATAA data;
    const auto fails = [error](bool succeeded) { return !succeeded && GetLastError() == error; };
    return fails(GetCurrentDirectoryA(MAX_PATH, text) != 0) && isRefused("new", GENERIC_WRITE, error) &&
           isRefused("Z:new", GENERIC_WRITE, error) && isRefused("..\\new", GENERIC_WRITE, error) &&
           fails(GetFullPathNameA("new", MAX_PATH, text, nullptr) != 0) &&
           fails(FindFirstFileA("*", &data) != INVALID_HANDLE_VALUE) &&
           fails(CreateDirectoryA("new", nullptr)) && fails(SetCurrentDirectoryA("new")) &&
           fails(!windowsOf("new").empty());
}

TEST(NativeWorkingFolder, WithoutANameRefusesWhatStartsThereUntilAnotherIsSet) {
    const auto inNewProcess = [] {
        const std::string home = emptyHome(), good = windowsOf(home);
        const std::string foreign = home + "/\xE3\x81\x82", deleted = home + "/deleted";
        const auto absoluteNamesWork = [&] {
            std::ofstream(home + "/file") << "x";
            return bytesOf(good + "\\file") == "x" && bytesOf(good.substr(2) + "\\FILE") == "x";
        };
        const int failed = firstFailed({
            [&] { return mkdir(foreign.c_str(), 0700) == 0 && chdir(foreign.c_str()) == 0; },
            [] { return relativeNamesAreRefused(ERROR_INVALID_NAME); },
            absoluteNamesWork,
            [&] { return SetCurrentDirectoryA(good.c_str()) && windowsOf("x") == good + "\\x"; },
            [&] { return mkdir(deleted.c_str(), 0700) == 0 && SetCurrentDirectoryA("deleted"); },
            [&] { return rmdir(deleted.c_str()) == 0 && relativeNamesAreRefused(ERROR_PATH_NOT_FOUND); },
            absoluteNamesWork,
            [&] { return SetCurrentDirectoryA(good.c_str()) && bytesOf("file") == "x"; },
            [&] { return SetCurrentDirectoryA("C:\\") && chdir(foreign.c_str()) == 0; },
            [&] { return nativeOf("Z:x") == home + "/x"; },
        });
        std::filesystem::remove_all(home);
        std::_Exit(failed);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

TEST(NativeWorkingFolder, FollowsTheHostOnDriveZ) {
    const auto inNewProcess = [] {
        const std::string home = emptyHome(), path = windowsOf(home);
        std::filesystem::create_directory(home + "/sub");
        std::filesystem::create_directory_symlink("sub", home + "/link");
        const int failed = firstFailed({
            [&] { return SetCurrentDirectoryA((path + "\\link").c_str()); },
            [&] { return windowsOf("x") == path + "\\link\\x"; },
            [&] { return chdir(home.c_str()) == 0 && windowsOf("x") == path + "\\x"; },
            [&] { return nativeOf("z:x") == home + "/x"; },
            [&] { return chdir("/") == 0 && windowsOf("x") == "Z:\\x"; },
            [&] { return SetCurrentDirectoryA("C:\\") && chdir(home.c_str()) == 0; },
            [&] { return windowsOf("x").ends_with("\\drive_c\\x"); },
        });
        std::filesystem::remove_all(home);
        std::_Exit(failed);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

void becomeUserWithoutVariables(uid_t user) {
    for (const char* name : {"KORUTIL_HOME", "XDG_DATA_HOME", "HOME"})
        unsetenv(name);
    if (setuid(user) != 0) std::_Exit(99);
}

// As a user who may not write to the folder: asking for the drive would make it.
TEST(NativeHome, WithoutAVariableIsTheAccounts) {
    const passwd* account = getpwnam("daemon");
    if (getuid() != 0 || !account) GTEST_SKIP() << "only root can become another user";
    const std::string expected = account->pw_dir + std::string("/.local/share/korutil/drive_c/x");
    const auto inNewProcess = [&](const char* variable) {
        becomeUserWithoutVariables(account->pw_uid);
        if (variable) setenv("HOME", variable, 1);
        std::_Exit(nativeOf("C:\\x") == expected ? 0 : 1);
    };
    for (const char* variable : {static_cast<const char*>(nullptr), "", "relative"})
        EXPECT_EXIT(inNewProcess(variable), testing::ExitedWithCode(0), "");
}

TEST(NativeHome, OfAUserWithoutAnAccountHasNoDriveC) {
    constexpr uid_t kNobodysNumber = 3999999999;
    if (getuid() != 0 || getpwuid(kNobodysNumber)) GTEST_SKIP() << "only root can become such a user";
    const auto inNewProcess = [] {
        becomeUserWithoutVariables(kNobodysNumber);
        std::_Exit(firstFailed({
            [] { return isRefused("C:\\x", GENERIC_READ, ERROR_PATH_NOT_FOUND); },
            [] { return (GetLogicalDrives() & 1u << 2) == 0; },
        }));
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

TEST(NativeHome, HoldsDriveCAndTheOtherDrives) {
    const auto inNewProcess = [] {
        const std::string home = emptyHome();
        std::filesystem::create_directories(home + "/data/Sub");
        std::ofstream(home + "/drives.conf")
            << "# drives\nD: " << home << "/data/\n d : relative\nC: /tmp\nnonsense\nE:\n";
        setenv("KORUTIL_HOME", (home + "/").c_str(), 1);
        const int failed = firstFailed({
            [&] { return !std::filesystem::exists(home + "/drive_c"); },
            [&] { return nativeOf("D:\\sub\\x") == home + "/data/Sub/x"; },
            [&] { return nativeOf("C:\\x") == home + "/drive_c/x"; },
            [&] { return std::filesystem::is_directory(home + "/drive_c/WINDOWS/SYSTEM32"); },
            [&] { return (GetLogicalDrives() & 0x3FFFFFF) == (1u << 2 | 1u << 3 | 1u << 25); },
            [&] { return nativeOf("E:\\").empty() && GetLastError() == ERROR_PATH_NOT_FOUND; },
            [&] { return SetCurrentDirectoryA("D:\\sub") && nativeOf("x") == home + "/data/Sub/x"; },
            [&] { return SetCurrentDirectoryA("C:\\") && nativeOf("D:x") == home + "/data/Sub/x"; },
            [&] { return windowsOf("x") == windowsOf(home + "/drive_c/x"); },
        });
        std::filesystem::remove_all(home);
        std::_Exit(failed);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

TEST(NativeHome, ADoubleByteCodePageNamesFilesInIt) {
    const auto inNewProcess = [] {
        const std::string folder = emptyHome() + "/";
        setenv("KORUTIL_CODEPAGE", "932", 1);
        std::ofstream(folder + "\xE3\x82\xBD") << "so";  // its second byte in the code page is a backslash
        std::ofstream(folder + "caf\xC3\xA9") << "lacking";
        const std::string path = windowsOf(folder) + "\\\x83\x5C";
        const int failed = firstFailed({
            [&] { return GetACP() == 932; },
            [&] { return bytesOf(path) == "so"; },
            [&] {
                return namesOf(windowsOf(folder) + "\\*") == std::vector<std::string>{".", "..", "\x83\x5C"};
            },
            [&] { return windowsOf(folder + "\xE3\x82\xBD") == path; },
            [&] { return isRefused(path + "\x81", GENERIC_READ, ERROR_INVALID_NAME); },
            [&] { return CharNextA("\x83\x5Cx")[0] == 'x'; },
            [so = "\x83\x5C"] { return CharPrevA(so, so + 2) == so; },
        });
        std::filesystem::remove_all(folder);
        std::_Exit(failed);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

TEST(NativeHome, Utf8IsACodePageToo) {
    const auto inNewProcess = [] {
        setenv("KORUTIL_CODEPAGE", "65001", 1);
        const bool named = nativeOf("Z:\\\xE3\x81\x82\xC3\xA4") == "/\xE3\x81\x82\xC3\xA4";
        std::_Exit(named && nativeOf("Z:\\\xE3\x81").empty() && GetLastError() == ERROR_INVALID_NAME ? 0 : 1);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

// A raw call that moves what its script says: a count, or a negative errno.
struct ScriptedCalls {
    std::vector<ssize_t> script;
    std::vector<std::size_t> asked;

    ssize_t operator()(const char*, std::size_t count) {
        asked.push_back(count);
        const ssize_t next = script.at(asked.size() - 1);
        if (next >= 0) return next;
        errno = static_cast<int>(-next);
        return -1;
    }
};

TEST(Transfers, GoOnAfterShortAndInterruptedCalls) {
    constexpr ssize_t kGiga = ssize_t{1} << 30;
    struct Case {
        const char* name;
        std::size_t count;
        bool once;
        std::vector<ssize_t> script;
        std::size_t done;
        int error;
    };
    const Case cases[] = {
        {"all at once", 10, false, {10}, 10, 0},
        {"interrupted", 10, false, {-EINTR, 4, -EINTR, -EINTR, 6}, 10, 0},
        {"the end", 10, false, {7, 0}, 7, 0},
        {"a failure keeps the count", 10, false, {7, -ENOSPC}, 7, ENOSPC},
        {"once, interrupted", 10, true, {-EINTR, 3}, 3, 0},
        {"large", 3 * std::size_t{kGiga}, false, {kGiga, kGiga, kGiga}, 3 * std::size_t{kGiga}, 0},
        {"nothing", 0, false, {}, 0, 0},
    };
    for (const Case& c : cases) {
        ScriptedCalls calls{c.script, {}};
        // The address is only handed on: nothing of three gigabytes is touched.
        const kor::Transfer transfer =
            kor::transferAll(std::ref(calls), reinterpret_cast<const char*>(0x1000), c.count, c.once);
        EXPECT_EQ(transfer.done, c.done) << c.name;
        EXPECT_EQ(transfer.error, c.error) << c.name;
        EXPECT_EQ(calls.asked.size(), c.script.size()) << c.name;
        for (const std::size_t asked : calls.asked)
            EXPECT_LE(asked, std::size_t{kGiga}) << c.name;
    }
}

TEST(Transfers, AFullDeviceIsToldWithWhatWasWritten) {
    const File full("Z:\\dev\\full", GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    ASSERT_TRUE(full.isOpen());
    DWORD done = 99;
    EXPECT_FAILS(ERROR_DISK_FULL, WriteFile(full.get(), "abc", 3, &done, nullptr));
    EXPECT_EQ(done, 0u);
}

}  // namespace
