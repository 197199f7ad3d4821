#pragma once
// Windows that write their messages down: "a:create a:size(300,200)".

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/seeded.h"

namespace kor::test {

inline std::string windowLog;

inline constexpr WORD kHorizontalScroll = 0x0601;

/// What a message's handler answers in place of DefWindowProcA.
inline std::map<UINT, LRESULT> windowAnswers;

/// The log so far, which starts anew.
inline std::string logged() {
    if (!windowLog.empty()) windowLog.pop_back();
    return std::exchange(windowLog, {});
}

inline std::string pairText(const char* name, int first, int second) {
    return std::string(name) + "(" + std::to_string(first) + "," + std::to_string(second) + ")";
}

inline std::string messageText(UINT message, WPARAM wParam, LPARAM lParam) {
    const int low = static_cast<short>(LOWORD(lParam)), high = static_cast<short>(HIWORD(lParam));
    switch (message) {
        case WM_SIZE:
            return pairText("size", low, high);
        case WM_MOVE:
            return pairText("move", low, high);
        case WM_COMMAND:
            if (HIWORD(wParam) == kHorizontalScroll) return "";  // where there is a screen
            return pairText("command", LOWORD(wParam), HIWORD(wParam));
        case WM_PARENTNOTIFY:
            return pairText("parentnotify", LOWORD(wParam), HIWORD(wParam));
        default:
            break;
    }
    static const std::map<UINT, const char*> names = {
        {WM_NCCREATE, "nccreate"},
        {WM_CREATE, "create"},
        {WM_DESTROY, "destroy"},
        {WM_NCDESTROY, "ncdestroy"},
        {WM_SHOWWINDOW, "show"},
        {WM_WINDOWPOSCHANGING, "changing"},
        {WM_WINDOWPOSCHANGED, "changed"},
        {WM_ACTIVATE, "activate"},
        {WM_SETFOCUS, "setfocus"},
        {WM_KILLFOCUS, "killfocus"},
        {WM_CANCELMODE, "cancelmode"},
        {WM_ENABLE, "enable"},
        {WM_CLOSE, "close"},
        {WM_STYLECHANGING, "stylechanging"},
        {WM_STYLECHANGED, "stylechanged"},
    };
    const auto found = names.find(message);
    return found == names.end() ? "" : found->second;
}

inline LRESULT CALLBACK loggedProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    const auto* label = reinterpret_cast<const char*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    const std::string text = messageText(message, wParam, lParam);
    if (!text.empty()) windowLog += (label ? label : "?") + (":" + text) + " ";
    const auto answer = windowAnswers.find(message);
    return answer == windowAnswers.end() ? DefWindowProcA(window, message, wParam, lParam) : answer->second;
}

/// Registers the class of such windows for a test.
class LoggedWindow : public testing::Test {
  protected:
    static constexpr char kClass[] = "KorLogged";

    LoggedWindow() {
        WNDCLASSA record{};
        record.lpfnWndProc = loggedProcedure;
        record.lpszClassName = kClass;
        record.cbWndExtra = 8;
        record.hInstance = GetModuleHandleA(nullptr);
        EXPECT_NE(RegisterClassA(&record), 0);
        logged();
    }
    ~LoggedWindow() override {
        windowAnswers.clear();
        for (HWND window : made_)
            if (IsWindow(window)) DestroyWindow(window);
        EXPECT_TRUE(UnregisterClassA(kClass, GetModuleHandleA(nullptr)));
    }

    /// A window of 300 by 200 at 10, 20. It is destroyed at the end of the test.
    HWND make(const char* label, DWORD style, HWND parent = nullptr, int id = 0) {
        HWND window = CreateWindowExA(0, kClass, label, style, 10, 20, 300, 200, parent,
                                      reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr,
                                      const_cast<char*>(label));
        made_.push_back(window);
        return window;
    }

    static std::string textOf(HWND window) {
        char buffer[100];
        return std::string(buffer, static_cast<std::size_t>(GetWindowTextA(window, buffer, 100)));
    }

  private:
    std::vector<HWND> made_;
};

}  // namespace kor::test
