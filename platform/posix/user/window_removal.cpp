#include "platform/posix/user/window_removal.h"

#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/window_tree.h"

namespace kor {
namespace {

// A window of the thread that lies in none of its others, which go with it.
Window* firstOf(const MessageQueue& queue, Window& among) {
    for (Window* child = among.first; child; child = child->next) {
        if (child->queue.get() == &queue) return child;
        if (Window* found = firstOf(queue, *child)) return found;
    }
    return nullptr;
}

}  // namespace

void removeWindow(Window& window) {
    while (window.first)
        removeWindow(*window.first);
    if (window.parent && isDesktop(*window.parent)) {
        forEachTopLevel([&window](Window& other) {
            if (other.owner == &window) other.owner = nullptr;
        });
    }
    unlinkWindow(window);
    if (window.queue) window.queue->forget(window.handle);
    freeWindow(window);
}

void MessageQueue::end() {
    if (Window* desktop = desktopIfMade()) {
        while (Window* window = firstOf(*this, *desktop))
            removeWindow(*window);
    }
    for (const auto& sent : sent_) {
        sent->isDone = true;
        sent->sender->wake_.notify_all();
    }
    sent_.clear();
    posted_.clear();
    timers.stopAll();
}

}  // namespace kor
