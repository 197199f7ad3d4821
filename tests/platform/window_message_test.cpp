// Messages: posted, filtered, sent between threads; timers.
#include <atomic>
#include <thread>

#include "tests/platform/logged_window.h"

namespace {

using namespace kor::test;

const HWND kOfThread = reinterpret_cast<HWND>(INT_PTR{-1});

// The next message's number, 0 when there is none.
UINT next(HWND window = nullptr, UINT first = 0, UINT last = 0, UINT flags = PM_REMOVE) {
    MSG message{};
    return PeekMessageA(&message, window, first, last, flags) ? message.message : 0;
}

TEST_F(LoggedWindow, GetsWhatIsPostedInOrder) {
    const HWND a = make("a", WS_POPUP), b = make("b", WS_CHILD, a);
    while (next() != 0) {
    }
    PostMessageA(nullptr, WM_USER, 0, 0);
    PostMessageA(a, WM_USER + 1, 0, 0);
    PostMessageA(b, WM_USER + 2, 5, 6);
    PostQuitMessage(7);
    EXPECT_EQ(next(a, 0, 0, PM_NOREMOVE), UINT{WM_USER + 1});
    EXPECT_EQ(next(a, WM_USER + 2, WM_USER + 9, PM_NOREMOVE), UINT{WM_USER + 2}) << "what lies within too";
    EXPECT_EQ(next(kOfThread), UINT{WM_USER});
    MSG message{};
    EXPECT_EQ(GetMessageA(&message, b, 0, 0), TRUE);
    EXPECT_EQ(pairText("", static_cast<int>(message.wParam), static_cast<int>(message.lParam)), "(5,6)");
    EXPECT_EQ(next(), UINT{WM_USER + 1});
    EXPECT_EQ(GetMessageA(&message, b, WM_USER + 5, WM_USER + 9), FALSE) << "the end passes any filter";
    EXPECT_EQ(message.message, UINT{WM_QUIT});
    EXPECT_EQ(message.wParam, 7u);
    EXPECT_EQ(next(), 0u);
}

TEST_F(LoggedWindow, IsReachedByDispatching) {
    const HWND a = make("a", WS_POPUP);
    logged();
    MSG message{};
    message.hwnd = a;
    message.message = WM_CLOSE;
    DispatchMessageA(&message);
    EXPECT_EQ(logged(), "a:close a:destroy a:ncdestroy");
    EXPECT_TRUE(gives([&] { return DispatchMessageA(&message); }, LRESULT{0}, ERROR_INVALID_WINDOW_HANDLE));
    message.hwnd = nullptr;
    EXPECT_TRUE(gives([&] { return DispatchMessageA(&message); }, LRESULT{0}, kSeed));
    EXPECT_FALSE(TranslateMessage(&message));
}

int ticks = 0;
void CALLBACK tick(HWND, UINT message, UINT_PTR id, DWORD) {
    if (message == WM_TIMER && id == 9) ++ticks;
}

TEST_F(LoggedWindow, HasTimers) {
    const HWND a = make("a", WS_POPUP);
    EXPECT_EQ(SetTimer(a, 0, 1000, nullptr), 1u);
    EXPECT_TRUE(KillTimer(a, 0));
    EXPECT_EQ(SetTimer(a, 9, 10, tick), 9u);
    ticks = 0;
    MSG message{};
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(GetMessageA(&message, a, WM_TIMER, WM_TIMER), TRUE);
        EXPECT_EQ(message.wParam, 9u);
        DispatchMessageA(&message);
    }
    EXPECT_EQ(ticks, 3);
    EXPECT_TRUE(KillTimer(a, 9));
    EXPECT_TRUE(gives([&] { return KillTimer(a, 9); }, FALSE, ERROR_INVALID_PARAMETER));
    const UINT_PTR own = SetTimer(nullptr, 9, 10, nullptr);
    EXPECT_NE(own, 0u);
    ASSERT_EQ(GetMessageA(&message, nullptr, WM_TIMER, WM_TIMER), TRUE);
    EXPECT_EQ(message.wParam, own);
    EXPECT_TRUE(KillTimer(nullptr, own));
}

// A window of another thread that answers messages until it is closed.
class OtherThread {
  public:
    explicit OtherThread(const char* className)
        : thread_([this, className] {
              HWND made = CreateWindowExA(0, className, "other", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                          nullptr, const_cast<char*>("t"));
              window_ = made;
              MSG message;
              while (GetMessageA(&message, nullptr, 0, 0) > 0)
                  DispatchMessageA(&message);
          }) {
        while (!window_)
            std::this_thread::yield();
    }
    ~OtherThread() { thread_.join(); }
    OtherThread(const OtherThread&) = delete;
    OtherThread& operator=(const OtherThread&) = delete;
    HWND window() const { return window_; }

  private:
    std::atomic<HWND> window_ = nullptr;
    std::thread thread_;
};

constexpr UINT kAskBack = WM_USER + 1;

// Answers with what the window in wParam says, having asked it from its own thread.
LRESULT CALLBACK asking(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kAskBack && wParam) return SendMessageA(reinterpret_cast<HWND>(wParam), kAskBack, 0, 5);
    if (message == kAskBack) return lParam + 1;
    if (message == WM_CLOSE) PostQuitMessage(0);
    return DefWindowProcA(window, message, wParam, lParam);
}

TEST(Message, IsHandledInTheWindowsThread) {
    WNDCLASSA record{};
    record.lpfnWndProc = asking;
    record.lpszClassName = "KorAsking";
    record.hInstance = GetModuleHandleA(nullptr);
    ASSERT_NE(RegisterClassA(&record), 0);
    HWND own = CreateWindowExA(0, "KorAsking", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    HWND other = nullptr;
    {
        const OtherThread thread("KorAsking");
        other = thread.window();
        EXPECT_EQ(SendMessageA(other, kAskBack, 0, 1), 2);
        EXPECT_EQ(SendMessageA(other, kAskBack, reinterpret_cast<WPARAM>(own), 0), 6)
            << "who waits for an answer gives answers";
        char text[9];
        EXPECT_EQ(GetWindowTextA(other, text, sizeof text), 5);
        EXPECT_TRUE(gives([&] { return DestroyWindow(other); }, FALSE, ERROR_ACCESS_DENIED));
        EXPECT_NE(GetWindowThreadProcessId(other, nullptr), GetCurrentThreadId());
        EXPECT_TRUE(PostMessageA(other, WM_CLOSE, 0, 0));
    }
    EXPECT_FALSE(IsWindow(other)) << "it went with its thread";
    EXPECT_TRUE(DestroyWindow(own));
    EXPECT_TRUE(UnregisterClassA("KorAsking", GetModuleHandleA(nullptr)));
}

}  // namespace
