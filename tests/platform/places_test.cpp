// Full names, the current folder, the folders that have a role, and drives.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

std::string fullName(const char* name, std::string* part = nullptr) {
    char buffer[MAX_PATH];
    std::memset(buffer, '#', sizeof buffer);
    char* last = nullptr;
    const DWORD length = GetFullPathNameA(name, MAX_PATH, buffer, &last);
    if (part) *part = last ? last : "(none)";
    return std::string(buffer, length);
}

TEST(FullPathName, IsPlain) {
    struct Case {
        const char *name, *full, *part;
    };
    const Case cases[] = {
        {"C:\\a\\b", "C:\\a\\b", "b"},
        {"c:/x//y", "c:\\x\\y", "y"},
        {"C:\\a\\.\\b\\..\\c", "C:\\a\\c", "c"},
        {"C:\\..\\..\\a", "C:\\a", "a"},
        {"C:\\a\\", "C:\\a\\", "(none)"},
        {"C:\\", "C:\\", "(none)"},
        {"C:\\a.", "C:\\a", "a"},
        {"C:\\a. .", "C:\\a", "a"},
        {"C:\\a \\b", "C:\\a \\b", "b"},
        {"\\\\server\\share\\..\\..\\b", "\\\\server\\share\\b", "b"},
        {"nul", "\\\\.\\nul", "(none)"},
        {"C:\\x\\aux.c", "\\\\.\\aux", "(none)"},
        {"C:\\com0", "C:\\com0", "com0"},
    };
    for (const Case& c : cases) {
        std::string part;
        EXPECT_EQ(fullName(c.name, &part), c.full);
        EXPECT_EQ(part, c.part) << c.name;
    }
    EXPECT_EQ(GetFullPathNameA("", 0, nullptr, nullptr), 0u);
}

class CurrentFolder : public testing::Test {
  protected:
    CurrentFolder() {
        GetCurrentDirectoryA(MAX_PATH, before_);
        SetCurrentDirectoryA(scratch_.path().c_str());
    }
    ~CurrentFolder() override { SetCurrentDirectoryA(before_); }

    ScratchFolder scratch_;
    char before_[MAX_PATH] = {};
};

TEST_F(CurrentFolder, RelativeNamesStartThere) {
    scratch_.file("f", "x");
    const std::string drive = scratch_.path().substr(0, 2);
    EXPECT_EQ(fullName("a\\b"), scratch_.path("a\\b"));
    EXPECT_EQ(fullName("."), scratch_.path());
    EXPECT_EQ(fullName("\\a"), drive + "\\a");
    EXPECT_EQ(fullName((drive + "a").c_str()), scratch_.path("a"));
    EXPECT_EQ(bytesOf("f"), "x");
    const auto length = static_cast<DWORD>(scratch_.path().size());
    char buffer[MAX_PATH];
    EXPECT_EQ(GetCurrentDirectoryA(length + 1, buffer), length);
    EXPECT_EQ(std::string(buffer), scratch_.path());
    for (const DWORD size : {length, DWORD{0}})
        EXPECT_EQ(GetCurrentDirectoryA(size, buffer), length + 1);
    EXPECT_EQ(GetFullPathNameA(".", length, buffer, nullptr), length + 1);
    EXPECT_EQ(bytesOf(drive + "F"), "x");
}

TEST_F(CurrentFolder, ARefusedChangeChangesNothing) {
    scratch_.file("f");
    EXPECT_FAILS(ERROR_FILE_NOT_FOUND, SetCurrentDirectoryA("missing"));
    EXPECT_FAILS(ERROR_PATH_NOT_FOUND, SetCurrentDirectoryA("missing\\x"));
    EXPECT_FAILS(ERROR_DIRECTORY, SetCurrentDirectoryA("f"));
    EXPECT_FAILS(ERROR_INVALID_NAME, SetCurrentDirectoryA(""));
    EXPECT_EQ(fullName("."), scratch_.path());
    scratch_.folder("sub");
    EXPECT_TRUE(SetCurrentDirectoryA("sub\\"));
    EXPECT_EQ(fullName("."), scratch_.path("sub"));
    EXPECT_TRUE(SetCurrentDirectoryA(".."));
    EXPECT_EQ(fullName("."), scratch_.path());
}

TEST(Places, RolesHaveTheirFolders) {
    char buffer[MAX_PATH];
    const DWORD length = GetTempPathA(MAX_PATH, buffer);
    ASSERT_GT(length, 0u);
    EXPECT_EQ(buffer[length - 1], '\\');
    EXPECT_TRUE(GetFileAttributesA(buffer) & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(GetTempPathA(length, buffer), length + 1);

    char windows[MAX_PATH];
    char system[MAX_PATH];
    ASSERT_GT(GetWindowsDirectoryA(windows, MAX_PATH), 0u);
    ASSERT_GT(GetSystemDirectoryA(system, MAX_PATH), 0u);
    EXPECT_EQ(std::string(windows).substr(0, 3), "C:\\");
    EXPECT_STRNE(windows, system);
    EXPECT_TRUE(GetFileAttributesA(system) & FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(GetWindowsDirectoryA(buffer, 3), std::strlen(windows) + 1);
}

TEST(Places, LongNamesAreSpelledAsOnDisk) {
    const ScratchFolder scratch;
    scratch.file("Name.Txt");
    char buffer[MAX_PATH];
    const std::string asked = scratch.path("nAME.tXT"), spelled = scratch.path("Name.Txt");
    EXPECT_EQ(GetLongPathNameA(asked.c_str(), buffer, MAX_PATH), spelled.size());
    EXPECT_EQ(std::string(buffer), spelled);
    EXPECT_FAILS(ERROR_FILE_NOT_FOUND, GetLongPathNameA(scratch.path("none").c_str(), buffer, MAX_PATH));
    EXPECT_EQ(GetLongPathNameA(asked.c_str(), buffer, 2), spelled.size() + 1);
}

TEST(Places, TemporaryNamesAreNewAndTheirFilesMade) {
    const ScratchFolder scratch;
    char first[MAX_PATH];
    char second[MAX_PATH];
    EXPECT_NE(GetTempFileNameA(scratch.path().c_str(), "prefix", 0, first), 0u);
    EXPECT_NE(GetTempFileNameA(scratch.path().c_str(), "prefix", 0, second), 0u);
    EXPECT_STRNE(first, second);
    EXPECT_EQ(bytesOf(first), "");
    EXPECT_EQ(std::string(first).find(scratch.path("pre")), 0u);
    EXPECT_EQ(GetTempFileNameA((scratch.path() + "\\").c_str(), "p", 0x12345, first), 0x2345u);
    EXPECT_EQ(std::string(first), scratch.path("p2345.tmp"));
    EXPECT_EQ(GetFileAttributesA(first), INVALID_FILE_ATTRIBUTES) << "a given number makes no file";
    EXPECT_FAILS(ERROR_DIRECTORY, GetTempFileNameA(scratch.path("none").c_str(), "p", 0, first));
}

TEST(Drives, AreThereOrNot) {
    EXPECT_EQ(GetDriveTypeA("Q:\\"), UINT{DRIVE_NO_ROOT_DIR});
    EXPECT_GE(GetDriveTypeA("C:\\"), UINT{DRIVE_REMOVABLE});
    const DWORD drives = GetLogicalDrives();
    EXPECT_TRUE(drives & 1u << ('C' - 'A'));
    EXPECT_TRUE(drives & 1u << ('Z' - 'A'));
    EXPECT_FALSE(drives & 1u << ('Q' - 'A'));
    EXPECT_FAILS(ERROR_PATH_NOT_FOUND, GetDiskFreeSpaceExA("Q:\\", nullptr, nullptr, nullptr));
}

TEST(Drives, TellTheirRoomTheSameInClustersAndBytes) {
    const ScratchFolder scratch;
    const std::string root = scratch.path().substr(0, 3);
    DWORD sectors = 0, bytes = 0, freeClusters = 0, clusters = 0;
    ULARGE_INTEGER available{}, total{}, free{};
    ASSERT_TRUE(GetDiskFreeSpaceA(root.c_str(), &sectors, &bytes, &freeClusters, &clusters));
    ASSERT_TRUE(GetDiskFreeSpaceExA(root.c_str(), &available, &total, &free));
    const ULONGLONG cluster = ULONGLONG{sectors} * bytes;
    EXPECT_GT(total.QuadPart, 0u);
    EXPECT_LE(available.QuadPart, free.QuadPart);
    EXPECT_LE(free.QuadPart, total.QuadPart);
    EXPECT_LE(clusters * cluster, total.QuadPart);
    EXPECT_GT((clusters + 2) * cluster, total.QuadPart) << "but for what fills no cluster";
    DWORD longest = 0;
    EXPECT_TRUE(GetVolumeInformationA(root.c_str(), nullptr, 0, nullptr, &longest, nullptr, nullptr, 0));
    EXPECT_GE(longest, 12u);
    EXPECT_FALSE(
        GetVolumeInformationA(scratch.path().c_str(), nullptr, 0, nullptr, &longest, nullptr, nullptr, 0));
}

}  // namespace
