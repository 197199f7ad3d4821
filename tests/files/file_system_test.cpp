// What is on the disk.
#include "korutil/file_system.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "korutil/path.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

using kor::test::ScratchFolder;

std::string currentFolder() {
    char buffer[MAX_PATH];
    return std::string(buffer, GetCurrentDirectoryA(sizeof buffer, buffer));
}

TEST(Existence, TellsFilesFromFoldersAndAsksForNoReservedName) {
    const ScratchFolder scratch;
    const std::string file = scratch.file("f", "x"), folder = scratch.folder("d");
    scratch.file("ept.txt", "there, but reserved");
    // Folder, path, file, readable, readable fast, file in order.
    const struct {
        std::string path, results;
    } cases[] = {{file, "011111"},
                 {scratch.file("empty"), "011110"},
                 {folder, "110000"},
                 {folder + "\\", "110000"},
                 {"c:\\", "110000"},
                 {scratch.path("none"), "000000"},
                 {file + "\\x", "000000"},
                 {"NUL", "000000"},
                 {scratch.path("ept.txt"), "000000"},
                 {scratch.path("*"), "000000"},
                 {"", "000000"}};
    const UINT mode = SetErrorMode(0);
    for (const auto& c : cases) {
        std::string results;
        for (const auto test :
             {sysExistsDir, sysExistsPath, sysExistsFile, sysReadableFile, sysReadableFileFast, sysIsFileOK})
            results += std::to_string(test(c.path.c_str()));
        EXPECT_EQ(results, c.results) << c.path;
    }
    EXPECT_EQ(SetErrorMode(mode), 0u) << "the error mode is put back";
}

struct Refusal {
    std::string path;
    DWORD error;
};

void checkRefusals(int(KORUTIL_CALL* function)(const char*), const std::vector<Refusal>& refusals) {
    for (const auto& [path, error] : refusals) {
        EXPECT_EQ(function(path.c_str()), 0) << path;
        EXPECT_EQ(GetLastError(), error) << path;
    }
}

TEST(Folders, AreMadeWithThoseAboveThem) {
    const ScratchFolder scratch;
    const std::string deep = scratch.path("a\\b/c\\"), file = scratch.file("f");
    EXPECT_EQ(sysMakeDir(deep.c_str()), 1) << GetLastError();
    EXPECT_EQ(sysExistsDir(scratch.path("a\\b\\c").c_str()), 1);
    EXPECT_EQ(sysMakeDir(deep.c_str()) + sysMakeDir("c:\\"), 2) << "they are there";
    checkRefusals(sysMakeDir, {{"", ERROR_PATH_NOT_FOUND},
                               {file, ERROR_ALREADY_EXISTS},
                               {file + "\\x", ERROR_ALREADY_EXISTS},
                               {scratch.path("nul\\x"), ERROR_INVALID_NAME},
                               {scratch.path("a?"), ERROR_INVALID_NAME},
                               {std::string(260, 'a'), ERROR_FILENAME_EXCED_RANGE}});
}

TEST(Folders, AreRemovedWithAllThatIsInThem) {
    const ScratchFolder scratch;
    for (const char* name : {"t\\a\\b", "t\\c", "t\\e\\f\\g"})
        ASSERT_EQ(sysMakeDir(scratch.path(name).c_str()), 1);
    for (const char* name : {"t\\1", "t\\a\\2", "t\\a\\b\\3", "t\\e\\f\\4", "beside"})
        scratch.file(name, "x");
    SetFileAttributesA(scratch.path("t\\a\\2").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(sysRemoveDir(scratch.path("t\\").c_str()), 1) << GetLastError();
    checkRefusals(sysRemoveDir, {{scratch.path("t"), ERROR_FILE_NOT_FOUND},
                                 {scratch.path("beside"), ERROR_DIRECTORY},
                                 {"c:\\", ERROR_ACCESS_DENIED},
                                 {"c:\\windows\\..", ERROR_ACCESS_DENIED},
                                 {"\\\\server\\share", ERROR_ACCESS_DENIED},
                                 {"", ERROR_INVALID_NAME}});
    EXPECT_EQ(sysExistsFile(scratch.path("beside").c_str()), 1);
}

TEST(Folders, BecomeTheCurrentOne) {
    const ScratchFolder scratch;
    const std::string start = currentFolder(), folder = scratch.folder("d");
    EXPECT_EQ(sysChDir((folder + "\\").c_str()), 1);
    EXPECT_EQ(lstrcmpiA(currentFolder().c_str(), folder.c_str()), 0) << currentFolder();
    EXPECT_EQ(sysChDir("none"), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    const std::string drive = folder.substr(0, 2);
    EXPECT_EQ(sysChDir(drive.c_str()), 1);
    EXPECT_EQ(lstrcmpiA(currentFolder().c_str(), folder.c_str()), 0) << "the current one of the drive";
    EXPECT_EQ(sysChDriveDir(drive.c_str()), 1);
    EXPECT_EQ(lstrcmpiA(currentFolder().c_str(), (drive + "\\").c_str()), 0) << currentFolder();
    EXPECT_EQ(sysChDriveDir(start.c_str()), 1);
    EXPECT_EQ(currentFolder(), start);
}

TEST(Files, HaveAStatusAndARightToBeWritten) {
    const ScratchFolder scratch;
    const std::string name = scratch.file("f", "12345");
    const char* file = name.c_str();
    SysFileStatus status{}, folder{};
    ASSERT_EQ(sysFileStatus(file, &status), 1) << GetLastError();
    EXPECT_EQ(status.size, 5);
    EXPECT_EQ(status.mode, DWORD{kModeFile | kModeRead | kModeWrite});
    EXPECT_NEAR(static_cast<double>(status.written), static_cast<double>(std::time(nullptr)), 600.0);
    ASSERT_EQ(sysFileStatus(scratch.path().c_str(), &folder), 1);
    EXPECT_EQ(folder.mode, DWORD{kModeFolder | kModeRead | kModeWrite});
    EXPECT_EQ(folder.size, 0);
    EXPECT_EQ(sysChmod(file, kModeRead), 1);
    ASSERT_EQ(sysFileStatus(file, &status), 1);
    EXPECT_EQ(status.mode, DWORD{kModeFile | kModeRead});
    EXPECT_TRUE(status.attributes & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(sysDeleteFileEx(file, 0), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(sysDeleteFileEx(file, kDeleteReadOnly), 1);
    EXPECT_EQ(sysDeleteFileEx(file, kDeleteReadOnly), 0);
    EXPECT_EQ(sysDeleteFileEx(file, kDeleteMissing), 1);
    EXPECT_EQ(sysFileStatus(file, &status), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(status.size, 5) << "unchanged";
}

TEST(Names, AreMadeFullAndLong) {
    const ScratchFolder scratch;
    const std::string file = scratch.file("LongFileName.Text");
    const auto size = static_cast<DWORD>(file.size() + 1);
    char path[MAX_PATH], shortName[MAX_PATH];
    EXPECT_EQ(sysFullPath(path, (scratch.path() + "/x/../LongFileName.Text").c_str(), size), 1);
    EXPECT_EQ(path, file);
    EXPECT_EQ(sysFullPath(path, path, size - 1), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(sysFullPath(path, "", MAX_PATH), 0);
    // Natively there are no short names: it is the long one.
    ASSERT_NE(GetShortPathNameA(file.c_str(), shortName, MAX_PATH), 0u);
    EXPECT_EQ(sysCvtToLongFileName(shortName, size - 1), 0);
    EXPECT_EQ(sysCvtToLongFileName(shortName, size), 1) << "unchanged by the failure";
    EXPECT_EQ(lstrcmpiA(shortName, file.c_str()), 0) << shortName;
    DeleteFileA(file.c_str());
    EXPECT_EQ(sysCvtToLongFileName(shortName, MAX_PATH), 0);
}

TEST(Disk, TellsItsRoomForAnyPathOnIt) {
    const ScratchFolder scratch;
    const std::string file = scratch.file("f");
    DWORD sectors = 0, bytes = 0, clusters = 0;
    ULONGLONG available = 0, total = 0, free = 0;
    for (const char* path : {file.c_str(), scratch.path().c_str(), static_cast<const char*>(nullptr)}) {
        const char* shown = path ? path : "null";
        ASSERT_EQ(sysGetDiskFreeSpace(path, &sectors, &bytes, nullptr, &clusters), 1)
            << shown << GetLastError();
        ASSERT_EQ(sysGetDiskFreeSpaceEx(path, &available, &total, &free), 1) << shown << GetLastError();
        EXPECT_GT(total, 0u);
        EXPECT_LE(available, free);
        EXPECT_LE(free, total);
        const ULONGLONG told = ULONGLONG{sectors} * bytes * clusters;
        EXPECT_NEAR(static_cast<double>(told) / static_cast<double>(total), 1.0, 0.01) << shown;
    }
    EXPECT_EQ(sysGetDiskFreeSpaceEx("c:\\no such folder\\f", &available, nullptr, nullptr), 0);
    EXPECT_EQ(sysIsWin2000(), 1);
}

}  // namespace
