// A thread's messages, for the thread.
#include <algorithm>

#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/time.h"
#include "platform/posix/user/message_queue.h"

namespace kor {
namespace {

const HWND kOfThread = reinterpret_cast<HWND>(INT_PTR{-1});

bool isLookedAt(HWND window) {
    if (!window || window == kOfThread || findWindow(window)) return true;
    return failWith(ERROR_INVALID_WINDOW_HANDLE);
}

BOOL peek(MSG& message, const MessageFilter& filter, bool remove) {
    const auto queue = MessageQueue::current();
    UserLock lock = lockUser();
    while (queue->answerOne(lock)) {
    }
    return isLookedAt(filter.window) && queue->take(filter, remove, message);
}

BOOL get(MSG& message, const MessageFilter& filter) {
    const auto queue = MessageQueue::current();
    UserLock lock = lockUser();
    for (;;) {
        while (queue->answerOne(lock)) {
        }
        if (!isLookedAt(filter.window)) return -1;
        if (queue->take(filter, true, message)) return message.message != WM_QUIT;
        queue->wait(lock, filter);
    }
}

// Without a window the calling thread's queue; null with the last error set.
std::shared_ptr<MessageQueue> queueOf(HWND window) {
    if (!window) return MessageQueue::current();
    const UserLock lock = lockUser();
    const Window* found = findWindow(window);
    if (!found) return failWith(ERROR_INVALID_WINDOW_HANDLE), nullptr;
    if (!found->queue) SetLastError(ERROR_ACCESS_DENIED);
    return found->queue;
}

bool isOfTimer(const MSG& message, TIMERPROC procedure) {
    MessageQueue* queue = MessageQueue::existing();
    const UserLock lock = lockUser();
    return queue && queue->timers.hasProcedure(message.hwnd, message.wParam, procedure);
}

UINT_PTR startTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    constexpr UINT kShortest = 10, kLongest = 0x7FFF'FFFF;
    const auto queue = queueOf(window);
    if (!queue) return 0;
    if (queue.get() != MessageQueue::existing()) return failWith(ERROR_ACCESS_DENIED), 0;
    const UserLock lock = lockUser();
    if (window && !findWindow(window)) return failWith(ERROR_INVALID_WINDOW_HANDLE), 0;
    if (!window && !queue->timers.has(nullptr, id)) id = queue->timers.freeId();
    const std::chrono::milliseconds wait(std::clamp(period, kShortest, kLongest));
    if (!queue->timers.start(window, id, wait, procedure)) return failWith(ERROR_NOT_ENOUGH_MEMORY), 0;
    return id ? id : 1;
}

}  // namespace
}  // namespace kor

BOOL WINAPI PeekMessageA(MSG* message, HWND window, UINT first, UINT last, UINT flags) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (!message) return kor::failWith(ERROR_NOACCESS);
        return kor::peek(*message, {window, first, last}, (flags & PM_REMOVE) != 0);
    });
}

BOOL WINAPI GetMessageA(MSG* message, HWND window, UINT first, UINT last) {
    return kor::withMemory(-1, [&]() -> BOOL {
        if (!message) return kor::failWith(ERROR_NOACCESS), -1;
        return kor::get(*message, {window, first, last});
    });
}

BOOL WINAPI PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const auto queue = kor::queueOf(window);
        if (!queue) return FALSE;
        const kor::UserLock lock = kor::lockUser();
        if (window && !kor::findWindow(window)) return kor::failWith(ERROR_INVALID_WINDOW_HANDLE);
        const bool isTaken = queue->post({window, message, wParam, lParam, GetTickCount(), {}});
        return isTaken || kor::failWith(ERROR_NOT_ENOUGH_QUOTA);
    });
}

void WINAPI PostQuitMessage(int exitCode) {
    kor::withMemory([exitCode] {
        const auto queue = kor::MessageQueue::current();
        const kor::UserLock lock = kor::lockUser();
        queue->quit(exitCode);
    });
}

BOOL WINAPI TranslateMessage(const MSG* message) {
    if (!message) return FALSE;
    const UINT number = message->message;
    return number == WM_KEYDOWN || number == WM_KEYUP || number == WM_SYSKEYDOWN || number == WM_SYSKEYUP;
}

LRESULT WINAPI DispatchMessageA(const MSG* message) {
    if (!message) return 0;
    if (message->message == WM_TIMER && message->lParam) {
        const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
        // A message may be made up; only a timer's own procedure is called.
        if (kor::isOfTimer(*message, procedure)) {
            procedure(message->hwnd, WM_TIMER, message->wParam, GetTickCount());
        }
        return 0;
    }
    if (!message->hwnd) return 0;
    return SendMessageA(message->hwnd, message->message, message->wParam, message->lParam);
}

LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!procedure) return 0;
    return kor::withMemory(LRESULT{0}, [&] { return procedure(window, message, wParam, lParam); });
}

UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    return kor::withMemory(UINT_PTR{0},
                           [&]() -> UINT_PTR { return kor::startTimer(window, id, period, procedure); });
}

BOOL WINAPI KillTimer(HWND window, UINT_PTR id) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const auto queue = kor::queueOf(window);
        if (!queue) return FALSE;
        const kor::UserLock lock = kor::lockUser();
        return queue->timers.stop(window, id) || kor::failWith(ERROR_INVALID_PARAMETER);
    });
}
