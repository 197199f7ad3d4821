#include "platform/posix/user/window_word.h"

#include <cstring>
#include <utility>

#include "korutil/platform/control.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/time.h"
#include "platform/posix/user/message_queue.h"
#include "platform/posix/user/window_tree.h"

namespace kor {
namespace {

template <class Word>
bool hasBytes(const Window& window, int index) {
    const std::size_t size = window.extra.size();
    return index >= 0 && size >= sizeof(Word) && static_cast<std::size_t>(index) <= size - sizeof(Word);
}

// Too wide for the forms with 32 bits.
bool isPointer(int index) {
    return index == GWLP_WNDPROC || index == GWLP_HINSTANCE || index == GWLP_HWNDPARENT;
}

Window* parentOrOwner(const Window& window) { return window.style & WS_CHILD ? window.parent : window.owner; }

template <class Word>
Word failedWord() {
    SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

template <class Word>
Word wordOf(const Window& window, int index) {
    if (hasBytes<Word>(window, index)) {
        Word word = 0;
        std::memcpy(&word, window.extra.data() + index, sizeof word);
        return word;
    }
    if (sizeof(Word) < sizeof(LONG_PTR) && isPointer(index)) return failedWord<Word>();
    switch (index) {
        case GWLP_WNDPROC:
            return static_cast<Word>(reinterpret_cast<LONG_PTR>(window.procedure));
        case GWLP_HINSTANCE:
            return static_cast<Word>(reinterpret_cast<LONG_PTR>(window.module));
        case GWLP_HWNDPARENT: {
            const Window* outer = parentOrOwner(window);
            return static_cast<Word>(reinterpret_cast<LONG_PTR>(outer ? outer->handle : nullptr));
        }
        case GWLP_ID:
            return static_cast<Word>(window.id);
        case GWL_STYLE:
            return static_cast<Word>(static_cast<LONG>(window.style));
        case GWL_EXSTYLE:
            return static_cast<Word>(static_cast<LONG>(window.exStyle));
        case GWLP_USERDATA:
            return static_cast<Word>(window.userData);
        default:
            return failedWord<Word>();
    }
}

// The words that are kept as they are given.
template <class Word>
Word setWordOf(Window& window, int index, Word value) {
    const Word former = wordOf<Word>(window, index);
    if (hasBytes<Word>(window, index)) {
        std::memcpy(window.extra.data() + index, &value, sizeof value);
    } else if (index == GWLP_WNDPROC && sizeof(Word) == sizeof(LONG_PTR)) {
        window.procedure = reinterpret_cast<WNDPROC>(static_cast<LONG_PTR>(value));
    } else if (index == GWLP_HINSTANCE && sizeof(Word) == sizeof(LONG_PTR)) {
        window.module = reinterpret_cast<HINSTANCE>(static_cast<LONG_PTR>(value));
    } else if (index == GWLP_ID) {
        window.id = value;
    } else if (index == GWLP_USERDATA) {
        window.userData = value;
    }
    return former;
}

LONG setStyle(HWND window, int index, LONG value) {
    const auto word = [index](Window& found) -> DWORD& {
        return index == GWL_STYLE ? found.style : found.exStyle;
    };
    STYLESTRUCT styles{0, static_cast<DWORD>(value)};
    const auto look = [&](Window& found) -> BOOL {
        styles.styleOld = word(found);
        return TRUE;
    };
    if (!withWindow(window, FALSE, look)) return 0;
    const auto which = static_cast<WPARAM>(index);
    deliver(window, WM_STYLECHANGING, which, &styles);
    const auto change = [&](Window& found) -> BOOL {
        // Required: windows that are no children never overlap unclipped.
        if (index == GWL_STYLE && !(styles.styleNew & WS_CHILD)) styles.styleNew |= WS_CLIPSIBLINGS;
        word(found) = styles.styleNew;
        return TRUE;
    };
    if (!withWindow(window, FALSE, change)) return 0;
    deliver(window, WM_STYLECHANGED, which, &styles);
    return static_cast<LONG>(styles.styleOld);
}

HWND setOwner(HWND window, HWND owner) {
    return withWindow(window, HWND{nullptr}, [owner](Window& found) -> HWND {
        Window* wanted = owner ? findWindow(owner) : nullptr;
        if (owner && !wanted) return failWith(ERROR_INVALID_WINDOW_HANDLE), nullptr;
        if (wanted) wanted = isDesktop(*wanted) ? nullptr : &rootOf(*wanted);
        if (wanted && !canBeOwnedBy(found, *wanted)) return failWith(ERROR_INVALID_PARAMETER), nullptr;
        const Window* former = std::exchange(found.owner, wanted);
        return former ? former->handle : nullptr;
    });
}

template <class Word>
Word setWord(HWND window, int index, Word value) {
    if (index == GWL_STYLE || index == GWL_EXSTYLE) {
        return withMemory(Word{0}, [&] { return Word{setStyle(window, index, static_cast<LONG>(value))}; });
    }
    if (index == GWLP_HWNDPARENT && sizeof(Word) == sizeof(LONG_PTR)) {
        const HWND outer = reinterpret_cast<HWND>(static_cast<LONG_PTR>(value));
        const bool isChild = (styleOf(window) & WS_CHILD) != 0;
        const HWND former = isChild ? SetParent(window, outer) : setOwner(window, outer);
        return static_cast<Word>(reinterpret_cast<LONG_PTR>(former));
    }
    return withWindow(window, Word{0}, [=](Window& found) { return setWordOf<Word>(found, index, value); });
}

}  // namespace

DWORD styleOf(HWND window) {
    const UserLock lock = lockUser();
    const Window* found = findWindow(window);
    return found ? found->style : 0;
}

void changeStyle(HWND window, DWORD set, DWORD clear) {
    const UserLock lock = lockUser();
    if (Window* found = findWindow(window)) found->style = (found->style & ~clear) | set;
}

}  // namespace kor

LONG WINAPI GetWindowLongA(HWND window, int index) {
    return kor::withWindow(window, LONG{0},
                           [index](const kor::Window& found) { return kor::wordOf<LONG>(found, index); });
}

LONG WINAPI SetWindowLongA(HWND window, int index, LONG value) { return kor::setWord(window, index, value); }

LONG_PTR WINAPI GetWindowLongPtrA(HWND window, int index) {
    return kor::withWindow(window, LONG_PTR{0},
                           [index](const kor::Window& found) { return kor::wordOf<LONG_PTR>(found, index); });
}

LONG_PTR WINAPI SetWindowLongPtrA(HWND window, int index, LONG_PTR value) {
    return kor::setWord(window, index, value);
}

int WINAPI GetDlgCtrlID(HWND window) {
    return kor::withWindow(window, 0,
                           [](const kor::Window& found) -> int { return static_cast<int>(found.id); });
}

DWORD WINAPI GetWindowThreadProcessId(HWND window, DWORD* process) {
    return kor::withWindow(window, DWORD{0}, [process](const kor::Window& found) -> DWORD {
        if (process) *process = GetCurrentProcessId();
        return found.thread;
    });
}
