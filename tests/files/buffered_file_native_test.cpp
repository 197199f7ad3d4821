// What only the native target has: modes, other processes' descriptors, and memory that runs out on demand.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "korutil/buffered_file.h"
#include "korutil/platform/name.h"
#include "platform/win32.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/scratch.h"
#include "tests/support/shown_warnings.h"

namespace {

std::string nativeOf(const std::string& path) {
    char native[1024] = "";
    korNativePath(path.c_str(), native, sizeof(native));
    return native;
}

TEST(LowLevelFile, AnswersAsTheRuntimeDoes) {
    const kor::test::ScratchFolder folder;
    const std::string path = folder.path("New");
    const int file = _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL, _S_IREAD | _S_IWRITE);
    ASSERT_GE(file, 0);
    struct stat status {};
    ASSERT_EQ(stat(nativeOf(path).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(_write(file, "abc", 3), 3);
    char bytes[4] = {};
    EXPECT_TRUE(_read(file, bytes, 1) == -1 && errno == EBADF) << "not opened for reading";
    EXPECT_TRUE(_lseeki64(file, -4, 2) == -1 && errno == EINVAL) << "in front of the beginning";
    EXPECT_TRUE(_open(path.c_str(), _O_RDWR | _O_CREAT | _O_EXCL, 0) == -1 && errno == EEXIST);
    EXPECT_TRUE(_open(path.c_str(), _O_RDONLY | _O_TRUNC) == -1 && errno == EINVAL)
        << "emptied, but only read";
    EXPECT_TRUE(_open(folder.path().c_str(), _O_RDONLY) == -1 && errno == EACCES);
    EXPECT_EQ(_close(file), 0);
    EXPECT_EQ(chmod(nativeOf(path).c_str(), 0400), 0);
    kor::test::ShownWarnings warnings;
    EXPECT_EQ(fileDoOpen(path.c_str(), _O_RDWR | _O_TRUNC), kNoFile) << "read-only, for root too";
    EXPECT_EQ(warnings.takeOne().record.textId, 2110u);
    EXPECT_EQ(fcntl(file, F_GETFD), -1) << "the descriptor is the native one";
}

TEST(LowLevelFile, ServesADescriptorThatWasOpenedElsewhere) {
    const kor::test::ScratchFolder folder;
    const int file = open(nativeOf(folder.file("data", "0123456789")).c_str(), O_RDONLY | O_CLOEXEC);
    char bytes[4] = {};
    EXPECT_TRUE(fileGotoOffset(file, 3) && file_hread(file, bytes, 3));
    EXPECT_STREQ(bytes, "345");
    EXPECT_EQ(fileGetAvailable(file), 4);
    EXPECT_EQ(fileDoClose(file), 1);
}

TEST(BufferedFileShortage, LeavesNothingBehindAndThrowsNothing) {
    const kor::test::ScratchFolder folder;
    const kor::test::ShownWarnings warnings;
    const std::string path = folder.path("a name that does not fit into a small string");
    const std::string native = nativeOf(path);
    const int failures = kor::test::failEachAllocation([&] {
        const int file = fileDoOpen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL);
        const bool there = access(native.c_str(), F_OK) == 0;
        EXPECT_EQ(file >= 0, there);
        fileDoClose(file);
        unlink(native.c_str());
    });
    EXPECT_GT(failures, 3);
    kor::test::failEachAllocation([&] {
        const bool pushed = filePushFileData() != 0;
        EXPECT_EQ(filePopFileData() != 0, pushed);
        const bool opened = fileOpenWriteBuffer() == kMemoryFile;
        EXPECT_EQ(file_hwrite(kMemoryFile, path.c_str(), 10) != 0, opened);
        const HGLOBAL block = fileCloseWriteBuffer();
        EXPECT_EQ(block != nullptr, opened);
        GlobalFree(block);
    });
}

}  // namespace
