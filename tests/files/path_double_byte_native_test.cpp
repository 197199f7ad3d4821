// Paths in code page 932, in a program of its own since the code page of a process is fixed by its first use.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "korutil/file_dialog.h"
#include "korutil/path.h"

namespace {

const int codePageIsSet = setenv("KORUTIL_CODEPAGE", "932", 1);

// The second byte of each looks like a backslash, a bar or a small letter.
#define SO "\x83\x5C"
#define PO "\x83\x7C"
#define TE "\x83\x65"

TEST(DoubleBytePath, ASecondByteIsNoSeparator) {
    ASSERT_EQ(codePageIsSet, 0);
    const struct {
        int(KORUTIL_CALL* change)(char*);
        const char *before, *after;
    } cases[] = {
        {sysAppendBackslash, "c:\\" SO, "c:\\" SO "\\"},
        {sysDeleteBackslash, "c:\\" SO, "c:\\" SO},
        {sysMakeCommdlgDir, SO "\\", SO},
        {[](char* path) { return sysBeautifyPathname(path, 0); }, "A" SO "CON\\" TE ".TXT",
         "A" SO "con\\" TE ".txt"},
        {[](char* path) { return sysMakeValidDirPath(path, 260); }, "a" PO SO "/b", "a" PO SO "\\b"},
        {[](char* path) { return sysCvtToRelPath(path, "c:\\" SO SO "\\y", 0); }, "c:\\" SO SO "\\f", "f"},
        {[](char* path) { return sysCvtToRelPath(path, "c:\\" SO "b\\y", 0); }, "c:\\" SO "a", "..\\" SO "a"},
        {[](char* path) { return sysCvtToAbsPath(path, "c:\\a\\" SO "b\\" SO, 0); }, "..\\" SO,
         "c:\\a\\" SO}};
    for (const auto& c : cases) {
        char path[260];
        std::snprintf(path, sizeof path, "%s", c.before);
        EXPECT_EQ(c.change(path), 1) << c.before;
        EXPECT_STREQ(path, c.after);
    }
    EXPECT_EQ(sysIsReservedFileName("c:\\" SO "con"), 0);
    EXPECT_EQ(sysIsReservedFileName("c:\\" SO "\\con"), 1);
    const char* extension = nullptr;
    EXPECT_EQ(sysGetFileExt("a.b" SO, &extension), 1);
    char folder[16], name[16], patterns[16];
    EXPECT_EQ(sysSplitPathEx("a\\" SO ".x", nullptr, 0, folder, 16, name, 16, nullptr, 0), 1);
    EXPECT_STREQ(folder, "a\\");
    EXPECT_STREQ(name, SO);
    EXPECT_EQ(sysGetSelectedFilter(PO "|*.tif", 1, patterns, 16), 1);
    EXPECT_STREQ(patterns, "*.tif");
}

}  // namespace
