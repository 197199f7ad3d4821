// Reading, writing, positions, sizes, locks and times of open files.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

class FileIo : public testing::Test {
  protected:
    FileIo() : path_(scratch_.file("f", "0123456789")) {}

    const char* path() const { return path_.c_str(); }

    ScratchFolder scratch_;
    std::string path_;
};

TEST_F(FileIo, ReadsUpToTheEndAndThenNothing) {
    const File file(path(), GENERIC_READ, 0, OPEN_EXISTING);
    struct Case {
        LONG from;
        DWORD count;
        std::string bytes;
    };
    const Case cases[] = {{0, 10, "0123456789"}, {0, 9, "012345678"}, {8, 20, "89"},
                          {10, 5, ""},           {15, 5, ""},         {3, 0, ""}};
    for (const Case& c : cases) {
        char bytes[24];
        std::memset(bytes, '#', sizeof bytes);
        DWORD done = 99;
        SetFilePointer(file.get(), c.from, nullptr, FILE_BEGIN);
        EXPECT_EQ(errorAfter([&] { EXPECT_TRUE(ReadFile(file.get(), bytes, c.count, &done, nullptr)); }),
                  kSeed);
        EXPECT_EQ(std::string(bytes, done), c.bytes);
        EXPECT_EQ(bytes[done], '#') << "nothing behind what was read";
    }
}

TEST_F(FileIo, APlaceMovesThePositionAndTheEndIsAFailureThere) {
    const File file(path(), GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    OVERLAPPED place{};
    char bytes[4] = {};
    DWORD done = 99;
    place.Offset = 1;
    EXPECT_TRUE(ReadFile(file.get(), bytes, 2, &done, &place));
    EXPECT_EQ(std::string(bytes, done), "12");
    EXPECT_EQ(SetFilePointer(file.get(), 0, nullptr, FILE_CURRENT), 3u);
    place.Offset = 9;
    EXPECT_TRUE(ReadFile(file.get(), bytes, 2, &done, &place));
    EXPECT_EQ(done, 1u);
    place.Offset = 10;
    EXPECT_FAILS(ERROR_HANDLE_EOF, ReadFile(file.get(), bytes, 2, &done, &place));
    EXPECT_EQ(done, 0u);
    place.Offset = 3;
    EXPECT_TRUE(WriteFile(file.get(), "xy", 2, &done, &place));
    EXPECT_EQ(SetFilePointer(file.get(), 0, nullptr, FILE_CURRENT), 5u);
}

TEST_F(FileIo, EachAccessIsNeededForItsUse) {
    char byte = 0;
    DWORD done = 99;
    const File reader(path(), GENERIC_READ, kShareAll, OPEN_EXISTING);
    const File writer(path(), GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    const DWORD denied = ERROR_ACCESS_DENIED;
    EXPECT_FAILS(denied, WriteFile(reader.get(), "x", 1, &done, nullptr));
    EXPECT_EQ(done, 0u);
    EXPECT_FAILS(denied, FlushFileBuffers(reader.get()));
    EXPECT_FALSE(SetEndOfFile(reader.get()));
    EXPECT_FAILS(denied, ReadFile(writer.get(), &byte, 1, &done, nullptr));
    EXPECT_FAILS(ERROR_NOACCESS, ReadFile(reader.get(), nullptr, 1, &done, nullptr));
    EXPECT_FAILS(ERROR_INVALID_USER_BUFFER, WriteFile(writer.get(), nullptr, 1, &done, nullptr));
    EXPECT_TRUE(WriteFile(writer.get(), nullptr, 0, &done, nullptr));
    EXPECT_TRUE(FlushFileBuffers(writer.get()));
    const File appender(path(), FILE_APPEND_DATA, kShareAll, OPEN_EXISTING);
    SetFilePointer(appender.get(), 2, nullptr, FILE_BEGIN);
    EXPECT_TRUE(WriteFile(appender.get(), "ab", 2, &done, nullptr));
    EXPECT_EQ(bytesOf(path_), "0123456789ab") << "wherever the position is";
}

TEST_F(FileIo, PositionsAreToldInHalves) {
    const File file(path(), GENERIC_READ, 0, OPEN_EXISTING);
    struct Case {
        const char* name;
        LONG low, high;
        bool hasHigh;
        DWORD method, result;
        LONG highAfter;
        DWORD error;
    };
    const DWORD failed = INVALID_SET_FILE_POINTER;
    // Each step starts where the one before ended.
    const Case steps[] = {
        {"from the start", 1, 0, false, FILE_BEGIN, 1, 0, kSeed},
        {"before the start", -2, 0, false, FILE_CURRENT, failed, 0, ERROR_NEGATIVE_SEEK},
        {"a failure moves nothing", 0, 0, false, FILE_CURRENT, 1, 0, kSeed},
        {"from the end", -4, 0, false, FILE_END, 6, 0, kSeed},
        {"behind the end", 5, 0, false, FILE_END, 15, 0, kSeed},
        {"unknown method", 0, 0, false, 3, failed, 0, ERROR_INVALID_PARAMETER},
        {"a low half like the failure", -1, 0, true, FILE_BEGIN, failed, 0, NO_ERROR},
        {"a negative whole", -1, -1, true, FILE_BEGIN, failed, -1, ERROR_NEGATIVE_SEEK},
        {"a negative step with both halves", -1, -1, true, FILE_CURRENT, 0xFFFFFFFE, 0, kSeed},
    };
    for (const Case& c : steps) {
        LONG high = c.high;
        DWORD result = 0;
        const DWORD error = errorAfter(
            [&] { result = SetFilePointer(file.get(), c.low, c.hasHigh ? &high : nullptr, c.method); });
        EXPECT_EQ(result, c.result) << c.name;
        EXPECT_EQ(error, c.error) << c.name;
        if (c.hasHigh) {
            EXPECT_EQ(high, c.highAfter) << c.name;
        }
    }
    LARGE_INTEGER distance{}, position{};
    distance.QuadPart = 0x123456789A;
    EXPECT_TRUE(SetFilePointerEx(file.get(), distance, &position, FILE_BEGIN));
    EXPECT_EQ(position.QuadPart, distance.QuadPart);
}

TEST_F(FileIo, SizesBeyondFourGigabytesAreToldInHalves) {
    const File file(path(), GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    LONG high = 1;
    ASSERT_EQ(SetFilePointer(file.get(), 7, &high, FILE_BEGIN), 7u);
    ASSERT_TRUE(SetEndOfFile(file.get())) << "a file with a hole, error " << GetLastError();
    DWORD sizeHigh = 99;
    EXPECT_EQ(GetFileSize(file.get(), &sizeHigh), 7u);
    EXPECT_EQ(sizeHigh, 1u);
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(file.get(), &size));
    EXPECT_EQ(size.QuadPart, 0x100000007);
    SetFilePointer(file.get(), 4, nullptr, FILE_BEGIN);
    EXPECT_TRUE(SetEndOfFile(file.get()));
    EXPECT_EQ(GetFileSize(file.get(), nullptr), 4u);
    EXPECT_EQ(GetFileType(file.get()), DWORD{FILE_TYPE_DISK});
}

TEST_F(FileIo, LocksKeepOtherLocksAway) {
    const DWORD both = GENERIC_READ | GENERIC_WRITE;
    File first(path(), both, kShareAll, OPEN_EXISTING);
    const File second(path(), both, kShareAll, OPEN_EXISTING);
    const DWORD violation = ERROR_LOCK_VIOLATION;
    EXPECT_TRUE(LockFile(first.get(), 2, 0, 4, 0));
    EXPECT_FAILS(violation, LockFile(second.get(), 5, 0, 1, 0));
    EXPECT_FAILS(violation, LockFile(first.get(), 0, 0, 3, 0)) << "its own too";
    EXPECT_TRUE(LockFile(second.get(), 6, 0, 4, 0)) << "next to it";
    EXPECT_TRUE(UnlockFile(second.get(), 6, 0, 4, 0));
    EXPECT_FALSE(UnlockFile(first.get(), 2, 0, 3, 0)) << "a part of it";
    EXPECT_FALSE(UnlockFile(second.get(), 2, 0, 4, 0)) << "the other's";
    EXPECT_TRUE(UnlockFile(first.get(), 2, 0, 4, 0));
    EXPECT_TRUE(LockFile(first.get(), 0, 0, 0xFFFFFFFF, 0xFFFFFFFF)) << "everything";
    EXPECT_FAILS(violation, LockFile(second.get(), 100, 1, 1, 0));
    first.close();
    EXPECT_TRUE(LockFile(second.get(), 100, 1, 1, 0)) << "closing unlocks";
}

TEST_F(FileIo, TimesAreSetAndToldToTheUnitOfTheDisk) {
    const File file(path(), GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    const SYSTEMTIME broken{2004, 2, 0, 29, 12, 34, 56, 789};
    FILETIME wanted{};
    ASSERT_TRUE(SystemTimeToFileTime(&broken, &wanted));
    ASSERT_TRUE(SetFileTime(file.get(), nullptr, nullptr, &wanted));
    FILETIME creation{1, 1};
    FILETIME access{1, 1};
    FILETIME write{};
    ASSERT_TRUE(GetFileTime(file.get(), &creation, &access, &write));
    EXPECT_EQ(CompareFileTime(&write, &wanted), 0);
    EXPECT_EQ(CompareFileTime(&access, &write), 1) << "the others stay";
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA(path(), &data);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    FindClose(find);
    EXPECT_EQ(CompareFileTime(&data.ftLastWriteTime, &wanted), 0);
}

TEST_F(FileIo, TwoHandlesOfOneFileTellTheSameIndex) {
    const File first(path(), 0, 0, OPEN_EXISTING);
    const File second(path(), 0, 0, OPEN_EXISTING);
    const File other(scratch_.file("g").c_str(), 0, 0, OPEN_EXISTING);
    BY_HANDLE_FILE_INFORMATION told[3];
    std::memset(told, 0xAA, sizeof told);
    ASSERT_TRUE(GetFileInformationByHandle(first.get(), &told[0]));
    ASSERT_TRUE(GetFileInformationByHandle(second.get(), &told[1]));
    ASSERT_TRUE(GetFileInformationByHandle(other.get(), &told[2]));
    const auto index = [](const BY_HANDLE_FILE_INFORMATION& information) {
        return ULONGLONG{information.nFileIndexHigh} << 32 | information.nFileIndexLow;
    };
    EXPECT_EQ(index(told[0]), index(told[1]));
    EXPECT_NE(index(told[0]), index(told[2]));
    EXPECT_TRUE(told[0].nNumberOfLinks == 1 && told[0].nFileSizeLow == 10 && told[0].nFileSizeHigh == 0);
}

}  // namespace
