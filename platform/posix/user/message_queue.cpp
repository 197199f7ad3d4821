#include "platform/posix/user/message_queue.h"

#include <pthread.h>

#include <algorithm>
#include <new>

#include "platform/posix/kernel/thread_state.h"
#include "platform/posix/kernel/time.h"
#include "platform/posix/user/window_tree.h"

namespace kor {
namespace {

constexpr std::size_t kMostMessages = 10'000;

// The thread's own; the key below ends it with the thread. A thread-local object would do so too, but cannot
// fail when memory is short.
using Held = std::shared_ptr<MessageQueue>;

Held* currentQueue() { return static_cast<Held*>(threadState.messageQueue); }

void endThread(void* held) {
    threadState.isEnding = true;
    threadState.messageQueue = nullptr;
    const std::unique_ptr<Held> queue(static_cast<Held*>(held));
    const UserLock lock = lockUser();
    (*queue)->end();
}

pthread_key_t makeKey() {
    pthread_key_t key{};
    if (pthread_key_create(&key, endThread) != 0) throw std::bad_alloc();
    return key;
}

// Marks a message as answered, also when its procedure threw.
class Answer {
  public:
    Answer(UserLock& lock, SentMessage& sent, std::condition_variable& senderWake)
        : lock_(lock), sent_(sent), senderWake_(senderWake) {}
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;
    ~Answer() {
        if (!lock_) lock_.lock();
        sent_.isDone = true;
        senderWake_.notify_all();
    }

  private:
    UserLock& lock_;
    SentMessage& sent_;
    std::condition_variable& senderWake_;
};

}  // namespace

bool MessageFilter::takesNumber(UINT message) const {
    return (first == 0 && last == 0) || (message >= first && message <= last);
}

bool MessageFilter::takesWindow(HWND target) const {
    if (!window) return true;
    if (window == reinterpret_cast<HWND>(INT_PTR{-1})) return !target;
    const Window* around = findWindow(window);
    const Window* found = findWindow(target);
    return around && found && isWithin(found, *around);
}

std::shared_ptr<MessageQueue> MessageQueue::current() {
    if (threadState.isEnding) throw std::bad_alloc();
    static const pthread_key_t key = makeKey();
    if (!currentQueue()) {
        auto held = std::make_unique<Held>(std::make_shared<MessageQueue>());
        if (pthread_setspecific(key, held.get()) != 0) throw std::bad_alloc();
        threadState.messageQueue = held.release();
    }
    return *currentQueue();
}

MessageQueue* MessageQueue::existing() { return currentQueue() ? currentQueue()->get() : nullptr; }

bool MessageQueue::post(const MSG& message) {
    if (posted_.size() >= kMostMessages) return false;
    posted_.push_back(message);
    wake_.notify_all();
    return true;
}

bool MessageQueue::take(const MessageFilter& filter, bool remove, MSG& message) {
    const auto found = std::find_if(posted_.begin(), posted_.end(), [&](const MSG& posted) {
        return filter.takesNumber(posted.message) && filter.takesWindow(posted.hwnd);
    });
    if (found != posted_.end()) {
        message = *found;
        if (remove) posted_.erase(found);
        return true;
    }
    if (quitCode_) {
        message = {nullptr, WM_QUIT, static_cast<WPARAM>(*quitCode_), 0, GetTickCount(), {}};
        if (remove) quitCode_.reset();
        return true;
    }
    if (!filter.takesNumber(WM_TIMER)) return false;
    const auto now = TimerList::Clock::now();
    TimerList::Timer* timer = timers.next([&](HWND window) { return filter.takesWindow(window); });
    if (!timer || timer->due > now) return false;
    message = {timer->window,  WM_TIMER, timer->id, reinterpret_cast<LPARAM>(timer->procedure),
               GetTickCount(), {}};
    if (remove) timer->due = now + timer->period;
    return true;
}

bool MessageQueue::send(UserLock& lock, MessageQueue& receiver, const std::shared_ptr<SentMessage>& sent) {
    receiver.sent_.push_back(sent);
    receiver.wake_.notify_all();
    while (!sent->isDone) {
        if (!answerOne(lock)) wake_.wait(lock);
    }
    return sent->isAnswered;
}

bool MessageQueue::answerOne(UserLock& lock) {
    if (sent_.empty()) return false;
    const std::shared_ptr<SentMessage> sent = std::move(sent_.front());
    sent_.pop_front();
    const Answer answer(lock, *sent, sent->sender->wake_);
    const Window* window = findWindow(sent->window);
    if (!window) return true;
    const WNDPROC procedure = window->procedure;
    lock.unlock();
    const LRESULT result = procedure(sent->window, sent->message, sent->wParam, sent->lParam);
    lock.lock();
    sent->result = result;
    sent->isAnswered = true;
    return true;
}

void MessageQueue::wait(UserLock& lock, const MessageFilter& filter) {
    const TimerList::Timer* timer = nullptr;
    if (filter.takesNumber(WM_TIMER)) {
        timer = timers.next([&](HWND window) { return filter.takesWindow(window); });
    }
    if (!timer) return wake_.wait(lock);
    const auto due = timer->due;
    wake_.wait_until(lock, due);
}

void MessageQueue::forget(HWND window) {
    std::erase_if(posted_, [window](const MSG& posted) { return posted.hwnd == window; });
    timers.stopAllOf(window);
    if (active == window) active = nullptr;
    if (focus == window) focus = nullptr;
    if (foregroundWindow() == window) foregroundWindow() = nullptr;
}

HWND& foregroundWindow() {
    static constinit HWND window = nullptr;
    return window;
}

LRESULT deliver(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    UserLock lock = lockUser();
    const Window* target = findWindow(window);
    if (!target) return 0;
    const auto receiver = target->queue;
    if (!receiver || receiver.get() == MessageQueue::existing()) {
        const WNDPROC procedure = target->procedure;
        lock.unlock();
        return procedure(window, message, wParam, lParam);
    }
    const auto own = MessageQueue::current();
    const auto sent = std::make_shared<SentMessage>(SentMessage{window, message, wParam, lParam, own});
    if (!own->send(lock, *receiver, sent)) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return sent->result;
}

}  // namespace kor
