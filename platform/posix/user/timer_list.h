#pragma once
// The timers of one thread.

#include <chrono>
#include <optional>
#include <vector>

#include "korutil/platform/window_message.h"

namespace kor {

class TimerList {
  public:
    using Clock = std::chrono::steady_clock;

    struct Timer {
        HWND window;
        UINT_PTR id;
        TIMERPROC procedure;
        std::chrono::milliseconds period;
        Clock::time_point due;
    };

    /// Starts or restarts a timer. @return false when there are too many. May throw std::bad_alloc
    bool start(HWND window, UINT_PTR id, std::chrono::milliseconds period, TIMERPROC procedure);
    /// @return a number that no timer without a window has
    UINT_PTR freeId();
    bool has(HWND window, UINT_PTR id) const;
    bool hasProcedure(HWND window, UINT_PTR id, TIMERPROC procedure) const;
    bool stop(HWND window, UINT_PTR id);
    void stopAllOf(HWND window);
    void stopAll() { timers_.clear(); }

    /// The timer that is due next among those that `takes(window)` lets through; null when there is none.
    template <class Takes>
    Timer* next(Takes takes) {
        Timer* found = nullptr;
        for (Timer& timer : timers_) {
            if (takes(timer.window) && (!found || timer.due < found->due)) found = &timer;
        }
        return found;
    }

  private:
    std::vector<Timer>::const_iterator find(HWND window, UINT_PTR id) const;

    std::vector<Timer> timers_;
    UINT_PTR nextId_ = 1;
};

}  // namespace kor
