#include "platform/posix/user/show_state.h"

#include <algorithm>
#include <limits>

#include "platform/posix/user/activation.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/window_tree.h"
#include "platform/posix/user/window_word.h"

namespace kor {
namespace {

constexpr int kAside = -32000;  // where minimised windows lie
constexpr int kIconWidth = 160;
constexpr int kIconHeight = 24;
constexpr UINT kOnlyShow = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER;

// What ShowWindow's commands do with a window's state and with the active window.
struct Command {
    bool changesState;
    ShowState state;
    bool activates;
};

constexpr Command kCommands[] = {
    {},  // SW_HIDE
    {true, ShowState::normal, true},
    {true, ShowState::minimized, true},
    {true, ShowState::maximized, true},
    {true, ShowState::normal, false},
    {false, ShowState::normal, true},
    {true, ShowState::minimized, false},
    {true, ShowState::minimized, false},
    {false, ShowState::normal, false},
    {true, ShowState::normal, true},
    {true, ShowState::normal, true},
};

ShowState stateOf(const Window& window) {
    if (window.style & WS_MINIMIZE) return ShowState::minimized;
    return window.style & WS_MAXIMIZE ? ShowState::maximized : ShowState::normal;
}

RECT placeIn(const Window& window, ShowState state) {
    if (state == ShowState::minimized) return rectangleAt(kAside, kAside, kIconWidth, kIconHeight);
    if (state == ShowState::normal) return window.restored;
    const RECT& around = window.parent->place;
    return {0, 0, around.right - around.left, around.bottom - around.top};
}

// @return the new place
RECT changeState(Window& window, ShowState state) {
    if (stateOf(window) == ShowState::normal) window.restored = window.place;
    window.style &= ~(WS_MINIMIZE | WS_MAXIMIZE);
    if (state == ShowState::minimized) window.style |= WS_MINIMIZE;
    if (state == ShowState::maximized) window.style |= WS_MAXIMIZE;
    return placeIn(window, state);
}

struct Before {
    bool isShown;
    bool isChild;
    bool isInHidden;  // what is around it is not shown
    bool changes;     // its state is to change
};

Before look(const Window& window, const Command& command) {
    return {(window.style & WS_VISIBLE) != 0, (window.style & WS_CHILD) != 0,
            window.parent && !allHave(*window.parent, WS_VISIBLE),
            command.changesState && stateOf(window) != command.state};
}

void hide(HWND window, const Before& before) {
    if (!before.isShown) return;
    deliver(window, WM_SHOWWINDOW, FALSE, LPARAM{0});
    SetWindowPos(window, nullptr, 0, 0, 0, 0, kOnlyShow | SWP_HIDEWINDOW | SWP_NOACTIVATE);
    if (!before.isChild) leaveWindow(window);
    dropFocus(window);
}

void markShown(HWND window) {
    const UserLock lock = lockUser();
    if (Window* found = findWindow(window)) found->style |= WS_VISIBLE;
}

void tellPlaceNow(HWND window) {
    {
        const UserLock lock = lockUser();
        Window* found = findWindow(window);
        if (!found || !found->isPlaceUntold) return;
        found->isPlaceUntold = false;
    }
    tellSize(window);
    tellMove(window);
}

void show(HWND window, const Command& command, const Before& before) {
    if (!before.isShown) deliver(window, WM_SHOWWINDOW, TRUE, LPARAM{0});
    const UINT activation = command.activates && !before.isChild ? 0 : SWP_NOACTIVATE;
    if (before.changes) {
        setShowState(window, command.state, SWP_SHOWWINDOW | activation);
    } else if (before.isInHidden) {
        markShown(window);  // without a message about its place: nothing appears
    } else if (!before.isShown) {
        SetWindowPos(window, nullptr, 0, 0, 0, 0, kOnlyShow | SWP_SHOWWINDOW | activation);
    } else if (!activation) {
        SetActiveWindow(window);
    }
    tellPlaceNow(window);
    const bool isPutAside = before.changes && command.state == ShowState::minimized && activation;
    if (isPutAside && !before.isChild) leaveWindow(window);
}

struct Told {
    bool isThere;
    RECT place;
    WPARAM kind;
};

Told lookAtPlace(HWND window) {
    const UserLock lock = lockUser();
    const Window* found = findWindow(window);
    if (!found) return {};
    const ShowState state = stateOf(*found);
    const WPARAM kind = state == ShowState::minimized   ? SIZE_MINIMIZED
                        : state == ShowState::maximized ? SIZE_MAXIMIZED
                                                        : SIZE_RESTORED;
    return {true, found->place, kind};
}

ULONG_PTR half(LONG value) { return static_cast<ULONG_PTR>(value) & 0xFFFF; }

}  // namespace

RECT rectangleAt(int x, int y, int width, int height) {
    const auto far = [](int from, int length) {
        const std::int64_t end = std::int64_t{from} + std::max(length, 0);
        return static_cast<LONG>(std::min<std::int64_t>(end, std::numeric_limits<LONG>::max()));
    };
    return {x, y, far(x, width), far(y, height)};
}

void setShowState(HWND window, ShowState state, UINT flags) {
    RECT place{};
    const auto change = [&](Window& found) -> BOOL {
        if (isDesktop(found)) return FALSE;
        place = changeState(found, state);
        return TRUE;
    };
    if (!withWindow(window, FALSE, change)) return;
    SetWindowPos(window, nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                 SWP_NOZORDER | SWP_FRAMECHANGED | flags);
}

void tellPlaceUnlessLater(HWND window) {
    {
        const UserLock lock = lockUser();
        const Window* found = findWindow(window);
        if (!found || found->isPlaceUntold) return;
    }
    tellSize(window);
    tellMove(window);
}

void tellSize(HWND window) {
    const Told told = lookAtPlace(window);
    if (!told.isThere) return;
    const RECT& place = told.place;
    deliver(window, WM_SIZE, told.kind,
            MAKELPARAM(half(place.right - place.left), half(place.bottom - place.top)));
}

void tellMove(HWND window) {
    const Told told = lookAtPlace(window);
    if (told.isThere) deliver(window, WM_MOVE, 0, MAKELPARAM(half(told.place.left), half(told.place.top)));
}

}  // namespace kor

BOOL WINAPI ShowWindow(HWND window, int command) {
    constexpr kor::Command kLike = kor::kCommands[SW_SHOW];
    const bool isKnown = command >= SW_HIDE && command <= SW_SHOWDEFAULT;
    const kor::Command& wanted = isKnown ? kor::kCommands[command] : kLike;
    kor::Before before{};
    const BOOL found = kor::withWindow(window, FALSE, [&](const kor::Window& shown) -> BOOL {
        before = kor::look(shown, wanted);
        return TRUE;
    });
    if (!found || !isKnown) return found && before.isShown;
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (command == SW_HIDE) {
            kor::hide(window, before);
        } else {
            kor::show(window, wanted, before);
        }
        return before.isShown;
    });
}

BOOL WINAPI IsWindowVisible(HWND window) {
    return kor::withWindow(window, FALSE,
                           [](const kor::Window& found) -> BOOL { return kor::allHave(found, WS_VISIBLE); });
}

BOOL WINAPI IsIconic(HWND window) {
    return kor::withWindow(window, FALSE,
                           [](const kor::Window& found) -> BOOL { return (found.style & WS_MINIMIZE) != 0; });
}

BOOL WINAPI IsZoomed(HWND window) {
    return kor::withWindow(window, FALSE,
                           [](const kor::Window& found) -> BOOL { return (found.style & WS_MAXIMIZE) != 0; });
}

BOOL WINAPI IsWindowEnabled(HWND window) {
    return kor::withWindow(window, FALSE,
                           [](const kor::Window& found) -> BOOL { return !(found.style & WS_DISABLED); });
}

BOOL WINAPI EnableWindow(HWND window, BOOL enable) {
    bool was = false;
    const auto look = [&was](const kor::Window& found) -> BOOL {
        was = !(found.style & WS_DISABLED);
        return TRUE;
    };
    if (!kor::withWindow(window, FALSE, look)) return FALSE;
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (!enable) {
            kor::deliver(window, WM_CANCELMODE, 0, LPARAM{0});
            kor::dropFocus(window);
        }
        const bool changes = was != (enable != FALSE);
        if (changes) {
            kor::changeStyle(window, enable ? 0 : WS_DISABLED, enable ? WS_DISABLED : 0);
            kor::deliver(window, WM_ENABLE, enable != FALSE, LPARAM{0});
        }
        return !was;
    });
}
