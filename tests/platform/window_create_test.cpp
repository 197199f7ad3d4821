// Windows come and go; what they keep.
#include <vector>

#include "tests/platform/logged_window.h"

namespace {

using namespace kor::test;

const HWND kNoWindow = reinterpret_cast<HWND>(INT_PTR{0x12345});

TEST_F(LoggedWindow, IsToldOfItsCreationInOrder) {
    const HWND a = make("a", WS_POPUP);
    EXPECT_EQ(logged(), "a:nccreate a:create a:size(300,200) a:move(10,20)");
    const HWND b = make("b", WS_CHILD | WS_VISIBLE, a, 11);
    EXPECT_EQ(logged(), "b:nccreate b:create b:size(300,200) b:move(10,20) a:parentnotify(1,11) b:show");
    EXPECT_FALSE(IsWindowVisible(b)) << "within a hidden one";
    CreateWindowExA(WS_EX_NOPARENTNOTIFY, kClass, "", WS_CHILD, 0, 0, -1, 5, a, nullptr, nullptr, nullptr);
    EXPECT_EQ(logged(), "?:nccreate ?:create ?:size(0,5) ?:move(0,0)");
    EXPECT_EQ(textOf(a), "a");
}

TEST_F(LoggedWindow, IsNotCreatedAgainstItsWill) {
    windowAnswers[WM_NCCREATE] = FALSE;
    EXPECT_TRUE(gives([&] { return make("a", WS_POPUP); }, HWND{nullptr}, kSeed));
    EXPECT_EQ(logged(), "a:nccreate a:ncdestroy");
    windowAnswers = {{WM_CREATE, -1}};
    EXPECT_TRUE(gives([&] { return make("a", WS_POPUP); }, HWND{nullptr}, kSeed));
    std::string told = logged();
    if (const auto at = told.find("a:destroy "); at != told.npos) told.erase(at, 10);  // not everywhere
    EXPECT_EQ(told, "a:nccreate a:create a:ncdestroy");
}

TEST_F(LoggedWindow, CannotBeCreatedOutOfNothing) {
    const auto created = [](LPCSTR name, DWORD style, HWND parent) {
        return errorAfter([=] {
            EXPECT_EQ(CreateWindowExA(0, name, "", style, 0, 0, 1, 1, parent, nullptr, nullptr, nullptr),
                      nullptr);
        });
    };
    EXPECT_EQ(created(kClass, WS_CHILD, nullptr), DWORD{ERROR_TLW_WITH_WSCHILD});
    EXPECT_EQ(created(kClass, WS_CHILD, kNoWindow), DWORD{ERROR_INVALID_WINDOW_HANDLE});
    EXPECT_EQ(created(kClass, WS_POPUP, kNoWindow), DWORD{ERROR_INVALID_WINDOW_HANDLE});
    for (const LPCSTR name : {LPCSTR{"KorNoSuchClass"}, LPCSTR{""}, LPCSTR{MAKEINTRESOURCEA(0xCFFF)}}) {
        const DWORD error = created(name, WS_POPUP, nullptr);
        // Some systems say so in words of their own.
        EXPECT_TRUE(error == ERROR_CANNOT_FIND_WND_CLASS || error == ERROR_CLASS_DOES_NOT_EXIST) << error;
    }
}

TEST_F(LoggedWindow, GoesWithAllThatIsItsOwn) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a), c = make("c", WS_CHILD, a);
    const HWND d = make("d", WS_CHILD, b), owned = make("o", WS_POPUP, d);
    EXPECT_EQ(GetWindow(owned, GW_OWNER), a) << "the top-level window around the given one";
    EXPECT_TRUE(gives([] { return UnregisterClassA(kClass, GetModuleHandleA(nullptr)); }, FALSE,
                      ERROR_CLASS_HAS_WINDOWS));
    PostMessageA(c, WM_USER, 0, 0);
    logged();
    EXPECT_TRUE(gives([&] { return DestroyWindow(a); }, TRUE, kSeed));
    EXPECT_EQ(logged(),
              "o:destroy o:ncdestroy a:destroy b:destroy d:destroy c:destroy d:ncdestroy b:ncdestroy "
              "c:ncdestroy a:ncdestroy");
    for (const HWND window : {a, b, c, d, owned}) {
        EXPECT_TRUE(gives([&] { return IsWindow(window); }, FALSE, ERROR_INVALID_WINDOW_HANDLE));
    }
    MSG message;
    EXPECT_FALSE(PeekMessageA(&message, nullptr, WM_USER, WM_USER, PM_REMOVE)) << "its messages too";
}

TEST_F(LoggedWindow, TellsTheParentOfAChildThatGoes) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a, 7);
    logged();
    SendMessageA(b, WM_CLOSE, 0, 0);
    EXPECT_EQ(logged(), "b:close a:parentnotify(2,7) b:destroy b:ncdestroy");
    EXPECT_FALSE(DestroyWindow(GetDesktopWindow()));
}

TEST_F(LoggedWindow, IsNotFoundUnderAStaleHandle) {
    RECT rectangle;
    POINT point{};
    MSG message;
    const HWND stale = make("a", WS_POPUP);
    DestroyWindow(stale);
    const HWND next = make("b", WS_POPUP);
    for (const HWND window : {stale, kNoWindow}) {
        ASSERT_NE(next, window);
        const std::vector<DWORD> errors = {
            errorAfter([&] { SetWindowTextA(window, "x"); }),
            errorAfter([&] { GetWindowTextLengthA(window); }),
            errorAfter([&] { SendMessageA(window, WM_NULL, 0, 0); }),
            errorAfter([&] { PostMessageA(window, WM_NULL, 0, 0); }),
            errorAfter([&] { EXPECT_EQ(GetMessageA(&message, window, 0, 0), -1); }),
            errorAfter([&] { PeekMessageA(&message, window, 0, 0, 0); }),
            errorAfter([&] { GetWindowRect(window, &rectangle); }),
            errorAfter([&] { GetClientRect(window, &rectangle); }),
            errorAfter([&] { MoveWindow(window, 0, 0, 1, 1, FALSE); }),
            errorAfter([&] { SetWindowPos(next, window, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE); }),
            errorAfter([&] { ClientToScreen(window, &point); }),
            errorAfter([&] { ShowWindow(window, SW_SHOW); }),
            errorAfter([&] { IsWindowVisible(window); }),
            errorAfter([&] { IsWindowEnabled(window); }),
            errorAfter([&] { SetFocus(window); }),
            errorAfter([&] { SetActiveWindow(window); }),
            errorAfter([&] { GetParent(window); }),
            errorAfter([&] { SetParent(next, window); }),
            errorAfter([&] { GetWindow(window, GW_CHILD); }),
            errorAfter([&] { GetDlgCtrlID(window); }),
            errorAfter([&] { GetWindowLongA(window, GWL_STYLE); }),
            errorAfter([&] { SetWindowLongA(window, GWL_USERDATA, 1); }),
        };
        for (std::size_t index = 0; index < errors.size(); ++index)
            EXPECT_EQ(errors[index], DWORD{ERROR_INVALID_WINDOW_HANDLE}) << "call " << index;
    }
}

TEST_F(LoggedWindow, KeepsWords) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a, 11);
    const auto word = [a](int index) { return [=] { return GetWindowLongA(a, index); }; };
    EXPECT_TRUE(gives(word(4), 0, kSeed));
    for (const int index : {5, 8, 0x7FFFFFFF, -5, -7})
        EXPECT_TRUE(gives(word(index), 0, ERROR_INVALID_INDEX)) << index;
    EXPECT_EQ(SetWindowLongA(a, 2, 0x01020304), 0);
    EXPECT_EQ(GetWindowLongA(a, 0), 0x03040000);
    EXPECT_TRUE(gives([&] { return SetWindowLongA(a, 5, 1); }, 0, ERROR_INVALID_INDEX));
    EXPECT_EQ(SetWindowLongA(b, GWL_ID, 111), 11);
    EXPECT_EQ(GetDlgCtrlID(b), 111);
    EXPECT_EQ(GetWindowLongPtrA(b, GWLP_HWNDPARENT), reinterpret_cast<LONG_PTR>(a));
    const auto former = SetWindowLongPtrA(b, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DefWindowProcA));
    EXPECT_EQ(former, reinterpret_cast<LONG_PTR>(loggedProcedure));
    logged();
    SendMessageA(b, WM_CLOSE, 0, 0);
    EXPECT_EQ(logged(), "a:parentnotify(2,111)") << "the new procedure has the messages";
    EXPECT_EQ(SetWindowLongA(a, GWL_STYLE, static_cast<LONG>(WS_POPUP | WS_DISABLED)),
              static_cast<LONG>(WS_POPUP | WS_CLIPSIBLINGS));
    EXPECT_EQ(logged(), "a:stylechanging a:stylechanged");
    EXPECT_FALSE(IsWindowEnabled(a));
}

TEST_F(LoggedWindow, GivesItsTextAsFarAsTheBufferGoes) {
    const HWND a = make("popup", WS_POPUP);
    const struct {
        int size;
        const char* text;
    } cases[] = {{64, "popup"}, {6, "popup"}, {5, "popu"}, {2, "p"}, {1, ""}};
    for (const auto& c : cases) {
        char buffer[64] = "untouched";
        EXPECT_EQ(GetWindowTextA(a, buffer, c.size), static_cast<int>(std::string(c.text).size()));
        EXPECT_STREQ(buffer, c.text);
    }
    char buffer[] = "xyz";
    EXPECT_EQ(GetWindowTextA(a, buffer, 0), 0);
    EXPECT_EQ(SendMessageA(a, WM_GETTEXT, 0, reinterpret_cast<LPARAM>(buffer)), 0);
    EXPECT_STREQ(buffer, "xyz");
    EXPECT_EQ(GetClassNameA(a, buffer, 4), 3);
    EXPECT_STREQ(buffer, "Kor");
    EXPECT_TRUE(SetWindowTextA(a, nullptr));
    EXPECT_EQ(GetWindowTextLengthA(a), 0);
}

TEST_F(LoggedWindow, HasItsPlaceAmongOthers) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a), c = make("c", WS_CHILD, a);
    const HWND d = make("d", WS_CHILD, b);
    EXPECT_EQ(GetWindow(a, GW_CHILD), b) << "the first child stays on top";
    EXPECT_EQ(GetWindow(b, GW_HWNDNEXT), c);
    EXPECT_TRUE(gives([&] { return GetWindow(b, GW_HWNDPREV); }, HWND{nullptr}, kSeed));
    EXPECT_TRUE(SetWindowPos(b, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE));
    EXPECT_EQ(GetWindow(b, GW_HWNDPREV), c);
    EXPECT_TRUE(SetWindowPos(c, b, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE));
    EXPECT_EQ(GetWindow(b, GW_HWNDNEXT), c);
    EXPECT_TRUE(SetWindowPos(b, d, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE)) << "no sibling: nothing happens";
    EXPECT_EQ(GetWindow(a, GW_CHILD), b);
    EXPECT_TRUE(gives([&] { return SetParent(b, d); }, HWND{nullptr}, ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(gives([&] { return SetParent(a, a); }, HWND{nullptr}, ERROR_INVALID_PARAMETER));
    EXPECT_EQ(SetParent(c, b), a);
    EXPECT_TRUE(IsChild(a, c));
    EXPECT_FALSE(IsChild(a, a));
    EXPECT_EQ(SetParent(c, nullptr), b);
    EXPECT_EQ(GetParent(c), GetDesktopWindow());
    EXPECT_EQ(GetAncestor(d, GA_ROOT), a);
    DestroyWindow(c);
}

}  // namespace
