// The files of one kind, and the pieces of a dialog's selection.
#include "korutil/file_dialog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korutil/memory.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

using kor::test::ScratchFolder;

std::vector<std::string> listOf(const FileIoDescription& kind) {
    std::vector<std::string> names;
    void* list = io_GetListOfFiles(&kind);
    if (!list) return names;
    DWORD count = 0, tag = 0, size = 0, nameTag = 0;
    armGetData(list, nullptr, &count, nullptr, &size, &tag);
    EXPECT_EQ(tag, ARM_TAG_OF_ARRAYS);
    for (char** name = static_cast<char**>(list); *name; ++name) {
        names.push_back(*name);
        armGetData(*name, nullptr, &count, nullptr, &size, &nameTag);
        EXPECT_EQ(count, names.back().size() + 1);
        EXPECT_EQ(size * 10 + nameTag, 13u);
    }
    EXPECT_EQ(armFreeReset(&list), 1);
    return names;
}

TEST(ListOfFiles, HoldsOneKindWithoutExtensions) {
    const ScratchFolder scratch;
    const std::string base = scratch.path();
    scratch.folder("sub");
    scratch.folder("sub\\folder.tif");
    for (const char* name : {"A.B.TIF", "Name.tif", "SHORT.TIF", "other.jpg", "x.tiff", "tif", "plain"})
        scratch.file(std::string("sub\\") + name);
    FileIoDescription kind{};
    kind.folder = base.c_str();
    kind.subfolder = "sub";
    kind.extension = "tif";
    EXPECT_EQ(listOf(kind), (std::vector<std::string>{"A.b", "Name", "Short"}));
    kind.extension = "B.tif";
    EXPECT_EQ(listOf(kind), (std::vector<std::string>{"A.b"}));
    for (const char* none : {"", static_cast<const char*>(nullptr)}) {
        kind.extension = none;
        EXPECT_EQ(listOf(kind), (std::vector<std::string>{"plain", "tif"}));
    }
    kind.extension = "none";
    EXPECT_EQ(io_GetListOfFiles(&kind), nullptr);
    kind.subfolder = "missing";
    EXPECT_EQ(io_GetListOfFiles(&kind), nullptr);
    const std::string tooLong(250, 'x');
    kind.subfolder = tooLong.c_str();
    EXPECT_EQ(io_GetListOfFiles(&kind), nullptr);
    EXPECT_EQ(io_GetListOfFiles(nullptr), nullptr);
}

TEST(ListOfFiles, GrowsAndKeepsANullEntryBehindTheLastName) {
    const ScratchFolder scratch;
    std::size_t made = 0;
    FileIoDescription kind{};
    kind.folder = scratch.path().c_str();
    kind.extension = "x";
    for (const std::size_t count : {38u, 39u, 40u, 41u, 48u, 49u, 50u, 51u, 75u}) {
        for (; made < count; ++made)
            scratch.file("f" + std::to_string(made) + ".x");
        EXPECT_EQ(listOf(kind).size(), count);
    }
}

// "-" for failure, which leaves the buffer alone.
std::string taken(int(KORUTIL_CALL* take)(const char*, DWORD, char*, DWORD), const char* text, DWORD index,
                  DWORD size = 20) {
    char buffer[20] = "-";
    const int result = take(text, index, buffer, size);
    EXPECT_EQ(result, std::string(buffer) != "-") << text;
    return buffer;
}

TEST(DialogSelection, GivesOneEntrysPatternsOfAFilter) {
    const char bars[] = "Images|*.tif;*.tiff|All|*.*", zeros[] = "Images\0*.tif;*.tiff\0All\0*.*\0";
    for (const char* filter : {bars, zeros}) {
        EXPECT_EQ(taken(sysGetSelectedFilter, filter, 1, 13), "*.tif;*.tiff");
        EXPECT_EQ(taken(sysGetSelectedFilter, filter, 1, 12), "-");
        EXPECT_EQ(taken(sysGetSelectedFilter, filter, 2), "*.*");
        EXPECT_EQ(taken(sysGetSelectedFilter, filter, 3) + taken(sysGetSelectedFilter, filter, 0), "--");
    }
    EXPECT_EQ(taken(sysGetSelectedFilter, "Images|*.tif|All", 2) + taken(sysGetSelectedFilter, "\0", 1),
              "--");
}

TEST(DialogSelection, GivesOneFilesPath) {
    EXPECT_EQ(taken(sysGetSelectedFileName, "c:\\d\\a.b\0", 0, 9), "c:\\d\\a.b");
    EXPECT_EQ(taken(sysGetSelectedFileName, "c:\\d\\a.b\0", 0, 8), "-");
    EXPECT_EQ(taken(sysGetSelectedFileName, "c:\\d\\a.b\0", 1), "-");
    EXPECT_EQ(taken(sysGetSelectedFileName, "c:\\d\0a\0b\0", 1, 7), "c:\\d\\b");
    EXPECT_EQ(taken(sysGetSelectedFileName, "c:\\d\0a\0b\0", 2), "-");
    EXPECT_EQ(taken(sysGetSelectedFileName, "c:\\\0a\0b\0", 0), "c:\\a");
    EXPECT_EQ(taken(sysGetSelectedFileName, "\0", 0), "-");
}

TEST(FileDialog, RefusesAnUnknownMode) {
    const FileIoDescription kind{};
    EXPECT_EQ(io_File(&kind, 2, nullptr) + io_FileEx(nullptr, kFileIoLoad, nullptr, nullptr, 0), 0);
}

}  // namespace
