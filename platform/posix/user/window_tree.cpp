#include "platform/posix/user/window_tree.h"

#include <algorithm>
#include <limits>

namespace kor {
namespace {

int depthOf(const Window& window) {
    int depth = 0;
    for (const Window* outer = window.parent; outer; outer = outer->parent)
        ++depth;
    return depth;
}

int heightOf(const Window& window) {
    int height = 0;
    for (const Window* child = window.first; child; child = child->next)
        height = std::max(height, heightOf(*child) + 1);
    return height;
}

}  // namespace

void linkWindow(Window& window, Window& parent, Window* above) {
    window.parent = &parent;
    window.previous = above;
    window.next = above ? above->next : parent.first;
    (window.previous ? window.previous->next : parent.first) = &window;
    (window.next ? window.next->previous : parent.last) = &window;
}

void unlinkWindow(Window& window) {
    if (!window.parent) return;
    (window.previous ? window.previous->next : window.parent->first) = window.next;
    (window.next ? window.next->previous : window.parent->last) = window.previous;
    window.parent = window.previous = window.next = nullptr;
}

Window* lastAboveTop(const Window& window, const Window& parent) {
    Window* above = nullptr;
    if (window.exStyle & WS_EX_TOPMOST) return nullptr;
    for (Window* other = parent.first; other; other = other->next) {
        if (other == &window) continue;
        if (!(other->exStyle & WS_EX_TOPMOST)) break;
        above = other;
    }
    return above;
}

bool isWithin(const Window* window, const Window& ancestor) {
    while (window && window != &ancestor)
        window = window->parent;
    return window != nullptr;
}

Window& rootOf(Window& window) {
    Window* outer = &window;
    while (outer->parent && !isDesktop(*outer->parent))
        outer = outer->parent;
    return *outer;
}

bool canBeWithin(const Window& window, const Window& parent) {
    return !isWithin(&parent, window) && depthOf(parent) + heightOf(window) < kDeepest;
}

bool canBeOwnedBy(const Window& window, const Window& owner) {
    int owners = 1;
    for (const Window* outer = &owner; outer; outer = outer->owner, ++owners) {
        if (outer == &window) return false;
    }
    int owned = 0;
    forEachTopLevel([&](const Window& other) {
        int steps = 0;
        const Window* outer = &other;
        for (; outer && outer != &window; outer = outer->owner)
            ++steps;
        if (outer) owned = std::max(owned, steps);
    });
    return owners + owned <= kDeepest;
}

bool allHave(const Window& window, DWORD style) {
    for (const Window* outer = &window; outer; outer = outer->parent) {
        if ((outer->style & style) != style) return false;
    }
    return true;
}

bool noneHas(const Window& window, DWORD style) {
    for (const Window* outer = &window; outer; outer = outer->parent) {
        if (outer->style & style) return false;
    }
    return true;
}

LONG saturated(std::int64_t value) {
    using Limits = std::numeric_limits<LONG>;
    return static_cast<LONG>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

POINT screenOrigin(const Window& window) {
    std::int64_t x = 0, y = 0;
    for (const Window* outer = &window; outer; outer = outer->parent) {
        x += outer->place.left;
        y += outer->place.top;
    }
    return {saturated(x), saturated(y)};
}

}  // namespace kor
