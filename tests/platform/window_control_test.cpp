// Edit controls, static texts and buttons.
#include <cstring>
#include <functional>

#include "tests/platform/logged_window.h"

namespace {

using namespace kor::test;

class Control : public LoggedWindow {
  protected:
    HWND control(const char* className, DWORD style, int id = 21, const char* text = "") {
        if (!parent_) parent_ = make("p", WS_POPUP | WS_VISIBLE);
        HWND made = CreateWindowExA(0, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 90, 90, parent_,
                                    reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
        EXPECT_NE(made, nullptr);
        logged();
        return made;
    }
    HWND parent() const { return parent_; }

    static LRESULT send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageA(window, message, wParam, lParam);
    }
    static LRESULT send(HWND window, UINT message, WPARAM wParam, const char* text) {
        return SendMessageA(window, message, wParam, reinterpret_cast<LPARAM>(text));
    }
    static std::string selectionOf(HWND edit) {
        DWORD start = 99, end = 99;
        const LRESULT both =
            send(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
        EXPECT_EQ(both, MAKELONG(start, end));
        return pairText("", static_cast<int>(start), static_cast<int>(end));
    }
    static std::string lineOf(HWND edit, int line) {
        char buffer[20] = {};
        const WORD size = 10;
        std::memcpy(buffer, &size, sizeof size);
        const LRESULT length = send(edit, EM_GETLINE, static_cast<WPARAM>(line), buffer);
        return std::string(buffer, static_cast<std::size_t>(length));
    }
    static constexpr DWORD kMulti = ES_MULTILINE | ES_AUTOHSCROLL | ES_AUTOVSCROLL;

  private:
    HWND parent_ = nullptr;
};

TEST_F(Control, EditSelectsWithinItsText) {
    const HWND edit = control("EDIT", kMulti, 21, "0123456789");
    const struct {
        int start, end;
        const char* selection;
    } cases[] = {{2, 4, "(2,4)"},   {6, 3, "(3,6)"},   {0, -1, "(0,10)"},  {-1, 0, "(10,10)"},
                 {3, 5, "(3,5)"},   {-1, -1, "(5,5)"}, {99, 7, "(7,10)"},  {99, 199, "(10,10)"},
                 {-2, 3, "(3,10)"}, {3, -2, "(3,10)"}, {10, 10, "(10,10)"}};
    EXPECT_EQ(selectionOf(edit), "(0,0)");
    for (const auto& c : cases) {
        EXPECT_EQ(send(edit, EM_SETSEL, static_cast<WPARAM>(INT_PTR{c.start}), c.end), TRUE);
        EXPECT_EQ(selectionOf(edit), c.selection) << c.start << ", " << c.end;
    }
}

// What editing does to the text, the mark of a change and the parent.
TEST_F(Control, EditTellsOfChanges) {
    const char* const kChange = "p:command(21,1024) p:command(21,768)";
    const char* const kCut = "p:command(21,1281) p:command(21,1024) p:command(21,768)";
    for (const DWORD style : {DWORD{ES_AUTOHSCROLL}, kMulti}) {
        const HWND edit = control("EDIT", style);
        const auto step = [edit](UINT message, WPARAM wParam, const char* text) {
            return [=] { send(edit, message, wParam, text); };
        };
        send(edit, EM_SETLIMITTEXT, 8);
        const struct {
            std::function<void()> act;
            const char* text;
            int isModified;
            const char* told;
        } cases[] = {
            {step(WM_SETTEXT, 0, "abcdef"), "abcdef", 0, style == kMulti ? "" : kChange},
            {[=] { send(edit, EM_SETSEL, 1, 3); }, "abcdef", 0, ""},
            {step(EM_REPLACESEL, 0, "XYZ"), "aXYZdef", 1, kChange},
            {[=] { EXPECT_EQ(selectionOf(edit), "(4,4)"); }, "aXYZdef", 1, ""},
            {step(EM_SETMODIFY, 0, nullptr), "aXYZdef", 0, ""},
            {step(EM_REPLACESEL, 0, ""), "aXYZdef", 0, ""},
            {step(EM_REPLACESEL, 0, "1234"), "aXYZ1def", 1, kCut},
            {step(WM_SETTEXT, 0, "more than eight"), "more than eight", 0, style == kMulti ? "" : kChange},
            {[=] { send(edit, EM_SETSEL, 0, -1); }, "more than eight", 0, ""},
            {[=] { send(edit, EM_SETREADONLY, TRUE); }, "more than eight", 0, ""},
            {step(WM_CLEAR, 0, nullptr), "more than eight", 0, ""},
            {step(WM_CHAR, 'z', nullptr), "more than eight", 0, ""},
            {step(EM_REPLACESEL, 0, "new"), "new", 1, kChange},
            {[=] { send(edit, EM_SETREADONLY, FALSE); }, "new", 1, ""},
            {step(WM_CHAR, 'z', nullptr), "newz", 1, kChange},
            {step(WM_CHAR, '\b', nullptr), "new", 1, kChange},
            {step(WM_SETTEXT, 0, nullptr), "", 0, style == kMulti ? "" : kChange},
            {step(EM_SETMODIFY, 5, nullptr), "", 1, ""},
        };
        logged();
        for (const auto& c : cases) {
            c.act();
            EXPECT_EQ(logged(), c.told) << c.text;
            EXPECT_EQ(textOf(edit), c.text);
            EXPECT_EQ(send(edit, EM_GETMODIFY), c.isModified) << c.text;
        }
        send(edit, EM_SETLIMITTEXT, 0);
        EXPECT_EQ(static_cast<DWORD>(send(edit, EM_GETLIMITTEXT)), style == kMulti ? 0xFFFFFFFF : 0x7FFFFFFE);
        DestroyWindow(edit);
    }
}

TEST_F(Control, EditKnowsItsLines) {
    const HWND edit = control("EDIT", kMulti);
    EXPECT_EQ(send(edit, EM_GETLINECOUNT), 1);
    send(edit, WM_SETTEXT, 0, "one\r\nthree\rfour\r\r\nfive\r\n");
    EXPECT_EQ(send(edit, EM_GETLINECOUNT), 4);
    const struct {
        int line, start, length;
        const char* text;
    } cases[] = {{0, 0, 3, "one"}, {1, 5, 10, "three\rfour"}, {2, 18, 4, "five"}, {3, 24, 0, ""}};
    for (const auto& c : cases) {
        EXPECT_EQ(send(edit, EM_LINEINDEX, static_cast<WPARAM>(c.line)), c.start);
        EXPECT_EQ(send(edit, EM_LINELENGTH, static_cast<WPARAM>(c.start)), c.length);
        EXPECT_EQ(send(edit, EM_LINEFROMCHAR, static_cast<WPARAM>(c.start)), c.line);
        EXPECT_EQ(lineOf(edit, c.line), c.text);
    }
    EXPECT_EQ(send(edit, EM_LINEINDEX, 4), -1);
    EXPECT_EQ(lineOf(edit, 4), "");
    EXPECT_EQ(send(edit, EM_LINEFROMCHAR, 999), 3);
    send(edit, EM_SETSEL, 6, 20);
    EXPECT_EQ(send(edit, EM_LINEINDEX, static_cast<WPARAM>(-1)), 18);
    EXPECT_EQ(send(edit, EM_LINEFROMCHAR, static_cast<WPARAM>(-1)), 1);
    EXPECT_EQ(send(edit, EM_LINELENGTH, static_cast<WPARAM>(-1)), 1 + 2);
    const HWND single = control("EDIT", ES_AUTOHSCROLL);
    send(single, WM_SETTEXT, 0, "one\r\ntwo");
    EXPECT_EQ(send(single, EM_GETLINECOUNT), 1);
    EXPECT_EQ(lineOf(single, 7), "one\r\ntwo");
}

TEST_F(Control, EditBuildsALongTextFromPieces) {
    const HWND edit = control("EDIT", kMulti);
    std::string wanted;
    for (int line = 0; line < 500; ++line) {
        const std::string piece = std::to_string(line) + "\r\n";
        wanted += piece;
        send(edit, EM_SETSEL, 0x7FFF, 0x7FFF);
        send(edit, EM_REPLACESEL, FALSE, piece.c_str());
    }
    std::string text(wanted.size() + 1, '\0');
    EXPECT_EQ(GetWindowTextA(edit, text.data(), static_cast<int>(text.size())),
              static_cast<int>(wanted.size()));
    EXPECT_EQ(text.c_str(), wanted);
    EXPECT_EQ(send(edit, EM_GETLINECOUNT), 501);
}

TEST_F(Control, ButtonTakesTheChecksOfItsKind) {
    const struct {
        DWORD kind;
        UINT checks[4];  // after BM_SETCHECK with 0 to 3
        UINT clicks[3];  // after three clicks on the unchecked button
        LRESULT code;
    } cases[] = {
        {BS_PUSHBUTTON, {0, 0, 0, 0}, {0, 0, 0}, DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON},
        {BS_DEFPUSHBUTTON, {0, 0, 0, 0}, {0, 0, 0}, DLGC_BUTTON | DLGC_DEFPUSHBUTTON},
        {BS_CHECKBOX, {0, 1, 1, 1}, {0, 0, 0}, DLGC_BUTTON},
        {BS_AUTOCHECKBOX, {0, 1, 1, 1}, {1, 0, 1}, DLGC_BUTTON},
        {BS_RADIOBUTTON, {0, 1, 1, 1}, {0, 0, 0}, DLGC_BUTTON | DLGC_RADIOBUTTON},
        {BS_3STATE, {0, 1, 2, 2}, {0, 0, 0}, DLGC_BUTTON},
        {BS_AUTO3STATE, {0, 1, 2, 2}, {1, 2, 0}, DLGC_BUTTON},
        {BS_GROUPBOX, {0, 0, 0, 0}, {0, 0, 0}, DLGC_STATIC},
        {BS_OWNERDRAW, {0, 0, 0, 0}, {0, 0, 0}, DLGC_BUTTON},
    };
    for (const auto& c : cases) {
        const HWND button = control("BUTTON", c.kind, 21, "text");
        EXPECT_EQ(send(button, WM_GETDLGCODE), c.code) << c.kind;
        for (UINT check = 0; check < 4; ++check) {
            EXPECT_TRUE(CheckDlgButton(parent(), 21, check));
            EXPECT_EQ(IsDlgButtonChecked(parent(), 21), c.checks[check]) << c.kind << ", " << check;
        }
        send(button, BM_SETCHECK, BST_UNCHECKED);
        if (c.kind == BS_GROUPBOX) continue;
        for (const UINT check : c.clicks) {
            logged();
            send(button, BM_CLICK);
            EXPECT_NE(logged().find("p:command(21,0)"), std::string::npos);
            EXPECT_EQ(send(button, BM_GETSTATE), static_cast<LRESULT>(check | BST_FOCUS)) << c.kind;
        }
        EXPECT_EQ(textOf(button), "text");
        DestroyWindow(button);
    }
}

TEST_F(Control, RadioButtonIsTheOneOfItsGroup) {
    const HWND first = control("BUTTON", BS_AUTORADIOBUTTON | WS_GROUP, 71);
    const HWND second = control("BUTTON", BS_AUTORADIOBUTTON, 72);
    const HWND apart = control("BUTTON", BS_AUTORADIOBUTTON | WS_GROUP, 73);
    const auto checks = [&] {
        return pairText("", static_cast<int>(send(first, BM_GETCHECK)),
                        static_cast<int>(send(second, BM_GETCHECK))) +
               std::to_string(send(apart, BM_GETCHECK));
    };
    for (const HWND button : {first, apart, second})
        send(button, BM_CLICK);
    EXPECT_EQ(checks(), "(0,1)1");
    EXPECT_TRUE(GetWindowLongA(second, GWL_STYLE) & WS_TABSTOP);
    EXPECT_TRUE(CheckRadioButton(parent(), 71, 73, 71));
    EXPECT_EQ(checks(), "(1,0)0");
}

TEST_F(Control, IsReachedByItsNumber) {
    const HWND label = control("STATIC", 0, 31, "label");
    char text[9] = "xyz";
    EXPECT_EQ(GetDlgItem(parent(), 31), label);
    EXPECT_TRUE(SetDlgItemTextA(parent(), 31, "other"));
    EXPECT_EQ(GetDlgItemTextA(parent(), 31, text, 4), 3u);
    EXPECT_STREQ(text, "oth");
    EXPECT_EQ(SendDlgItemMessageA(parent(), 31, WM_GETTEXTLENGTH, 0, 0), 5);
    EXPECT_EQ(GetDlgItem(parent(), 99), nullptr);
    EXPECT_FALSE(SetDlgItemTextA(parent(), 99, "x"));
    EXPECT_EQ(GetDlgItemTextA(parent(), 99, text, 4), 0u);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(SendDlgItemMessageA(parent(), 99, WM_GETTEXTLENGTH, 0, 0), 0);
}

TEST_F(Control, OfTheSystemMayBeReplacedByAModulesOwn) {
    WNDCLASSA record{};
    EXPECT_TRUE(GetClassInfoA(nullptr, "button", &record));
    record = {};
    record.lpfnWndProc = DefWindowProcA;
    record.lpszClassName = "Button";
    record.hInstance = GetModuleHandleA(nullptr);
    ASSERT_NE(RegisterClassA(&record), 0);
    const HWND own = control("BUTTON", BS_AUTOCHECKBOX);
    send(own, BM_SETCHECK, BST_CHECKED);
    EXPECT_EQ(send(own, BM_GETCHECK), 0);
    DestroyWindow(own);
    EXPECT_TRUE(UnregisterClassA("Button", GetModuleHandleA(nullptr)));
}

}  // namespace
