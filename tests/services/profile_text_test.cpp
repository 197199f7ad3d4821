// Texts of several lines, between an edit control and a section.
#include <gtest/gtest.h>

#include "korutil/profile.h"
#include "platform/win32.h"
#include "tests/services/profiles.h"

namespace {

using kor::test::bytesOf;
using kor::test::Profiles;

class EditControl {
  public:
    EditControl()
        : window_(CreateWindowExA(0, "EDIT", "", ES_MULTILINE, 0, 0, 100, 100, nullptr, nullptr, nullptr,
                                  nullptr)) {}
    ~EditControl() { DestroyWindow(window_); }
    EditControl(const EditControl&) = delete;
    EditControl& operator=(const EditControl&) = delete;

    HWND window() const { return window_; }
    void set(const std::string& text, bool modified) {
        SendMessageA(window_, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
        SendMessageA(window_, EM_SETMODIFY, modified, 0);
    }
    bool isModified() const { return SendMessageA(window_, EM_GETMODIFY, 0, 0) != 0; }
    std::string text() const {
        std::string text(static_cast<std::size_t>(SendMessageA(window_, WM_GETTEXTLENGTH, 0, 0)) + 1, '\0');
        SendMessageA(window_, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
        text.pop_back();
        return text;
    }

  private:
    HWND window_;
};

}  // namespace

TEST(ProfileText, AnEditControlsTextIsStoredLineByLine) {
    const std::string cut(300, 'x');
    const std::string full(254, 'y');
    const struct {
        std::string text;
        int lines;
        std::string section;
    } cases[] = {{"a\tb\r\n\r\nc", 3, "1=a\\tb\r\n2=\r\n3=c\r\nLines=3\r\n"},
                 {"one\r\n", 1, "1=one\r\nLines=1\r\n"},
                 {"", 0, "Lines=0\r\n"},
                 {"a\r\n" + cut + "\r\nb", 2, "1=a\r\n2=" + cut.substr(0, 254) + "\r\nLines=2\r\n"},
                 {full + "\r\nb", 2, "1=" + full + "\r\n2=b\r\nLines=2\r\n"},
                 {full.substr(1) + "\tz", 1, "1=" + full.substr(1) + "\\t\r\nLines=1\r\n"}};
    for (const auto& c : cases) {
        const Profiles profiles("[T]\r\n9=old\r\nLines=9\r\n");
        EditControl edit;
        edit.set(c.text, true);
        EXPECT_EQ(profSaveEdit(edit.window(), "T", 1, nullptr), c.lines) << c.text;
        EXPECT_EQ(bytesOf(profiles.user()), "[T]\r\n" + c.section);
    }
    std::string text, section;  // more than some systems write at once
    for (int line = 1; line <= 300; ++line) {
        text += full + "\r\n";
        section += std::to_string(line) + "=" + full + "\r\n";
    }
    const Profiles profiles("[T]\r\n9=old\r\n");
    EditControl edit;
    edit.set(text, true);
    EXPECT_EQ(profSaveEdit(edit.window(), "T", 2, nullptr), 300);
    EXPECT_EQ(bytesOf(profiles.application()), "[T]\r\n" + section + "Lines=300\r\n");
    edit.set("new", false);
    EXPECT_EQ(profSaveEdit(edit.window(), "T", 1, nullptr), 0) << "not modified";
    EXPECT_EQ(bytesOf(profiles.user()), "[T]\r\n9=old\r\n");
}

TEST(ProfileText, IsLoadedWithTabsAndLineBreaks) {
    const struct {
        const char* section;
        int lines;
        const char* text;
    } cases[] = {{"1=a\\tb\\n\\\r\n2=\r\n3=c\r\nLines=3\r\n", 3, "a\tb\\n\\\r\n\r\nc"},
                 {"1=a\r\n3=c\r\nLines=4\r\n", 4, "a\r\n\r\nc\r\n"},
                 {"1=a\r\n", 0, ""},
                 {"1=a\r\nLines=-3\r\n", 0, ""},
                 {"1=a\r\n2=b\r\nLines=1\r\n", 1, "a"}};
    for (const auto& c : cases) {
        const Profiles profiles("", std::string("[T]\r\n") + c.section);
        EditControl edit;
        edit.set("former", true);
        char buffer[2048] = "former";
        EXPECT_EQ(profLoadEdit(edit.window(), "T", 0, nullptr), c.lines) << c.section;
        EXPECT_EQ(edit.text(), c.text);
        EXPECT_FALSE(edit.isModified());
        EXPECT_EQ(profLoadToBuf(buffer, "T", 0, nullptr), c.lines) << c.section;
        EXPECT_STREQ(buffer, c.text);
    }
}

TEST(ProfileText, ReadsNoMoreLinesThanASectionCanHave) {
    std::string section = "[T]\r\n1=a\r\nLines=2000000000\r\n[U]\r\nLines=4200\r\n";
    for (int line = 1; line <= 4200; ++line)
        section += std::to_string(line) + "=x\r\n";
    const Profiles profiles(section);
    EXPECT_EQ(profLoadToBuf(nullptr, "T", 0, nullptr), 4096);
    EXPECT_EQ(profLoadToBuf(nullptr, "U", 0, nullptr), 4200);
}
