// What the user sees in a window: a second thread reads each box and presses a button.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "korutil/error.h"
#include "korutil/warning.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "tests/runtime/own_texts.h"

namespace {

using kor::test::ownText;

constexpr char kCaption[] = "caption of the box";
constexpr int kMessageBoxText = 0xFFFF;

// Presses a button of the next box with a caption.
class User {
  public:
    User(const char* caption, int button, int textControl)
        : thread_([this, caption, button, textControl] { press(caption, button, textControl); }) {}
    ~User() {
        if (thread_.joinable()) thread_.join();
    }
    User(const User&) = delete;
    User& operator=(const User&) = delete;

    /// The text that stood in the box.
    std::string seen() {
        thread_.join();
        return text_;
    }

  private:
    void press(const char* caption, int button, int textControl) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        HWND box = nullptr;
        while (!box && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            box = FindWindowA("#32770", caption);
            if (box && !IsWindowVisible(box)) box = nullptr;
        }
        if (!box) return;
        char text[256];
        GetDlgItemTextA(box, textControl, text, sizeof(text));
        text_ = text;
        PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    }

    std::string text_;
    std::thread thread_;
};

TEST(WarningShown, EachKindOfTheDefaultProcedure) {
    MSGBOXPARAMSA indirect{};
    indirect.cbSize = sizeof(indirect);
    indirect.lpszText = "text of the box";
    indirect.lpszCaption = kCaption;
    for (UINT_PTR kind = kWarningFile; kind <= kWarningIndirect; ++kind) {
        UtlWarningRecord record{};
        record.kind = kind;
        record.text = "text of the box";
        record.caption = kCaption;
        record.style = MB_ICONINFORMATION;
        record.instance = kind == kWarningIndirect ? &indirect : nullptr;
        const bool isDialog = kind == kWarningDialog;
        User user(kCaption, IDOK, isDialog ? kor::resource::kWarningDialogText : kMessageBoxText);
        EXPECT_EQ(utlShowWarningProc(&record), IDOK) << kind;
        EXPECT_EQ(user.seen(), "text of the box") << kind;
    }
}

TEST(WarningShown, AQuestionGivesItsAnswerAndTheMemoryErrorIsShown) {
    User asked("Lumetra", IDNO, kMessageBoxText);
    EXPECT_EQ(utlWarning(nullptr, nullptr, "Lens %d?", MB_YESNO, 3), IDNO)
        << "no hook: the default procedure";
    EXPECT_EQ(asked.seen(), "Lens 3?");
    User told("Lumetra", IDOK, kMessageBoxText);
    EXPECT_EQ(OutOfMemoryError(), 1);
    EXPECT_EQ(told.seen(), ownText(kor::text::kOutOfMemory));
}

}  // namespace
