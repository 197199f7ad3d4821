// Windows' texts in code page 932, in a program of its own: a process has one code page.
#include <cstdlib>

#include "tests/platform/logged_window.h"

namespace {

using namespace kor::test;

const int codePageIsSet = setenv("KORUTIL_CODEPAGE", "932", 1);

#define SO "\x83\x5C"  // one character, whose second byte is a backslash

TEST_F(LoggedWindow, NeverSplitsACharacter) {
    ASSERT_EQ(codePageIsSet, 0);
    EXPECT_EQ(GetSystemMetrics(SM_DBCSENABLED), 1);
    const HWND a = make("a" SO SO, WS_POPUP);
    const HWND edit =
        CreateWindowExA(0, "EDIT", "a" SO SO, WS_CHILD, 0, 0, 9, 9, a, nullptr, nullptr, nullptr);
    const char* const cuts[] = {"", "", "a", "a", "a" SO, "a" SO, "a" SO SO};
    for (int size = 0; size <= 6; ++size) {
        char text[9] = "";
        for (const HWND window : {a, edit}) {
            GetWindowTextA(window, text, size);
            EXPECT_STREQ(text, cuts[size]) << size;
        }
    }
    SendMessageA(edit, EM_SETSEL, 2, 4);
    EXPECT_EQ(SendMessageA(edit, EM_GETSEL, 0, 0), MAKELONG(1, 3));
    SendMessageA(edit, EM_REPLACESEL, 0, reinterpret_cast<LPARAM>("xy"));
    EXPECT_EQ(textOf(edit), "axy" SO);
    SendMessageA(edit, EM_SETLIMITTEXT, 6, 0);
    SendMessageA(edit, EM_REPLACESEL, 0, reinterpret_cast<LPARAM>(SO));
    EXPECT_EQ(textOf(edit), "axy" SO) << "one byte is room for none";
    SendMessageA(edit, EM_SETSEL, 5, 5);
    SendMessageA(edit, WM_CHAR, '\b', 0);
    EXPECT_EQ(textOf(edit), "axy");
}

}  // namespace
