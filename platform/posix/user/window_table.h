#pragma once
// All windows of the process, under one lock. The lock is never held while a window procedure runs.

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "korutil/platform/last_error.h"
#include "korutil/platform/window.h"
#include "platform/posix/kernel/with_memory.h"
#include "platform/posix/user/window_class.h"

namespace kor {

class MessageQueue;

/// What a control keeps for its window.
class ControlState {
  public:
    virtual ~ControlState() = default;
};

struct Window {
    HWND handle = nullptr;
    std::shared_ptr<const WindowClass> windowClass;
    std::shared_ptr<MessageQueue> queue;  ///< the thread's that created it; null for the desktop
    DWORD thread = 0;
    WNDPROC procedure = nullptr;
    HINSTANCE module = nullptr;
    DWORD style = 0;
    DWORD exStyle = 0;
    LONG_PTR id = 0;
    LONG_PTR userData = 0;
    std::vector<std::byte> extra;
    std::string text;
    std::shared_ptr<ControlState> control;

    RECT place{};                ///< in the parent's client area
    RECT restored{};             ///< the place before it was minimised or maximised
    bool isPlaceUntold = false;  ///< WM_SIZE and WM_MOVE come when it is shown

    Window* parent = nullptr;  ///< null for the desktop only
    Window* owner = nullptr;
    Window* previous = nullptr;  ///< the sibling above
    Window* next = nullptr;
    Window* first = nullptr;  ///< the topmost child
    Window* last = nullptr;

    bool isDying = false;
    bool isDestroyTold = false;  ///< WM_DESTROY was sent
};

inline constexpr int kDeepest = 100;  ///< windows within each other, and owners of each other

using UserLock = std::unique_lock<std::mutex>;
UserLock lockUser();

// What follows is called with the lock held.

/// @return null for a handle that is no window's
Window* findWindow(HWND handle);

/// The desktop's window, made at the first call: may throw std::bad_alloc.
Window& desktopWindow();
Window* desktopIfMade();
bool isDesktop(const Window& window);

/// A window without a place among others. May throw std::bad_alloc.
/// @return null when there are too many
Window* addWindow();

/// Frees a window that nothing refers to any more.
void freeWindow(const Window& window);

/// Does `work(window)` for every top-level window, from the top down.
template <class Work>
void forEachTopLevel(Work work) {
    for (Window* window = desktopWindow().first; window; window = window->next)
        work(*window);
}

// Above this line the lock is held.

/// Does `work(window)` with the lock held.
/// @return what it returns; `failure` with last error 1400 for no window, 8 when memory is short
template <class Result, class Work>
Result withWindow(HWND handle, Result failure, Work work) {
    return withMemory(failure, [&]() -> Result {
        const UserLock lock = lockUser();
        if (Window* window = findWindow(handle)) return work(*window);
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return failure;
    });
}

}  // namespace kor
