#pragma once
// What a thread has that uses windows: its queue of messages, its timers, its active window.

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <optional>

#include "korutil/platform/window_message.h"
#include "platform/posix/user/timer_list.h"
#include "platform/posix/user/window_table.h"

namespace kor {

/// A message on its way to another thread. It outlives a sender that an exception has ended.
struct SentMessage {
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    std::shared_ptr<MessageQueue> sender;
    LRESULT result = 0;
    bool isDone = false;
    bool isAnswered = false;
};

/// Which messages are looked for.
struct MessageFilter {
    HWND window;  ///< as for PeekMessageA
    UINT first;
    UINT last;

    bool takesNumber(UINT message) const;
    bool takesWindow(HWND target) const;
};

/// Everything but `current` and the threads' start and end is called with the lock held.
class MessageQueue {
  public:
    /// The calling thread's, made when it has none. Throws std::bad_alloc, also when the thread is ending.
    static std::shared_ptr<MessageQueue> current();
    /// The same without making one: may be null.
    static MessageQueue* existing();

    /// @return false when the queue is full. May throw std::bad_alloc
    bool post(const MSG& message);
    void quit(int exitCode) { quitCode_ = exitCode; }

    /// The next message of the queue. @return false when there is none
    bool take(const MessageFilter& filter, bool remove, MSG& message);

    /// Has another thread answer a message, answering what others send meanwhile.
    /// @return false when that thread ended, or the window did. May throw std::bad_alloc
    bool send(UserLock& lock, MessageQueue& receiver, const std::shared_ptr<SentMessage>& sent);

    /// Answers one message that others sent. @return false when there was none
    bool answerOne(UserLock& lock);

    /// Waits for something to be posted or sent, or for a timer that the filter lets through.
    void wait(UserLock& lock, const MessageFilter& filter);

    /// Drops all that concerns a window.
    void forget(HWND window);
    /// Ends the thread's windows, and the waiting for answers from it.
    void end();

    TimerList timers;
    std::atomic<HWND> active = nullptr;  // written with the lock or by its thread
    std::atomic<HWND> focus = nullptr;

  private:
    std::condition_variable wake_;
    std::deque<MSG> posted_;
    std::deque<std::shared_ptr<SentMessage>> sent_;
    std::optional<int> quitCode_;
};

/// The active window of the thread that activated one last; with the lock held.
HWND& foregroundWindow();

/// Has a window's procedure handle a message, in its thread; leaves the last error alone when there is no
/// such window. To be called without the lock.
LRESULT deliver(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
inline LRESULT deliver(HWND window, UINT message, WPARAM wParam, const void* data) {
    return deliver(window, message, wParam, reinterpret_cast<LPARAM>(data));
}

}  // namespace kor
