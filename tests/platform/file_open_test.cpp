// Opening files: dispositions, refusals, share modes, handles.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

TEST(FileOpen, DispositionsTellWhetherTheFileWasThere) {
    struct Case {
        const char* name;
        DWORD disposition;
        bool exists, opens;
        DWORD error;
        std::string bytesAfter;
    };
    const Case cases[] = {
        {"new", CREATE_NEW, false, true, 0, ""},
        {"new over old", CREATE_NEW, true, false, ERROR_FILE_EXISTS, "old"},
        {"create", CREATE_ALWAYS, false, true, 0, ""},
        {"create over old", CREATE_ALWAYS, true, true, ERROR_ALREADY_EXISTS, ""},
        {"open", OPEN_EXISTING, true, true, 0, "old"},
        {"open missing", OPEN_EXISTING, false, false, ERROR_FILE_NOT_FOUND, ""},
        {"always old", OPEN_ALWAYS, true, true, ERROR_ALREADY_EXISTS, "old"},
        {"cut", TRUNCATE_EXISTING, true, true, 0, ""},
        {"cut missing", TRUNCATE_EXISTING, false, false, ERROR_FILE_NOT_FOUND, ""},
        {"none", 0, true, false, ERROR_INVALID_PARAMETER, "old"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ScratchFolder scratch;
        const std::string path = c.exists ? scratch.file("f", "old") : scratch.path("f");
        {
            const File file(path.c_str(), GENERIC_WRITE, 0, c.disposition);
            EXPECT_EQ(file.isOpen(), c.opens);
            EXPECT_EQ(file.error(), c.error);
        }
        if (c.opens || c.exists) {
            EXPECT_EQ(bytesOf(path), c.bytesAfter);
        } else {
            EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
        }
    }
}

TEST(FileOpen, RefusesWhatIsNoFileName) {
    const ScratchFolder scratch;
    scratch.file("file", "x");
    scratch.folder("folder");
    struct Case {
        const char* name;
        DWORD disposition, error;
    };
    const Case cases[] = {
        {"missing\\f", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {"file\\f", OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {"a?b", CREATE_ALWAYS, ERROR_INVALID_NAME},
        {"a|b", CREATE_ALWAYS, ERROR_INVALID_NAME},
        {"a\x01"
         "b",
         CREATE_ALWAYS, ERROR_INVALID_NAME},
        {"folder", OPEN_EXISTING, ERROR_ACCESS_DENIED},
        {"folder", CREATE_ALWAYS, ERROR_ACCESS_DENIED},
        {"folder", CREATE_NEW, ERROR_FILE_EXISTS},
        {"folder\\", OPEN_EXISTING, ERROR_ACCESS_DENIED},
        {"file\\", OPEN_EXISTING, ERROR_INVALID_NAME},
        {"new\\", CREATE_NEW, ERROR_INVALID_NAME},
    };
    for (const Case& c : cases) {
        const File file(scratch.path(c.name).c_str(), GENERIC_READ, kShareAll, c.disposition);
        EXPECT_FALSE(file.isOpen()) << c.name;
        EXPECT_EQ(file.error(), c.error) << c.name << ", disposition " << c.disposition;
    }
    EXPECT_EQ(File("", GENERIC_READ, 0, OPEN_EXISTING).error(), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(File(nullptr, GENERIC_READ, 0, OPEN_EXISTING).error(), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(namesOf(scratch.path("*")).size(), 4u) << "nothing was made on the way";
}

TEST(FileOpen, NamesAreTheSameInEitherCaseAndWithEitherSeparator) {
    const ScratchFolder scratch;
    scratch.folder("Sub");
    scratch.file("Sub\\Name.Txt", "x");
    for (const char* name : {"sub\\name.txt", "SUB/NAME.TXT", "sub\\.\\name.txt", "sub\\..\\Sub\\name.txt",
                             "sub\\\\name.txt", "sub\\name.txt.", "sub\\name.txt "}) {
        EXPECT_TRUE(File(scratch.path(name).c_str(), GENERIC_READ, 0, OPEN_EXISTING).isOpen()) << name;
    }
    // Creating under another case meets the file that is there.
    EXPECT_EQ(File(scratch.path("SUB\\NAME.TXT").c_str(), GENERIC_WRITE, 0, CREATE_NEW).error(),
              DWORD{ERROR_FILE_EXISTS});
}

TEST(FileOpen, ShareModesStandBetweenHandles) {
    struct Case {
        DWORD access, share, laterAccess, laterShare;
        bool opens;
        const char* reason;
    };
    const DWORD read = GENERIC_READ, write = GENERIC_WRITE;
    const DWORD shareRead = FILE_SHARE_READ, shareWrite = FILE_SHARE_WRITE, shareDelete = FILE_SHARE_DELETE;
    const Case cases[] = {
        {read, 0, read, kShareAll, false, "the first shares nothing"},
        {read, shareRead, read, shareRead, true, "two readers"},
        {write, shareRead, read, shareRead, false, "the second does not let the first write"},
        {read, shareRead, write, shareRead, false, "writing is not shared"},
        {read, shareRead | shareWrite, write, shareRead, true, "a reader that lets others write"},
        {write, shareRead, read, shareRead | shareWrite, true, "the second lets the first write"},
        {0, 0, write, 0, true, "asking about a file is no use of it"},
        {read, 0, FILE_WRITE_ATTRIBUTES, 0, true, "nor is changing attributes"},
        {read, shareRead | shareWrite, read | DELETE, kShareAll, false, "deletion is not shared"},
        {read, shareDelete, DELETE, shareRead, true, "deletion is shared"},
    };
    for (const Case& c : cases) {
        const ScratchFolder scratch;
        const std::string path = scratch.file("f");
        const File first(path.c_str(), c.access, c.share, OPEN_EXISTING);
        ASSERT_TRUE(first.isOpen());
        const File second(path.c_str(), c.laterAccess, c.laterShare, OPEN_EXISTING);
        EXPECT_EQ(second.isOpen(), c.opens) << c.reason;
        EXPECT_EQ(second.error(), c.opens ? 0 : DWORD{ERROR_SHARING_VIOLATION}) << c.reason;
    }
}

TEST(FileOpen, ARefusedOpenLeavesNoTraceOfItself) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("f", "kept");
    {
        const File reader(path.c_str(), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
        EXPECT_EQ(File(path.c_str(), GENERIC_WRITE, 0, CREATE_ALWAYS).error(),
                  DWORD{ERROR_SHARING_VIOLATION});
        EXPECT_TRUE(File(path.c_str(), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING).isOpen());
    }
    EXPECT_EQ(bytesOf(path), "kept");
    EXPECT_TRUE(File(path.c_str(), GENERIC_WRITE, 0, OPEN_EXISTING).isOpen())
        << "closing takes the claims back";
}

TEST(FileOpen, DeletesWithTheLastHandle) {
    const ScratchFolder scratch;
    const std::string path = scratch.path("f");
    File file(path.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE);
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(File(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING).error(),
              DWORD{ERROR_SHARING_VIOLATION})
        << "others must share its deletion";
    HANDLE second = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), file.get(), GetCurrentProcess(), &second, 0, FALSE,
                                DUPLICATE_SAME_ACCESS));
    file.close();
    EXPECT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
    CloseHandle(second);
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(FileOpen, DuplicatesShareThePositionAndMayDoLess) {
    const ScratchFolder scratch;
    const File file(scratch.file("f", "0123456789").c_str(), GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    HANDLE made = nullptr;
    ASSERT_TRUE(
        DuplicateHandle(GetCurrentProcess(), file.get(), GetCurrentProcess(), &made, GENERIC_READ, FALSE, 0));
    const File reader(made);
    EXPECT_NE(reader.get(), file.get());
    SetFilePointer(file.get(), 7, nullptr, FILE_BEGIN);
    char byte = '?';
    DWORD done = 99;
    EXPECT_TRUE(ReadFile(reader.get(), &byte, 1, &done, nullptr));
    EXPECT_EQ(byte, '7');
    EXPECT_FAILS(ERROR_ACCESS_DENIED, WriteFile(reader.get(), "x", 1, &done, nullptr));
    EXPECT_FAILS(ERROR_INVALID_HANDLE, DuplicateHandle(nullptr, file.get(), GetCurrentProcess(), &made, 0,
                                                       FALSE, DUPLICATE_SAME_ACCESS));
}

TEST(FileOpen, WrongHandlesAreRefusedEverywhere) {
    const ScratchFolder scratch;
    File closed(scratch.file("f", "x").c_str(), GENERIC_READ, 0, OPEN_EXISTING);
    const HANDLE stale = closed.get(), self = GetCurrentProcess();
    closed.close();
    char byte = 0;
    DWORD done = 0;
    FILETIME time{};
    LARGE_INTEGER place{};
    BY_HANDLE_FILE_INFORMATION information{};
    HANDLE made = nullptr;
    for (const HANDLE handle : {HANDLE{nullptr}, reinterpret_cast<HANDLE>(0x7770), stale}) {
        const auto refused = [](auto call, DWORD result = 0) {
            EXPECT_TRUE(gives([&] { return static_cast<DWORD>(call()); }, result, ERROR_INVALID_HANDLE));
        };
        refused([&] { return CloseHandle(handle); });
        refused([&] { return ReadFile(handle, &byte, 1, &done, nullptr); });
        refused([&] { return WriteFile(handle, &byte, 1, &done, nullptr); });
        refused([&] { return FlushFileBuffers(handle); });
        refused([&] { return SetEndOfFile(handle); });
        refused([&] { return GetFileSize(handle, nullptr); }, INVALID_FILE_SIZE);
        refused([&] { return SetFilePointer(handle, 0, nullptr, FILE_BEGIN); }, INVALID_SET_FILE_POINTER);
        refused([&] { return SetFilePointerEx(handle, place, nullptr, FILE_BEGIN); });
        refused([&] { return GetFileTime(handle, &time, nullptr, nullptr); });
        refused([&] { return SetFileTime(handle, nullptr, nullptr, &time); });
        refused([&] { return GetFileInformationByHandle(handle, &information); });
        refused([&] { return GetFileType(handle); });
        refused([&] { return LockFile(handle, 0, 0, 1, 0); });
        refused([&] { return UnlockFile(handle, 0, 0, 1, 0); });
        refused([&] { return DuplicateHandle(self, handle, self, &made, 0, FALSE, DUPLICATE_SAME_ACCESS); });
    }
    EXPECT_TRUE(CloseHandle(self)) << "the pseudo handle may be closed";
}

TEST(FileOpen, ThreadsOpenAndCloseAtTheSameTime) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("f", "shared");
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                const File file(path.c_str(), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
                char bytes[6] = {};
                DWORD done = 0;
                const bool right = file.isOpen() && ReadFile(file.get(), bytes, 6, &done, nullptr) &&
                                   done == 6 && std::string_view(bytes, 6) == "shared";
                wrong += right ? 0 : 1;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(FileOpen, TheNullDeviceTakesAllAndHoldsNothing) {
    const File file("nul", GENERIC_READ | GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    ASSERT_TRUE(file.isOpen());
    DWORD done = 99;
    char byte = '?';
    EXPECT_TRUE(WriteFile(file.get(), "abc", 3, &done, nullptr));
    EXPECT_EQ(done, 3u);
    EXPECT_TRUE(ReadFile(file.get(), &byte, 1, &done, nullptr));
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(GetFileType(file.get()), DWORD{FILE_TYPE_CHAR});
    EXPECT_FALSE(DeleteFileA("nul"));
}

}  // namespace
