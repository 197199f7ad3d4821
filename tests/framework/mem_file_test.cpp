#include "korutil/framework/mem_file.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutil/framework/memory_exception.h"
#include "tests/framework/thrown.h"
#include "tests/support/random.h"

namespace {

using namespace kor::test;

std::string contentOf(CFile& file) {
    const ULONGLONG position = file.GetPosition();
    file.SeekToBegin();
    std::string content(static_cast<std::size_t>(file.GetLength()), '#');
    EXPECT_EQ(file.Read(content.data(), static_cast<UINT>(content.size()) + 1), content.size());
    file.Seek(static_cast<LONGLONG>(position), CFile::begin);
    return content;
}

TEST(MemFile, RefusesPositionsThatCannotBe) {
    CMemFile file;
    file.Write("abc", 3);
    EXPECT_EQ(causeOf([&] { file.Seek(-4, CFile::current); }), "badSeek 131");
    EXPECT_EQ(causeOf([&] { file.Seek(LLONG_MIN, CFile::end); }), "badSeek 131");
    EXPECT_EQ(causeOf([&] { file.Seek(0, 3); }), "badSeek 87");
    EXPECT_EQ(file.GetPosition(), 3u);
    EXPECT_TRUE(isMemoryFailure([&] { file.SetLength(ULLONG_MAX); }));
    EXPECT_TRUE(isMemoryFailure([&] { file.SetLength(ULLONG_MAX / 2 + 1); }));
    file.Seek(INT_MAX, CFile::begin);
    EXPECT_EQ(causeOf([&] { file.Seek(LLONG_MAX, CFile::current); }), "badSeek 87");
    EXPECT_EQ(file.GetLength(), 3u);
}

TEST(MemFile, IsNoFileOfTheSystem) {
    CMemFile file;
    CFileException error;
    EXPECT_FALSE(file.Open("x", CFile::modeRead, &error));
    EXPECT_EQ(error.m_lOsError, 50);
    EXPECT_EQ(causeOf([&] { delete file.Duplicate(); }), "generic 50");
    EXPECT_EQ(causeOf([&] { file.LockRange(0, 1); }), "generic 50");
    EXPECT_EQ(causeOf([&] { file.UnlockRange(0, 1); }), "generic 50");
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    file.Flush();
}

TEST(MemFile, AttachedBlockIsTheFileAndCannotGrow) {
    BYTE block[] = "korutil";
    CMemFile file(block, 7);
    EXPECT_EQ(contentOf(file), "korutil");
    file.Write("KOR", 3);
    EXPECT_STREQ(reinterpret_cast<char*>(block), "KORutil");
    file.SeekToEnd();
    EXPECT_TRUE(isMemoryFailure([&] { file.Write("!", 1); }));
    EXPECT_TRUE(isMemoryFailure([&] { file.SetLength(8); }));
    EXPECT_EQ(contentOf(file), "KORutil");
    file.SetLength(3);
    file.Close();
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_EQ(block[6], 'l');
}

TEST(MemFile, AttachedBlockThatMayGrowStartsEmpty) {
    CMemFile file(16);
    file.Write("own", 3);
    auto* block = static_cast<BYTE*>(std::malloc(4));
    file.Attach(block, 4, 8);
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_EQ(file.GetPosition(), 0u);
    file.Write("0123456789", 10);
    BYTE* grown = file.Detach();
    EXPECT_EQ(std::string(reinterpret_cast<char*>(grown), 10), "0123456789");
    std::free(grown);
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_EQ(file.Detach(), nullptr);
    file.Write("again", 5);  // a block of its own, which it frees
    EXPECT_EQ(contentOf(file), "again");
}

TEST(MemFile, GivesDirectAccess) {
    CMemFile file;
    void* start = nullptr;
    void* end = nullptr;
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferCheck), 1u);
    EXPECT_EQ(CFile().GetBufferPtr(CFile::bufferCheck), 0u);
    file.Seek(2, CFile::begin);
    ASSERT_EQ(file.GetBufferPtr(CFile::bufferWrite, 5, &start, &end), 5u);
    ASSERT_EQ(static_cast<char*>(end) - static_cast<char*>(start), 5);
    std::memcpy(start, "abcde", 5);
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferCommit, 4), 0u);
    EXPECT_EQ(file.GetPosition(), 6u);
    EXPECT_EQ(contentOf(file), std::string("\0\0abcd", 6));
    file.Seek(3, CFile::begin);
    ASSERT_EQ(file.GetBufferPtr(CFile::bufferRead, 100, &start, &end), 3u);
    EXPECT_EQ(std::string(static_cast<char*>(start), static_cast<char*>(end)), "bcd");
    EXPECT_EQ(file.GetPosition(), 6u);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferRead, 1, &start, &end), 0u);
    EXPECT_EQ(start, nullptr);
    EXPECT_EQ(file.GetBufferPtr(CFile::bufferRead, 1), 0u);
    EXPECT_EQ(file.GetBufferPtr(9, 1, &start, &end), 0u);

    BYTE block[4] = {'a', 'b', 'c', 'd'};
    CMemFile fixed(block, sizeof block);
    fixed.Seek(3, CFile::begin);
    EXPECT_TRUE(isMemoryFailure([&] { fixed.GetBufferPtr(CFile::bufferWrite, 2, &start, &end); }));
    fixed.GetBufferPtr(CFile::bufferCommit, 100);
    EXPECT_EQ(fixed.GetPosition(), 4u) << "committed more than there is room for";
}

// Memory of the host's own, with a count of how often it moved.
class CHostMemory : public CMemFile {
  public:
    ~CHostMemory() override { Close(); }
    int blocks = 0;
    int moves = 0;

  protected:
    BYTE* Alloc(SIZE_T bytes) override { return ++blocks, CMemFile::Alloc(bytes); }
    BYTE* Realloc(BYTE* block, SIZE_T bytes) override { return ++moves, CMemFile::Realloc(block, bytes); }
    void Free(BYTE* block) override { --blocks, CMemFile::Free(block); }
};

TEST(MemFile, TakesItsMemoryFromOverriddenFunctions) {
    CHostMemory file;
    for (int i = 0; i < 1 << 20; ++i)
        file.Write("x", 1);
    EXPECT_EQ(file.blocks, 1);
    EXPECT_LT(file.moves, 40) << "growing costs more with every step";
    file.Close();
    EXPECT_EQ(file.blocks, 0);
}

TEST(MemFile, BehavesAsAStringOfBytesWouldInRandomChanges) {
    auto random = kor::test::generator();
    const auto below = [&random](std::size_t limit) { return static_cast<unsigned>(random() % limit); };
    CMemFile file(8);
    std::string model;
    std::size_t position = 0;
    for (int step = 0; step < kor::test::scaled(5000); ++step) {
        const unsigned count = below(40), action = below(4);
        if (action == 0) {
            const std::string data(count, static_cast<char>('a' + below(26)));
            file.Write(data.data(), count);
            if (count > 0) {
                model.resize(std::max(model.size(), position + count));
                model.replace(position, count, data);
                position += count;
            }
        } else if (action == 1) {
            std::string data(count, '#');
            const std::string wanted = position < model.size() ? model.substr(position, count) : "";
            data.resize(file.Read(data.data(), count));
            ASSERT_EQ(data, wanted) << "step " << step;
            position += wanted.size();
        } else if (action == 2) {
            position = below(model.size() + 20);
            file.Seek(static_cast<LONGLONG>(position) - static_cast<LONGLONG>(model.size()), CFile::end);
        } else {
            model.resize(below(300));
            file.SetLength(model.size());
            position = std::min(position, model.size());
        }
        ASSERT_EQ(file.GetPosition(), position) << "step " << step;
        ASSERT_EQ(contentOf(file), model) << "step " << step;
    }
}

}  // namespace
