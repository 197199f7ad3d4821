// The system's dialog: a second thread finds it and presses a button.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "korutil/file_dialog.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

BOOL CALLBACK takeDialog(HWND window, LPARAM result) {
    char name[16] = "";
    GetClassNameA(window, name, sizeof name);
    if (std::string(name) != "#32770" || !IsWindowVisible(window)) return TRUE;
    *reinterpret_cast<HWND*>(result) = window;
    return FALSE;
}

HWND dialogOf(DWORD thread) {
    HWND found = nullptr;
    EnumThreadWindows(thread, takeDialog, reinterpret_cast<LPARAM>(&found));
    return found;
}

// Runs the dialog while another thread presses the button.
WORD answer(const FileIoDescription& kind, int mode, int button, std::string& path) {
    char buffer[MAX_PATH] = "old";
    std::thread user([thread = GetCurrentThreadId(), button] {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        HWND dialog = nullptr;
        while (!dialog && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            dialog = dialogOf(thread);
        }
        EXPECT_NE(dialog, nullptr) << "no dialog was shown";
        PostMessageA(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0);
    });
    const WORD result = io_FileEx(&kind, mode, nullptr, buffer, sizeof buffer);
    user.join();
    path = buffer;
    return result;
}

std::string called;
void KORUTIL_CALL load(const char* path, UINT_PTR) { called = std::string("load ") + path; }
void KORUTIL_CALL save(const char* path, UINT_PTR) { called = std::string("save ") + path; }

TEST(FileDialogShown, LoadsSavesOrIsCancelled) {
    const kor::test::ScratchFolder scratch;
    const std::string there = scratch.file("there.tif", "x");
    FileIoDescription kind{};
    kind.folder = scratch.path().c_str();
    kind.extension = "tif";
    kind.filter = "Images|*.tif|All|*.*";
    kind.load = load;
    kind.save = save;
    std::string path;
    EXPECT_EQ(answer(kind, kFileIoLoad, IDCANCEL, path), kFileIoCancelled);
    EXPECT_EQ(path + called, "old");
    kind.defaultName = "there.tif";
    EXPECT_EQ(answer(kind, kFileIoLoad, IDOK, path), kFileIoLoaded);
    EXPECT_EQ(lstrcmpiA(path.c_str(), there.c_str()), 0) << path;
    EXPECT_EQ(called, "load " + path);
    kind.defaultName = "new";
    EXPECT_EQ(answer(kind, kFileIoSave, IDOK, path), kFileIoSaved);
    EXPECT_EQ(lstrcmpiA(path.c_str(), scratch.path("new.tif").c_str()), 0) << path;
    EXPECT_EQ(called, "save " + path);
}

}  // namespace
