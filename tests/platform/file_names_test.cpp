// Deleting, moving and copying files; attributes; folders.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;
using testing::Test;

class FileNames : public Test {
  protected:
    FileNames() {
        scratch_.file("file", "file");
        scratch_.file("other", "other");
        scratch_.folder("folder");
        scratch_.folder("full");
        scratch_.file("full\\inner", "inner");
    }

    std::string at(const char* name) const { return scratch_.path(name); }
    std::vector<std::string> entries() const { return namesOf(at("*")); }
    DWORD attributes(const char* name) const { return GetFileAttributesA(at(name).c_str()); }

    ScratchFolder scratch_;
};

TEST_F(FileNames, EveryCallNamesWhatIsMissingOrWrong) {
    const auto remove = [this](const char* name) { return DeleteFileA(at(name).c_str()); };
    const auto removeFolder = [this](const char* name) { return RemoveDirectoryA(at(name).c_str()); };
    const auto makeFolder = [this](const char* name) { return CreateDirectoryA(at(name).c_str(), nullptr); };
    const auto setAttributes = [this](const char* name) {
        return SetFileAttributesA(at(name).c_str(), FILE_ATTRIBUTE_NORMAL);
    };
    const auto getAttributes = [this](const char* name) -> BOOL {
        return attributes(name) != INVALID_FILE_ATTRIBUTES;
    };
    struct Case {
        const char* call;
        std::function<BOOL(const char*)> make;
        const char* name;
        DWORD error;
    };
    const Case cases[] = {
        {"DeleteFileA", remove, "missing", ERROR_FILE_NOT_FOUND},
        {"DeleteFileA", remove, "missing\\f", ERROR_PATH_NOT_FOUND},
        {"DeleteFileA", remove, "folder", ERROR_ACCESS_DENIED},
        {"DeleteFileA", remove, "file?", ERROR_INVALID_NAME},
        {"RemoveDirectoryA", removeFolder, "missing", ERROR_FILE_NOT_FOUND},
        {"RemoveDirectoryA", removeFolder, "file", ERROR_DIRECTORY},
        {"RemoveDirectoryA", removeFolder, "full", ERROR_DIR_NOT_EMPTY},
        {"CreateDirectoryA", makeFolder, "FOLDER", ERROR_ALREADY_EXISTS},
        {"CreateDirectoryA", makeFolder, "missing\\f", ERROR_PATH_NOT_FOUND},
        {"SetFileAttributesA", setAttributes, "missing", ERROR_FILE_NOT_FOUND},
        {"GetFileAttributesA", getAttributes, "missing", ERROR_FILE_NOT_FOUND},
        {"GetFileAttributesA", getAttributes, "file\\f", ERROR_PATH_NOT_FOUND},
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorAfter([&] { EXPECT_FALSE(c.make(c.name)) << c.call << " " << c.name; }), c.error)
            << c.call << " " << c.name;
    const std::vector<std::string> untouched = {".", "..", "file", "folder", "full", "other"};
    EXPECT_EQ(entries(), untouched);
    EXPECT_EQ(errorAfter([] { DeleteFileA(""); }), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(errorAfter([] { RemoveDirectoryA(""); }), DWORD{ERROR_INVALID_NAME});
}

TEST_F(FileNames, MovesFilesAndFolders) {
    EXPECT_EQ(errorAfter([&] { EXPECT_TRUE(MoveFileA(at("file").c_str(), at("folder\\moved").c_str())); }),
              kSeed);
    EXPECT_EQ(bytesOf(at("folder\\moved")), "file");
    EXPECT_TRUE(MoveFileA(at("full").c_str(), at("folder\\full").c_str()));
    EXPECT_EQ(bytesOf(at("folder\\full\\inner")), "inner");
    EXPECT_TRUE(MoveFileA(at("other").c_str(), at("OTHER").c_str())) << "itself";
    EXPECT_TRUE(MoveFileExA(at("folder\\moved").c_str(), at("other").c_str(),
                            MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
    EXPECT_EQ(bytesOf(at("other")), "file");
    EXPECT_EQ(attributes("file"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(FileNames, MovingRefusesWhatWouldDestroy) {
    struct Case {
        const char *from, *to;
        DWORD flags, error;
    };
    const Case cases[] = {
        {"missing", "new", 0, ERROR_FILE_NOT_FOUND},
        {"file", "other", 0, ERROR_ALREADY_EXISTS},
        {"file", "folder", 0, ERROR_ALREADY_EXISTS},
        {"file", "folder", MOVEFILE_REPLACE_EXISTING, ERROR_ACCESS_DENIED},
        {"file", "missing\\new", 0, ERROR_PATH_NOT_FOUND},
        {"folder", "full", 0, ERROR_ALREADY_EXISTS},
    };
    for (const Case& c : cases) {
        const DWORD error =
            errorAfter([&] { EXPECT_FALSE(MoveFileExA(at(c.from).c_str(), at(c.to).c_str(), c.flags)); });
        EXPECT_EQ(error, c.error) << c.from << " to " << c.to;
    }
    EXPECT_EQ(bytesOf(at("file")), "file");
    EXPECT_EQ(bytesOf(at("other")), "other");
}

TEST_F(FileNames, OpenFilesAreNeitherDeletedNorMovedUnlessTheyShareIt) {
    {
        const File open(at("file").c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
        const DWORD violation = ERROR_SHARING_VIOLATION;
        EXPECT_FAILS(violation, DeleteFileA(at("file").c_str()));
        EXPECT_FAILS(violation, MoveFileA(at("file").c_str(), at("new").c_str()));
        EXPECT_FAILS(ERROR_ACCESS_DENIED,
                     MoveFileExA(at("other").c_str(), at("file").c_str(), MOVEFILE_REPLACE_EXISTING));
    }
    const File open(at("file").c_str(), GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_TRUE(MoveFileA(at("file").c_str(), at("new").c_str()));
    EXPECT_TRUE(DeleteFileA(at("new").c_str()));
    char bytes[4] = {};
    DWORD done = 0;
    EXPECT_TRUE(ReadFile(open.get(), bytes, 4, &done, nullptr));
    EXPECT_EQ(std::string(bytes, done), "file") << "it lives on for its handles";
}

TEST_F(FileNames, CopiesContentsTimeAndReadOnly) {
    FILETIME written{};
    {
        const File file(at("file").c_str(), GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
        const SYSTEMTIME broken{1999, 12, 0, 31, 23, 59, 58, 0};
        ASSERT_TRUE(SystemTimeToFileTime(&broken, &written));
        ASSERT_TRUE(SetFileTime(file.get(), nullptr, nullptr, &written));
    }
    ASSERT_TRUE(SetFileAttributesA(at("file").c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(CopyFileA(at("file").c_str(), at("copy").c_str(), FALSE));
    EXPECT_EQ(bytesOf(at("copy")), "file");
    EXPECT_TRUE(attributes("copy") & FILE_ATTRIBUTE_READONLY);
    const File copy(at("copy").c_str(), GENERIC_READ, 0, OPEN_EXISTING);
    FILETIME copied{};
    EXPECT_TRUE(GetFileTime(copy.get(), nullptr, nullptr, &copied));
    EXPECT_EQ(CompareFileTime(&copied, &written), 0);
}

TEST_F(FileNames, CopiesMoreThanOneBlock) {
    std::string large(1000003, '\0');
    for (std::size_t index = 0; index < large.size(); ++index)
        large[index] = static_cast<char>(index * 7 >> 3);
    const std::string from = scratch_.file("large", large);
    EXPECT_TRUE(CopyFileA(from.c_str(), at("copy").c_str(), TRUE));
    EXPECT_TRUE(bytesOf(at("copy")) == large);
}

TEST_F(FileNames, CopyingRefuses) {
    struct Case {
        const char *from, *to;
        BOOL failIfExists;
        DWORD error;
    };
    const Case cases[] = {
        {"missing", "new", FALSE, ERROR_FILE_NOT_FOUND},
        {"file", "other", TRUE, ERROR_FILE_EXISTS},
        {"file", "file", FALSE, ERROR_SHARING_VIOLATION},
        {"folder", "new", FALSE, ERROR_ACCESS_DENIED},
        {"file", "folder", FALSE, ERROR_ACCESS_DENIED},
        {"file", "missing\\new", FALSE, ERROR_PATH_NOT_FOUND},
    };
    for (const Case& c : cases) {
        const DWORD error = errorAfter(
            [&] { EXPECT_FALSE(CopyFileA(at(c.from).c_str(), at(c.to).c_str(), c.failIfExists)); });
        EXPECT_EQ(error, c.error) << c.from << " to " << c.to;
    }
    EXPECT_EQ(bytesOf(at("file")), "file");
    EXPECT_EQ(bytesOf(at("other")), "other");
    EXPECT_EQ(attributes("new"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(FileNames, AttributesTellFoldersAndReadOnlyFiles) {
    EXPECT_EQ(attributes("file"), DWORD{FILE_ATTRIBUTE_ARCHIVE});
    EXPECT_EQ(attributes("folder"), DWORD{FILE_ATTRIBUTE_DIRECTORY});
    EXPECT_EQ(attributes("folder\\"), DWORD{FILE_ATTRIBUTE_DIRECTORY});
    ASSERT_TRUE(SetFileAttributesA(at("file").c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(attributes("file") & FILE_ATTRIBUTE_READONLY, DWORD{FILE_ATTRIBUTE_READONLY});
    EXPECT_FAILS(ERROR_ACCESS_DENIED, DeleteFileA(at("file").c_str()));
    EXPECT_TRUE(MoveFileA(at("file").c_str(), at("moved").c_str())) << "moving is not writing";
    ASSERT_TRUE(SetFileAttributesA(at("moved").c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(attributes("moved") & FILE_ATTRIBUTE_READONLY, 0u);
    EXPECT_TRUE(DeleteFileA(at("moved").c_str()));
}

TEST_F(FileNames, TheCurrentFolderIsNotRemoved) {
    char before[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryA(MAX_PATH, before), 0u);
    ASSERT_TRUE(SetCurrentDirectoryA(at("folder").c_str()));
    EXPECT_FAILS(ERROR_SHARING_VIOLATION, RemoveDirectoryA(at("folder").c_str()));
    ASSERT_TRUE(SetCurrentDirectoryA(before));
    EXPECT_TRUE(RemoveDirectoryA(at("folder").c_str()));
}

}  // namespace
