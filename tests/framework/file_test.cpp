#include "korutil/framework/file.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/framework/thrown.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

class File : public testing::Test {
  protected:
    std::string path(std::string_view name) const { return folder.path(name); }

    static std::string read(CFile& file, UINT count) {
        std::string data(count, '#');
        data.resize(file.Read(data.data(), count));
        return data;
    }

    ScratchFolder folder;
};

constexpr UINT kCreate = CFile::modeCreate | CFile::modeReadWrite;

TEST_F(File, WritesReadsAndSeeks) {
    CFile file(path("a.kor").c_str(), kCreate);
    file.Write("korutil", 7);
    EXPECT_EQ(file.GetPosition(), 7u);
    EXPECT_EQ(file.GetLength(), 7u);
    EXPECT_EQ(read(file, 10), "");
    file.SeekToBegin();
    EXPECT_EQ(read(file, 3), "kor");
    EXPECT_EQ(file.Seek(-1, CFile::current), 2u);
    EXPECT_EQ(file.Seek(-4, CFile::end), 3u);
    EXPECT_EQ(read(file, 100), "util");
    EXPECT_EQ(file.SeekToEnd(), 7u);
    file.SetLength(9);
    EXPECT_EQ(causeOf([&] { file.Seek(-10, CFile::current); }), "badSeek 131");
    EXPECT_EQ(causeOf([&] { file.Seek(0, 3); }), "badSeek 87");
    EXPECT_NE(causeOf([&] { file.SetLength(~0ull); }), "nothing");
    EXPECT_EQ(file.GetPosition(), 9u);
    const std::unique_ptr<CFile> copy(file.Duplicate());
    EXPECT_EQ(copy->GetPosition(), 9u);
    EXPECT_EQ(copy->GetFilePath(), file.GetFilePath());
    copy->SetLength(7);
    EXPECT_EQ(file.Seek(5'000'000'000, CFile::begin), 5'000'000'000u);
    EXPECT_EQ(file.GetPosition(), 5'000'000'000u);
    file.Flush();
    file.Close();
    copy->Close();
    EXPECT_EQ(kor::test::bytesOf(path("a.kor")), "korutil");
    CFile reader(path("a.kor").c_str(), CFile::modeRead | CFile::shareDenyNone);
    std::string name;
    EXPECT_EQ(causeOf([&] { reader.Write("x", 1); }, &name), "accessDenied 5");
    EXPECT_EQ(name, path("a.kor"));
    CFile other(path("a.kor").c_str(), CFile::modeWrite | CFile::shareDenyNone);
    EXPECT_EQ(causeOf([&] { read(other, 1); }), "accessDenied 5");
    reader.LockRange(10, 10);
    EXPECT_EQ(causeOf([&] { other.LockRange(19, 1); }), "lockViolation 33");
    reader.UnlockRange(10, 10);
    other.LockRange(19, 1);
}

TEST_F(File, OpenFlagsDecideAboutCreating) {
    const struct {
        UINT flags;
        bool exists;
        const char* error;    // of opening; null when it succeeds
        const char* content;  // afterwards
    } cases[] = {
        {CFile::modeRead, true, nullptr, "old"},
        {CFile::modeRead, false, "fileNotFound 2", nullptr},
        {CFile::modeCreate | CFile::modeWrite, true, nullptr, ""},
        {CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite, true, nullptr, "old"},
        {CFile::modeReadWrite | CFile::modeNoInherit | CFile::typeBinary, true, nullptr, "old"},
        {0x3, true, "generic 87", "old"},   // no such access
        {0x50, true, "generic 87", "old"},  // no such sharing
    };
    int number = 0;
    for (const auto& row : cases) {
        const std::string name = path("file" + std::to_string(number++));
        if (row.exists) folder.file("file" + std::to_string(number - 1), "old");
        EXPECT_EQ(causeOf([&] { CFile file(name.c_str(), row.flags); }), row.error ? row.error : "nothing")
            << "row " << number;
        if (row.content == nullptr) continue;
        EXPECT_EQ(kor::test::bytesOf(name), row.content) << "row " << number;
    }
}

TEST_F(File, ShareModeKeepsOthersOut) {
    constexpr UINT read = CFile::modeRead, write = CFile::modeWrite;
    const struct {
        UINT first, second;
        bool allowed;
    } cases[] = {
        {read, read | CFile::shareDenyNone, false},  // no share flag: exclusive
        {read | CFile::shareExclusive, read | CFile::shareDenyNone, false},
        {read | CFile::shareDenyWrite, read | CFile::shareDenyWrite, true},
        {read | CFile::shareDenyWrite, write | CFile::shareDenyNone, false},
        {write | CFile::shareDenyRead, read | CFile::shareDenyNone, false},
        {write | CFile::shareDenyNone, read | CFile::shareDenyNone, true},
    };
    folder.file("a.kor", "text");
    for (const auto& row : cases) {
        CFile first(path("a.kor").c_str(), row.first);
        EXPECT_EQ(causeOf([&] { CFile second(path("a.kor").c_str(), row.second); }),
                  row.allowed ? "nothing" : "sharingViolation 32")
            << "row " << (&row - cases);
    }
}

TEST_F(File, OpenReportsWithoutThrowing) {
    CFile file;
    CFileException error;
    EXPECT_FALSE(file.Open(path("none\\a.kor").c_str(), CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::badPath);
    EXPECT_EQ(error.m_lOsError, 3);
    EXPECT_EQ(error.m_strFileName, path("none\\a.kor").c_str());
    EXPECT_FALSE(file.Open(nullptr, CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::badPath);
    EXPECT_FALSE(file.Open(folder.path().c_str(), CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::accessDenied) << "a folder is no file";
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);

    EXPECT_TRUE(file.Open(path("a.kor").c_str(), kCreate));
    EXPECT_FALSE(file.Open(path("b.kor").c_str(), kCreate, &error));
    EXPECT_EQ(error.m_lOsError, 1247);
    EXPECT_EQ(file.GetFileName(), "a.kor");
}

TEST_F(File, WithoutAHandleIsInvalid) {
    CFile file;
    char byte = 0;
    EXPECT_EQ(causeOf([&] { file.Read(&byte, 1); }), "invalidFile 6");
    EXPECT_EQ(causeOf([&] { file.Write(&byte, 1); }), "invalidFile 6");
    EXPECT_EQ(causeOf([&] { file.Seek(0, CFile::begin); }), "invalidFile 6");
    EXPECT_EQ(causeOf([&] { file.GetLength(); }), "invalidFile 6");
    EXPECT_EQ(causeOf([&] { file.LockRange(0, 1); }), "invalidFile 6");
    EXPECT_EQ(causeOf([&] { delete file.Duplicate(); }), "invalidFile 6");
    file.Flush();
    file.Abort();
    file.Close();
}

TEST_F(File, TellsAndChangesItsName) {
    CFile file(path("dir.d\\..\\archive.tar.kor").c_str(), kCreate);
    EXPECT_EQ(file.GetFilePath(), path("archive.tar.kor").c_str()) << "not the full path";
    EXPECT_EQ(file.GetFileName(), "archive.tar.kor");
    EXPECT_EQ(file.GetFileTitle(), "archive.tar");
    const struct {
        const char *path, *name, *title;
    } cases[] = {{"C:\\dir.d\\file", "file", "file"},
                 {"a/b.kor", "b.kor", "b"},
                 {"C:\\.kor", ".kor", ".kor"},
                 {"C:\\dir\\", "", ""}};
    for (const auto& row : cases) {
        file.SetFilePath(row.path);
        EXPECT_EQ(file.GetFileName(), row.name) << row.path;
        EXPECT_EQ(file.GetFileTitle(), row.title) << row.path;
    }
    file.Close();
    EXPECT_EQ(file.GetFilePath(), "");
}

TEST_F(File, ClosesWhatItOpenedAndNothingElse) {
    HANDLE handle = nullptr;
    {
        CFile file(path("a.kor").c_str(), kCreate);
        handle = file.m_hFile;
        CFile user(handle);
        user.Write("x", 1);
    }
    EXPECT_EQ(causeOf([&] { CFile(path("a.kor").c_str(), CFile::modeRead); }), "nothing") << "still open";
    CFile stale(handle);
    EXPECT_EQ(causeOf([&] { stale.Close(); }), "invalidFile 6");
    stale.Close();

    CFile file(path("a.kor").c_str(), kCreate);
    {
        CFile user(file.m_hFile);
        EXPECT_EQ(user.GetLength(), 0u);
    }
    file.Write("open", 4);
    file.Abort();
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
}

TEST_F(File, RenamesAndRemoves) {
    folder.file("a.kor", "a");
    folder.file("b.kor", "b");
    std::string name;
    EXPECT_EQ(causeOf([&] { CFile::Rename(path("a.kor").c_str(), path("b.kor").c_str()); }, &name),
              "accessDenied 183");
    EXPECT_EQ(name, path("a.kor"));
    EXPECT_EQ(causeOf([&] { CFile::Rename(path("x.kor").c_str(), path("y.kor").c_str()); }),
              "fileNotFound 2");
    CFile::Remove(path("b.kor").c_str());
    CFile::Rename(path("a.kor").c_str(), path("b.kor").c_str());
    EXPECT_EQ(kor::test::bytesOf(path("b.kor")), "a");
    EXPECT_EQ(causeOf([&] { CFile::Remove(path("a.kor").c_str()); }), "fileNotFound 2");
    CFile open(path("b.kor").c_str(), CFile::modeRead);
    EXPECT_EQ(causeOf([&] { CFile::Remove(path("b.kor").c_str()); }), "sharingViolation 32");
}

}  // namespace
