// The dialog on a terminal.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <span>
#include <string>

#include "korutil/file_dialog.h"
#include "korutil/file_system.h"
#include "korutil/platform/name.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"
#include "tests/support/terminal_native.h"

namespace {

using kor::test::Redirected;
using kor::test::ScratchFolder;
using kor::test::Terminal;

std::string called;

void load(const char* path, UINT_PTR user) { called = "load " + std::to_string(user) + ' ' + path; }
void save(const char* path, UINT_PTR user) { called = "save " + std::to_string(user) + ' ' + path; }

// Runs the dialog on a terminal at which the keys were typed.
WORD answer(const FileIoDescription& kind, int mode, const char* name, const std::string& keys,
            std::span<char> path, std::string* shown = nullptr) {
    const Terminal terminal;
    terminal.type(keys);
    const Redirected input(STDIN_FILENO, terminal.slave()), error(STDERR_FILENO, terminal.slave());
    const WORD result = io_FileEx(&kind, mode, name, path.data(), static_cast<DWORD>(path.size()));
    if (shown) *shown = terminal.shown();
    return result;
}

TEST(FileDialogNative, AsksOnTheTerminal) {
    const ScratchFolder scratch;
    const std::string folder = scratch.path(), there = scratch.file("there.tif", "x");
    scratch.folder("sub");
    std::string native = folder.substr(2);
    for (char& c : native)
        if (c == '\\') c = '/';
    FileIoDescription kind{};
    kind.folder = folder.c_str();
    kind.extension = "tif";
    kind.defaultName = "there.tif";
    kind.load = load;
    kind.save = save;
    kind.user = 7;
    const struct {
        int mode;
        const char* defaultName;
        std::string keys;
        WORD result;
        std::string path;
    } cases[] = {{kFileIoLoad, nullptr, "\n", 8, there},
                 {kFileIoLoad, nullptr, " there \n", 8, there},
                 {kFileIoLoad, nullptr, "none\nsub\na*b\n" + native + "/there.tif\n", 8, there},
                 {kFileIoLoad, nullptr, "sub/../there.tif\n", 8, there},
                 {kFileIoLoad, nullptr, there + "\n", 8, there},
                 {kFileIoLoad, nullptr, "none\n\x04", 2, ""},
                 {kFileIoLoad, "", "\n", 2, ""},
                 {kFileIoSave, "new", "\n", 4, scratch.path("new.tif")},
                 {kFileIoSave, nullptr, "sub/new.bin\n", 4, scratch.path("sub\\new.bin")},
                 {kFileIoSave, nullptr, "missing/new\nne\xC3\xA4\n", 4, scratch.path("ne\xE4.tif")},
                 {kFileIoSave, nullptr, "\nn\n\ny\n", 4, there}};
    for (const auto& c : cases) {
        char path[MAX_PATH] = "old";
        called.clear();
        EXPECT_EQ(answer(kind, c.mode, c.defaultName, c.keys, path), c.result) << c.keys;
        const bool chosen = c.result != kFileIoCancelled;
        EXPECT_EQ(path, chosen ? c.path : "old") << c.keys;
        EXPECT_EQ(called, chosen ? (c.mode == kFileIoLoad ? "load 7 " : "save 7 ") + c.path : "") << c.keys;
    }
    char small[4] = "old";
    std::string shown;
    EXPECT_EQ(answer(kind, kFileIoLoad, nullptr, "\n", small, &shown), kFileIoLoaded);
    EXPECT_STREQ(small, "") << "too small";
    EXPECT_EQ(shown, "Open (*.tif) in " + native + " [there.tif]: ");
    const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const Redirected input(STDIN_FILENO, null);
    close(null);
    EXPECT_EQ(io_File(&kind, kFileIoLoad, "x"), kFileIoCancelled) << "there is no terminal";
}

TEST(FileSystemNative, LinksAreRemovedAndNotWhatTheyLeadTo) {
    const ScratchFolder scratch;
    const std::string kept = scratch.file("kept.txt", "x"), tree = scratch.folder("tree"),
                      outside = scratch.folder("o");
    scratch.file("o\\inner", "x");
    char native[4096], target[MAX_PATH];
    korNativePath(tree.c_str(), native, sizeof native);
    const std::string at(native);
    ASSERT_EQ(symlink("../o", (at + "/folder").c_str()) + symlink("../kept.txt", (at + "/file").c_str()) +
                  symlink("gone/x", (at + "/dangling").c_str()) + symlink(".", (at + "/loop").c_str()),
              0);
    EXPECT_EQ(sysResolveShortcut((tree + "\\folder").c_str(), target, sizeof target), 1);
    EXPECT_EQ(target, outside);
    EXPECT_EQ(sysResolveShortcut((tree + "\\dangling").c_str(), target, sizeof target), 1);
    EXPECT_EQ(target, tree + "\\gone\\x");
    ASSERT_EQ(mkfifo((at + "/pipe").c_str(), 0600), 0);
    const std::string pipe = tree + "\\pipe";
    for (const auto test : {sysReadableFile, sysReadableFileFast, sysIsFileOK}) {
        SetLastError(0);
        EXPECT_EQ(test(pipe.c_str()), 0) << "and does not wait for a writer";
        EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_SUPPORTED});
    }
    SetLastError(0);
    EXPECT_EQ(sysResolveShortcut(pipe.c_str(), target, sizeof target), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_SUPPORTED});
    SysFileStatus status{};
    EXPECT_EQ(sysFileStatus(pipe.c_str(), &status), 1) << GetLastError();
    EXPECT_EQ(status.attributes, DWORD{FILE_ATTRIBUTE_DEVICE});
    EXPECT_EQ(sysRemoveDir(tree.c_str()), 1) << GetLastError();
    EXPECT_EQ(sysExistsFile(kept.c_str()) + sysExistsFile(scratch.path("o\\inner").c_str()), 2);
    ASSERT_EQ(symlink("o", (at.substr(0, at.rfind('/')) + "/link").c_str()), 0);
    EXPECT_EQ(sysRemoveDir(scratch.path("link\\").c_str()), 1);
    EXPECT_EQ(sysExistsFile(scratch.path("o\\inner").c_str()), 1);
}

// An ordinary user who owns a read-only file, also when the test's user may do everything.
class Owner {
  public:
    explicit Owner(const std::string& file) {
        chmod(file.c_str(), 0444);
        if (geteuid() == 0 && chown(file.c_str(), 65534, 65534) == 0) changed_ = seteuid(65534) == 0;
    }
    ~Owner() { EXPECT_TRUE(!changed_ || seteuid(0) == 0); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

  private:
    bool changed_ = false;
};

TEST(FileSystemNative, AReadOnlyFileThatStaysIsAsItWas) {
    const auto removeFile = [](const char* path) { return sysDeleteFileEx(path, kDeleteReadOnly); };
    const struct {
        const char* what;
        void (*make)(const std::string& kept, const std::string& tree);  // native
        mode_t mode;                                                     // of the tree
        int(KORUTIL_CALL* remove)(const char*);
        const char* path;
        DWORD error;
    } cases[] = {
        {"a link's target",
         [](auto&, auto& tree) { EXPECT_EQ(symlink("../kept", (tree + "/l").c_str()), 0); }, 0555,
         sysRemoveDir, "tree", ERROR_ACCESS_DENIED},
        {"the same", [](auto&, auto& tree) { EXPECT_EQ(symlink("../kept", (tree + "/l").c_str()), 0); }, 0555,
         removeFile, "tree\\l", ERROR_ACCESS_DENIED},
        {"itself", [](auto& kept, auto& tree) { EXPECT_EQ(link(kept.c_str(), (tree + "/l").c_str()), 0); },
         0555, sysRemoveDir, "tree", ERROR_ACCESS_DENIED},
        {"its other name",
         [](auto& kept, auto& tree) { EXPECT_EQ(link(kept.c_str(), (tree + "/l").c_str()), 0); }, 0777,
         removeFile, "tree\\l", 0},
        {"an unreadable folder", [](auto&, auto& tree) { EXPECT_EQ(mkdir((tree + "/d").c_str(), 0777), 0); },
         0, sysRemoveDir, "tree", ERROR_ACCESS_DENIED},
        {"one that may not be entered",
         [](auto&, auto& tree) { EXPECT_EQ(mkdir((tree + "/d").c_str(), 0777), 0); }, 0444, sysRemoveDir,
         "tree", ERROR_ACCESS_DENIED},
        {"a hidden name", [](auto&, auto& tree) { EXPECT_EQ(mkdir((tree + "/a:b").c_str(), 0777), 0); }, 0777,
         sysRemoveDir, "tree", ERROR_DIR_NOT_EMPTY}};
    for (const auto& c : cases) {
        const ScratchFolder scratch;
        char native[4096];
        korNativePath(scratch.file("kept", "x").c_str(), native, sizeof native);
        const std::string kept(native), tree = kept.substr(0, kept.rfind('/')) + "/tree";
        ASSERT_EQ(mkdir(tree.c_str(), 0777), 0);
        c.make(kept, tree);
        ASSERT_EQ(chmod(tree.c_str(), c.mode) + chmod(tree.substr(0, tree.rfind('/')).c_str(), 0777), 0);
        {
            const Owner owner(kept);
            EXPECT_EQ(c.remove(scratch.path(c.path).c_str()), c.error == 0) << c.what;
            EXPECT_TRUE(c.error == 0 || GetLastError() == c.error) << c.what << ": " << GetLastError();
        }
        struct stat status {};
        EXPECT_EQ(stat(kept.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode_t{0444}) << c.what;
        chmod(tree.c_str(), 0777);
        rmdir((tree + "/a:b").c_str());
    }
}

}  // namespace
