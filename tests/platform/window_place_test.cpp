// Where windows lie, which of them are seen, and which one has the focus.
#include "tests/platform/logged_window.h"

namespace {

using namespace kor::test;

std::string placeOf(HWND window) {
    RECT r{};
    EXPECT_TRUE(GetWindowRect(window, &r));
    return pairText("", r.left, r.top) + pairText("", r.right - r.left, r.bottom - r.top);
}

TEST_F(LoggedWindow, LiesWithinItsParent) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a);
    EXPECT_EQ(placeOf(b), "(20,40)(300,200)");
    POINT point{1, 2};
    EXPECT_TRUE(ClientToScreen(b, &point));
    EXPECT_EQ(pairText("", point.x, point.y), "(21,42)");
    EXPECT_TRUE(ScreenToClient(a, &point));
    EXPECT_EQ(pairText("", point.x, point.y), "(11,22)");
    RECT client{};
    EXPECT_TRUE(GetClientRect(b, &client));
    EXPECT_EQ(pairText("", client.left, client.top) + pairText("", client.right, client.bottom),
              "(0,0)(300,200)");
    EXPECT_EQ(placeOf(GetDesktopWindow()),
              "(0,0)" + pairText("", GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)));
}

TEST_F(LoggedWindow, IsToldWhatMoves) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a);
    constexpr UINT kStill = SWP_NOZORDER | SWP_NOACTIVATE;
    const struct {
        int x, y, width, height;
        UINT flags;
        const char* told;
        const char* place;
    } cases[] = {
        {7, 8, 71, 81, kStill, "b:changing b:changed b:move(7,8) b:size(71,81)", "(17,28)(71,81)"},
        {7, 8, 71, 81, kStill, "b:changing", "(17,28)(71,81)"},
        {7, 8, -5, 81, kStill, "b:changing b:changed b:size(0,81)", "(17,28)(0,81)"},
        {1, 2, 3, 4, kStill | SWP_NOSIZE, "b:changing b:changed b:move(1,2)", "(11,22)(0,81)"},
        {-9, -9, 3, 4, kStill | SWP_NOMOVE, "b:changing b:changed b:size(3,4)", "(11,22)(3,4)"},
        {5, 5, 3, 4, kStill | SWP_NOSENDCHANGING, "b:changed b:move(5,5)", "(15,25)(3,4)"},
        {-5, -5, 0, 0, kStill | SWP_NOSIZE | SWP_NOREDRAW, "b:changing b:changed b:move(-5,-5)",
         "(5,15)(3,4)"},
    };
    logged();
    for (const auto& c : cases) {
        EXPECT_TRUE(SetWindowPos(b, nullptr, c.x, c.y, c.width, c.height, c.flags));
        EXPECT_EQ(logged(), c.told);
        EXPECT_EQ(placeOf(b), c.place);
    }
    windowAnswers[WM_WINDOWPOSCHANGED] = 0;
    EXPECT_TRUE(MoveWindow(b, 0, 0, 9, 9, TRUE));
    EXPECT_EQ(logged(), "b:changing b:changed") << "the rest is DefWindowProcA's";
}

TEST_F(LoggedWindow, IsShownActivatedAndHidden) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD | WS_VISIBLE, a);
    logged();
    EXPECT_FALSE(ShowWindow(a, SW_SHOW));
    EXPECT_EQ(logged(), "a:show a:changing a:activate a:setfocus a:changed");
    EXPECT_TRUE(ShowWindow(a, SW_SHOW));
    EXPECT_EQ(logged(), "");
    EXPECT_TRUE(IsWindowVisible(b));
    EXPECT_EQ(GetActiveWindow(), a);
    EXPECT_EQ(GetForegroundWindow(), a);
    EXPECT_EQ(SetFocus(b), a);
    EXPECT_EQ(logged(), "a:killfocus b:setfocus");
    EXPECT_EQ(SetFocus(b), b);
    EXPECT_FALSE(EnableWindow(b, FALSE));
    EXPECT_EQ(logged(), "b:cancelmode b:killfocus b:enable");
    EXPECT_TRUE(EnableWindow(b, FALSE));
    EXPECT_EQ(logged(), "b:cancelmode");
    EXPECT_EQ(SetFocus(b), nullptr);
    EXPECT_TRUE(EnableWindow(b, TRUE));
    EXPECT_FALSE(EnableWindow(b, TRUE));
    EXPECT_EQ(logged(), "b:enable");
    EXPECT_EQ(GetFocus(), nullptr);
    EXPECT_EQ(SetActiveWindow(b), a) << "a child changes nothing";
    EXPECT_TRUE(ShowWindow(a, SW_HIDE));
    EXPECT_EQ(logged(), "a:show a:changing a:changed a:activate");
    EXPECT_NE(GetActiveWindow(), a);
}

TEST_F(LoggedWindow, GoesAsideAndComesBack) {
    const HWND a = make("a", WS_POPUP | WS_VISIBLE);
    const struct {
        int command;
        bool isIconic, isZoomed;
        const char* place;
        const char* size;
    } cases[] = {
        {SW_MAXIMIZE, false, true, "(0,0)(1024,768)", "a:size(1024,768)"},
        {SW_RESTORE, false, false, "(10,20)(300,200)", "a:size(300,200)"},
        {SW_SHOWNORMAL, false, false, "(10,20)(300,200)", ""},
    };
    for (const auto& c : cases) {
        logged();
        EXPECT_TRUE(ShowWindow(a, c.command));
        EXPECT_EQ(IsIconic(a), c.isIconic);
        EXPECT_EQ(IsZoomed(a), c.isZoomed);
        EXPECT_EQ(placeOf(a), c.place);
        EXPECT_NE(logged().find(c.size), std::string::npos);
    }
    EXPECT_TRUE(ShowWindow(a, SW_MINIMIZE));
    EXPECT_TRUE(IsIconic(a) && IsWindowVisible(a));
    EXPECT_EQ(placeOf(a).substr(0, 15), "(-32000,-32000)");
    EXPECT_TRUE(ShowWindow(a, SW_RESTORE));
    EXPECT_EQ(placeOf(a), "(10,20)(300,200)");
}

TEST_F(LoggedWindow, LeavesActivityToItsOwner) {
    const HWND a = make("a", WS_POPUP | WS_VISIBLE), b = make("b", WS_POPUP | WS_VISIBLE, a);
    EXPECT_EQ(GetActiveWindow(), b);
    EXPECT_EQ(GetLastActivePopup(a), b);
    EXPECT_TRUE(DestroyWindow(b));
    EXPECT_EQ(GetActiveWindow(), a);
    EXPECT_EQ(GetFocus(), a);
    EXPECT_TRUE(DestroyWindow(a));
    EXPECT_EQ(GetActiveWindow(), nullptr);
    EXPECT_EQ(GetFocus(), nullptr);
}

}  // namespace
