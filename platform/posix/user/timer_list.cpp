#include "platform/posix/user/timer_list.h"

#include <algorithm>

namespace kor {
namespace {

constexpr std::size_t kMostTimers = 10'000;

}  // namespace

std::vector<TimerList::Timer>::const_iterator TimerList::find(HWND window, UINT_PTR id) const {
    return std::find_if(timers_.begin(), timers_.end(),
                        [=](const Timer& timer) { return timer.window == window && timer.id == id; });
}

bool TimerList::start(HWND window, UINT_PTR id, std::chrono::milliseconds period, TIMERPROC procedure) {
    const Timer timer{window, id, procedure, period, Clock::now() + period};
    const auto found = find(window, id);
    if (found != timers_.end()) {
        timers_[static_cast<std::size_t>(found - timers_.begin())] = timer;
        return true;
    }
    if (timers_.size() >= kMostTimers) return false;
    timers_.push_back(timer);
    return true;
}

UINT_PTR TimerList::freeId() {
    while (nextId_ == 0 || has(nullptr, nextId_))
        ++nextId_;
    return nextId_++;
}

bool TimerList::has(HWND window, UINT_PTR id) const { return find(window, id) != timers_.end(); }

bool TimerList::hasProcedure(HWND window, UINT_PTR id, TIMERPROC procedure) const {
    const auto found = find(window, id);
    return found != timers_.end() && found->procedure == procedure;
}

bool TimerList::stop(HWND window, UINT_PTR id) {
    const auto found = find(window, id);
    if (found == timers_.end()) return false;
    timers_.erase(found);
    return true;
}

void TimerList::stopAllOf(HWND window) {
    std::erase_if(timers_, [window](const Timer& timer) { return timer.window == window; });
}

}  // namespace kor
