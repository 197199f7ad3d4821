// Buffered files on disk and in memory: results, contents, and what the user is told.
#include "korutil/buffered_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "files/transfer_loop.h"
#include "korutil/error.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"
#include "tests/support/shown_warnings.h"

namespace {

using Ids = std::vector<unsigned>;

class BufferedFile : public testing::Test {
  protected:
    BufferedFile() { fileDoClose(kMemoryFile); }

    // The numbers of the texts shown since the last call.
    Ids shown() {
        Ids ids;
        for (const auto& warning : warnings_.take())
            ids.push_back(static_cast<unsigned>(warning.record.textId));
        return ids;
    }

    int open(const std::string& name, int flags) { return fileDoOpen(name.c_str(), flags | _O_BINARY); }

    kor::test::ShownWarnings warnings_;
    kor::test::ScratchFolder folder_;
};

TEST_F(BufferedFile, TellsWhyItDidNotOpen) {
    const std::string there = folder_.file("there", "12345");
    const std::string marked = folder_.file("marked", "1");
    const std::string held = folder_.file("held", "1");
    ASSERT_TRUE(SetFileAttributesA(marked.c_str(), FILE_ATTRIBUTE_READONLY));
    const HANDLE holder = CreateFileA(held.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    const struct {
        std::string name;
        int flags;
        Ids shown;
        const char* why;
    } rows[] = {
        {folder_.path("missing"), _O_RDONLY, {2102}, "nothing to read"},
        {folder_.path("missing"), _O_RDWR, {}, "not made, and a failure to write is not shown"},
        {folder_.path("no\\new"), _O_WRONLY | _O_CREAT, {}, "no folder"},
        {folder_.path("no\\new"), _O_RDONLY | _O_CREAT, {2102}, "the access counts, not what is made"},
        {there, _O_WRONLY | _O_CREAT | _O_EXCL, {}, "is there already"},
        {marked, _O_WRONLY | _O_CREAT | _O_EXCL, {2110}, "marked read-only, whatever it fails of"},
        {held, _O_RDONLY, {2109}, "in use, which comes before 2102"},
        {held, _O_WRONLY, {2109}, "in use"},
        {folder_.path(), _O_RDONLY, {2102}, "a folder: access denied, but not in use"},
        {"", _O_RDONLY, {2102}, "no name"},
    };
    for (const auto& row : rows) {
        fileEnableErrorMsg(0);
        EXPECT_EQ(open(row.name, row.flags), kNoFile) << row.why;
        EXPECT_EQ(shown(), row.shown) << row.why;
        EXPECT_STREQ(fileGetName(), row.name.c_str());
    }
    CloseHandle(holder);
    EXPECT_EQ(fileDoOpen(nullptr, _O_RDONLY), kNoFile);
    EXPECT_EQ(warnings_.takeOne().text, "The file cannot be opened or used. 'Unnamed'");
    EXPECT_EQ(appGetLastErrorObject(), nullptr) << "the ring is left alone";
}

TEST_F(BufferedFile, ReadsAndWritesAtItsPosition) {
    const std::string path = folder_.path("data");
    const int file = open(path, _O_RDWR | _O_CREAT | _O_TRUNC);
    ASSERT_GE(file, 0);
    EXPECT_TRUE(file_hwrite(file, "0123456789", 10) && fileGotoOffset(file, 4) && file_hwrite(file, "xy", 2));
    EXPECT_EQ(fileGetPosition(file), 6);
    EXPECT_EQ(fileGetLength(file), 10);
    EXPECT_EQ(fileGetAvailable(file), 4);
    char bytes[8] = "-------";
    EXPECT_TRUE(file_hread(file, bytes, 4));
    EXPECT_STREQ(bytes, "6789---");
    EXPECT_TRUE(fileGotoOffset(file, 15)) << "behind the end";
    EXPECT_EQ(fileGetAvailable(file), -5);
    EXPECT_FALSE(fileGotoOffset(file, -1));
    EXPECT_TRUE(fileGotoOffset(file, 8));
    EXPECT_FALSE(file_hread(file, bytes, 3)) << "one byte short";
    EXPECT_FALSE(file_hwrite(file, nullptr, 1));
    EXPECT_EQ(shown(), (Ids{2103, 2103, 2104}));
    EXPECT_EQ(fileDoClose(file), 1);
    EXPECT_EQ(fileDoClose(fileDoOpen(fileGetName(), _O_RDONLY)), 1) << "closing keeps the name";
    EXPECT_EQ(kor::test::bytesOf(path), "0123xy6789");
    EXPECT_EQ(fileDoClose(kNoFile), -1);
}

TEST_F(BufferedFile, FlagsMeanWhatTheyMeanToTheRuntime) {
    const std::string path = folder_.path("brief");
    const int file = open(path, _O_WRONLY | _O_CREAT | _O_APPEND | _O_TEMPORARY);
    EXPECT_TRUE(file_hwrite(file, "0123", 4) && fileGotoOffset(file, 2) && file_hwrite(file, "end", 3));
    EXPECT_EQ(fileGetLength(file), 7) << "appended";
    char byte;
    EXPECT_FALSE(file_hread(file, &byte, 1)) << "only written";
    EXPECT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(fileDoClose(file), 1);
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES) << "deleted when it is closed";
}

TEST_F(BufferedFile, TellsNoNumberThatDoesNotFit) {
    const std::string path = folder_.path("large");
    const HANDLE made = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    LARGE_INTEGER size{};
    size.QuadPart = 3000000000;
    const bool there = SetFilePointerEx(made, size, nullptr, FILE_BEGIN) && SetEndOfFile(made);
    CloseHandle(made);
    ASSERT_TRUE(there) << "a file of 3 GB with a hole";
    const int file = open(path, _O_RDONLY);
    ASSERT_GE(file, 0);
    EXPECT_EQ(fileGetLength(file), -1);
    EXPECT_EQ(fileGetAvailable(file), -1) << "3000000000 is too much";
    char bytes[9];
    EXPECT_TRUE(fileGotoOffset(file, 0x7FFFFFFF) && file_hread(file, bytes, sizeof(bytes)));
    EXPECT_EQ(fileGetPosition(file), -1);
    EXPECT_EQ(fileGetAvailable(file), 3000000000LL - 0x7FFFFFFF - 9);
    EXPECT_EQ(fileDoClose(file), 1);
}

TEST_F(BufferedFile, NoFileAndInventedHandlesFail) {
    for (const int handle : {kNoFile, -3, 4711}) {
        char byte = 0;
        EXPECT_FALSE(file_hread(handle, &byte, 1) || file_hwrite(handle, &byte, 1) ||
                     fileGotoOffset(handle, 0));
        EXPECT_EQ(shown(), (Ids{2103, 2104, 2103}));
        EXPECT_EQ(fileGetPosition(handle), -1);
        EXPECT_EQ(fileGetLength(handle), -1);
        EXPECT_EQ(fileGetAvailable(handle), handle == kNoFile ? 0 : -1);
    }
    EXPECT_EQ(fileCloseWriteBuffer(), nullptr);
    EXPECT_EQ(fileOpenReadBuffer(nullptr), kNoFile);
}

TEST_F(BufferedFile, AMemoryFileGrowsByWhatIsNeededAnd64K) {
    fileEnableErrorMsg(0);
    ASSERT_EQ(fileOpenWriteBuffer(), kMemoryFile);
    EXPECT_TRUE(file_hwrite(kMemoryFile, "0123456789", 10));
    EXPECT_EQ(GlobalSize(fileGetWriteBuffer()), 8192u);
    EXPECT_TRUE(fileGotoOffset(kMemoryFile, 8192)) << "as far as the capacity";
    EXPECT_FALSE(fileGotoOffset(kMemoryFile, 8193));
    EXPECT_EQ(shown(), Ids{2103}) << "opening switched the messages on";
    EXPECT_TRUE(fileGotoOffset(kMemoryFile, 0));
    const std::string data(8193, 'd');
    EXPECT_TRUE(file_hwrite(kMemoryFile, data.data(), 8193));
    EXPECT_EQ(GlobalSize(fileGetWriteBuffer()), 73729u);
    EXPECT_EQ(GlobalFlags(fileGetWriteBuffer()) & GMEM_LOCKCOUNT, 0u) << "unlocked after each write";
    char behind = '-';
    EXPECT_TRUE(file_hread(kMemoryFile, &behind, 1)) << "behind the length, below the capacity";
    EXPECT_EQ(behind, '\0');
    EXPECT_EQ(fileGetAvailable(kMemoryFile), -1) << "reading does not make it longer";
    EXPECT_FALSE(file_hwrite(kMemoryFile, "x", 0xFFFFFFFF)) << "nothing wraps";
    EXPECT_EQ(shown(), Ids{2101});
    const HGLOBAL block = fileCloseWriteBuffer();
    EXPECT_EQ(GlobalSize(block), 8193u);
    EXPECT_EQ(std::string(static_cast<char*>(GlobalLock(block)), 8193), data);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST_F(BufferedFile, AnEmptyMemoryFileEndsAsADiscardedBlock) {
    ASSERT_EQ(fileOpenWriteBuffer(), kMemoryFile);
    const HGLOBAL block = fileCloseWriteBuffer();
    ASSERT_NE(block, nullptr);
    char byte;
    for (const char* what : {"discarded", "freed"}) {
        EXPECT_EQ(fileOpenReadBuffer(block), kMemoryFile) << what;
        EXPECT_EQ(fileGetLength(kMemoryFile), 0) << what;
        EXPECT_FALSE(file_hread(kMemoryFile, &byte, 1)) << what;
        EXPECT_FALSE(file_hread(kMemoryFile, &byte, 0)) << what << " blocks cannot be locked";
        EXPECT_EQ(shown(), (Ids{2103, 2101})) << what;
        GlobalFree(block);
    }
}

TEST_F(BufferedFile, AMemoryFileOpenedForReadingIsNeverChanged) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 100);
    std::memset(GlobalLock(block), 'r', 100);
    GlobalUnlock(block);
    ASSERT_EQ(fileOpenReadBuffer(block), kMemoryFile);
    char bytes[60] = {};
    EXPECT_TRUE(file_hread(kMemoryFile, bytes, 60));
    EXPECT_FALSE(file_hread(kMemoryFile, bytes, 41)) << "one byte short";
    EXPECT_EQ(fileGetAvailable(kMemoryFile), 40) << "and the position stays";
    EXPECT_TRUE(file_hread(kMemoryFile, bytes, 40));
    EXPECT_EQ(std::string(bytes, 60), std::string(60, 'r'));
    EXPECT_EQ(GlobalFlags(block) & GMEM_LOCKCOUNT, 2u) << "each read leaves a lock";
    EXPECT_FALSE(file_hwrite(kMemoryFile, "w", 1));
    EXPECT_EQ(shown(), (Ids{2103, 2104}));
    EXPECT_EQ(fileDoClose(kMemoryFile), 1);
    EXPECT_EQ(GlobalSize(block), 100u) << "closing does not free the block";
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST_F(BufferedFile, RecordsArePushedAndPopped) {
    ASSERT_EQ(fileOpenWriteBuffer(), kMemoryFile);
    EXPECT_TRUE(file_hwrite(kMemoryFile, "outer", 5));
    fileSetName("outer");
    fileEnableErrorMsg(0);
    EXPECT_TRUE(filePushFileData());
    EXPECT_STREQ(fileGetName(), "");
    EXPECT_TRUE(fileEnableErrorMsg(0)) << "a fresh record shows its messages";
    EXPECT_TRUE(filePopFileData());
    EXPECT_FALSE(filePopFileData()) << "one is always there";
    EXPECT_STREQ(fileGetName(), "outer");
    EXPECT_FALSE(fileEnableErrorMsg(1));
    EXPECT_EQ(GlobalSize(fileGetWriteBuffer()), 8192u);
    EXPECT_EQ(GlobalFree(fileCloseWriteBuffer()), nullptr);
}

TEST_F(BufferedFile, MessagesNameTheFile) {
    fileSetName("C:\\50%s.TIF");
    EXPECT_EQ(fileDecodeError(nullptr), kor::test::ShownWarnings::kAnswer);
    EXPECT_NE(warnings_.takeOne().text.find("'C:\\50%s.TIF'"), std::string::npos);
    fileNoMemoryError("x"), fileOpenError("x"), fileReadError("x"), fileWriteError("x");
    fileDecodeError("x"), fileEncodeError("x"), fileEntryAdjusted("x"), fileFormatError("x");
    EXPECT_EQ(shown(), (Ids{2101, 2102, 2103, 2104, 2105, 2106, 2107, 2108}));
    fileEnableErrorMsg(0);
    EXPECT_EQ(fileDecodeError("x"), 0);
    EXPECT_EQ(shown(), Ids());
    fileEnableErrorMsg(1);
}

TEST(TransferLoop, MovesAllInPiecesThatTheRuntimeTakes) {
    constexpr std::size_t kCount = 3000000000;
    auto* const start = reinterpret_cast<char*>(static_cast<UINT_PTR>(0x10000));  // never looked at
    std::size_t moved = 0;
    int calls = 0;
    const auto shortAndInterrupted = [&](const char* data, unsigned count) {
        EXPECT_EQ(data, start + moved);
        EXPECT_LE(count, 0x7FFFFFFFu);
        if (++calls % 3 == 0) return errno = EINTR, -1;
        const unsigned some = calls % 2 == 0 ? count : count / 2 + 1;
        moved += some;
        return static_cast<int>(some);
    };
    EXPECT_TRUE(kor::transfersAll(shortAndInterrupted, start, kCount));
    EXPECT_EQ(moved, kCount);
    EXPECT_FALSE(kor::transfersAll([](char*, unsigned) { return 0; }, start, 1)) << "nothing more";
}

}  // namespace
