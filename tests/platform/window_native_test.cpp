// Our own windows' bounds, and results that other systems do not have as documented.
#include <climits>

#include "tests/platform/logged_window.h"

namespace {

using namespace kor::test;

int ticks = 0;
void CALLBACK tick(HWND, UINT, UINT_PTR, DWORD) { ++ticks; }

TEST_F(LoggedWindow, RefusesWhatIsNotThere) {
    const HWND a = make("a", WS_POPUP), gone = make("b", WS_POPUP);
    DestroyWindow(gone);
    EXPECT_TRUE(gives([&] { return DestroyWindow(gone); }, FALSE, ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_TRUE(gives([&] { return EnableWindow(gone, TRUE); }, FALSE, ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_TRUE(gives([&] { return SetTimer(gone, 1, 9, tick); }, UINT_PTR{0}, ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_TRUE(gives([&] { return GetDlgItem(gone, 1); }, HWND{nullptr}, ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_EQ(errorAfter([&] { DefWindowProcA(gone, WM_NULL, 0, 0); }), DWORD{ERROR_INVALID_WINDOW_HANDLE});
    char name[9];
    EXPECT_TRUE(gives([&] { return GetClassNameA(gone, name, 9); }, 0, ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_TRUE(gives([&] { return GetWindow(a, 99); }, HWND{nullptr}, ERROR_INVALID_GW_COMMAND));
    EXPECT_TRUE(gives([&] { return GetDlgItem(a, 99); }, HWND{nullptr}, ERROR_CONTROL_ID_NOT_FOUND));
    // A message may name any address as a timer's procedure.
    const MSG made{a, WM_TIMER, 1, reinterpret_cast<LPARAM>(tick), 0, {}};
    DispatchMessageA(&made);
    EXPECT_EQ(ticks, 0);
    EXPECT_FALSE(SendMessageA(make("e", WS_POPUP), EM_GETMODIFY, 0, 0)) << "no edit control";
}

TEST_F(LoggedWindow, IsBounded) {
    const HWND a = make("a", WS_POPUP);
    HWND inner = a;
    int depth = 0;
    while (HWND next = make("i", WS_CHILD, inner)) {
        inner = next;
        ASSERT_LT(++depth, 200);
    }
    EXPECT_EQ(depth, 99);
    const HWND b = make("b", WS_POPUP), c = make("c", WS_CHILD, b);
    EXPECT_TRUE(gives([&] { return SetParent(b, inner); }, HWND{nullptr}, ERROR_INVALID_PARAMETER));
    EXPECT_EQ(GetParent(c), b);
    const auto owner = [](HWND window, HWND its) {
        return [=] { return SetWindowLongPtrA(window, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(its)); };
    };
    EXPECT_TRUE(gives(owner(a, b), LONG_PTR{0}, kSeed));
    EXPECT_TRUE(gives(owner(b, a), LONG_PTR{0}, ERROR_INVALID_PARAMETER)) << "they would own each other";
    HWND last = a;
    int count = 0;
    for (HWND made = a; made; ++count) {
        last = made;
        made = CreateWindowExA(0, "Static", "", WS_CHILD, 0, 0, 1, 1, a, nullptr, nullptr, nullptr);
    }
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_USER_HANDLES});
    EXPECT_GT(count, 9'800);
    for (count = 0; PostMessageA(a, WM_USER, 0, 0); ++count) {
    }
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_ENOUGH_QUOTA});
    EXPECT_EQ(count, 10'000);
    EXPECT_TRUE(DestroyWindow(a));
    EXPECT_FALSE(IsWindow(last) || IsWindow(inner));
    MSG message;
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST_F(LoggedWindow, EndsWhereCoordinatesEnd) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a);
    EXPECT_TRUE(MoveWindow(a, INT_MAX - 5, INT_MIN, 300, INT_MAX, FALSE));
    EXPECT_TRUE(MoveWindow(b, INT_MAX, INT_MIN, INT_MAX, 9, FALSE));
    RECT place{};
    EXPECT_TRUE(GetWindowRect(b, &place));
    EXPECT_EQ(place.left, INT_MAX);
    EXPECT_EQ(place.right, INT_MAX);
    EXPECT_EQ(place.top, INT_MIN);
    POINT point{INT_MAX, INT_MIN};
    EXPECT_TRUE(ClientToScreen(b, &point));
    EXPECT_EQ(pairText("", point.x, point.y), pairText("", INT_MAX, INT_MIN));
}

}  // namespace
