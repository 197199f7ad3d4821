#include "platform/posix/user/activation.h"

#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/window_tree.h"
#include "platform/posix/user/window_word.h"

namespace kor {
namespace {

bool isTopLevel(const Window& window) { return window.parent && isDesktop(*window.parent); }

bool isOwn(const Window& window) { return window.queue && window.queue.get() == MessageQueue::existing(); }

bool canBeActive(const Window& window) {
    return isTopLevel(window) && isOwn(window) && !(window.style & (WS_CHILD | WS_DISABLED)) &&
           !window.isDying;
}

// What becomes active in a window's place: its owner, else the topmost window that is shown.
HWND successorOf(const Window& window) {
    const auto isFit = [&window](const Window& other) {
        return &other != &window && canBeActive(other) && (other.style & WS_VISIBLE) &&
               !(other.style & WS_MINIMIZE);
    };
    if (window.owner && isFit(*window.owner)) return window.owner->handle;
    HWND found = nullptr;
    forEachTopLevel([&](const Window& other) {
        if (!found && isFit(other)) found = other.handle;
    });
    return found;
}

void raise(Window& window) {
    Window& parent = *window.parent;
    unlinkWindow(window);
    linkWindow(window, parent, lastAboveTop(window, parent));
}

// Makes a window the active one of the thread, or none. @return whether it still is afterwards
bool activate(MessageQueue& queue, HWND window) {
    const HWND former = queue.active;
    if (former == window) return true;
    deliver(former, WM_NCACTIVATE, FALSE, window);
    deliver(former, WM_ACTIVATE, WA_INACTIVE, window);
    {
        const UserLock lock = lockUser();
        Window* found = findWindow(window);
        if (window && !found) return false;
        queue.active = window;
        if (window || foregroundWindow() == former) foregroundWindow() = window;
        if (found) raise(*found);
    }
    deliver(window, WM_NCACTIVATE, TRUE, former);
    deliver(window, WM_ACTIVATE, WA_ACTIVE, former);
    return queue.active == window;
}

HWND moveFocus(MessageQueue& queue, HWND window) {
    const HWND former = queue.focus;
    if (former == window) return former;
    queue.focus = window;
    deliver(former, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window), LPARAM{0});
    if (queue.focus == window) deliver(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(former), LPARAM{0});
    return former;
}

bool isFocusWithin(const MessageQueue& queue, HWND window) {
    const UserLock lock = lockUser();
    const Window* around = findWindow(window);
    const Window* focused = findWindow(queue.focus);
    return around && focused && isWithin(focused, *around);
}

// The window that is to be active for another one to have the focus.
HWND rootForFocus(HWND window) {
    return withWindow(window, HWND{nullptr}, [](Window& found) -> HWND {
        if (!isOwn(found) || !noneHas(found, WS_DISABLED | WS_MINIMIZE) || found.isDying) return nullptr;
        return rootOf(found).handle;
    });
}

}  // namespace

void dropFocus(HWND window) {
    MessageQueue* queue = MessageQueue::existing();
    if (queue && isFocusWithin(*queue, window)) moveFocus(*queue, nullptr);
}

void leaveWindow(HWND window) {
    MessageQueue* queue = MessageQueue::existing();
    if (!queue) return;
    if (queue->active == window) {
        HWND successor = nullptr;
        {
            const UserLock lock = lockUser();
            if (const Window* found = findWindow(window)) successor = successorOf(*found);
        }
        activate(*queue, successor);
    }
    dropFocus(window);
}

}  // namespace kor

HWND WINAPI GetActiveWindow() {
    const kor::MessageQueue* queue = kor::MessageQueue::existing();
    return queue ? queue->active.load() : nullptr;
}

HWND WINAPI SetActiveWindow(HWND window) {
    return kor::withMemory(nullptr, [window]() -> HWND {
        const auto queue = kor::MessageQueue::current();
        const HWND former = queue->active;
        // Required: a child leaves everything as it is, and that is no failure.
        if (window && (kor::styleOf(window) & WS_CHILD)) return former;
        const auto canBe = [](const kor::Window& found) -> BOOL { return kor::canBeActive(found); };
        if (window && !kor::withWindow(window, FALSE, canBe)) return nullptr;
        if (!kor::activate(*queue, window)) return nullptr;
        if (!window) kor::moveFocus(*queue, nullptr);
        return former;
    });
}

HWND WINAPI GetForegroundWindow() {
    const kor::UserLock lock = kor::lockUser();
    return kor::foregroundWindow();
}

HWND WINAPI GetFocus() {
    const kor::MessageQueue* queue = kor::MessageQueue::existing();
    return queue ? queue->focus.load() : nullptr;
}

HWND WINAPI SetFocus(HWND window) {
    return kor::withMemory(nullptr, [window]() -> HWND {
        const auto queue = kor::MessageQueue::current();
        if (!window) return kor::moveFocus(*queue, nullptr);
        const HWND root = kor::rootForFocus(window);
        if (!root) return nullptr;
        if (queue->active != root && !kor::activate(*queue, root)) return nullptr;
        return kor::moveFocus(*queue, window);
    });
}

HWND WINAPI GetLastActivePopup(HWND window) {
    const HWND active = GetActiveWindow();
    const kor::UserLock lock = kor::lockUser();
    const kor::Window* found = kor::findWindow(window);
    const kor::Window* popup = kor::findWindow(active);
    for (const kor::Window* owner = popup; found && owner; owner = owner->owner) {
        if (owner == found) return active;
    }
    return window;
}
