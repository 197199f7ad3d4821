#include "platform/posix/user/window_table.h"

#include "korutil/platform/window_message.h"
#include "platform/posix/user/screen.h"

namespace kor {
namespace {

constexpr std::size_t kMostWindows = 10'000;
constexpr std::uintptr_t kFirstNumber = 0x20;
constexpr std::uintptr_t kLastGeneration = 0x7FFF;

constinit std::mutex userMutex;

// A handle is the generation of a place in its upper half, and in its lower half twice the place's index
// beyond the first number.
struct Place {
    std::unique_ptr<Window> window;
    std::uintptr_t generation = 0;
    std::size_t nextFree = 0;
};

// Never destroyed: other objects' destructors may still ask for windows.
struct Table {
    std::vector<Place> places;
    std::size_t firstFree = 0;
    std::size_t lastFree = 0;
    std::size_t freeCount = 0;
    Window* desktop = nullptr;
};

Table& table() {
    static Table& instance = *new Table;
    return instance;
}

std::size_t indexOf(std::uintptr_t number) { return ((number & 0xFFFF) - kFirstNumber) / 2; }

HWND handleOf(std::size_t index, std::uintptr_t generation) {
    return reinterpret_cast<HWND>(generation << 16 | (kFirstNumber + 2 * index));
}

// The longest unused place, so that a stale handle is noticed.
std::size_t takePlace(Table& windows) {
    if (windows.freeCount == 0) {
        windows.places.emplace_back();
        return windows.places.size() - 1;
    }
    const std::size_t index = windows.firstFree;
    windows.firstFree = windows.places[index].nextFree;
    --windows.freeCount;
    return index;
}

void givePlaceBack(Table& windows, std::size_t index) {
    (windows.freeCount == 0 ? windows.firstFree : windows.places[windows.lastFree].nextFree) = index;
    windows.lastFree = index;
    ++windows.freeCount;
}

}  // namespace

UserLock lockUser() { return UserLock(userMutex); }

Window* findWindow(HWND handle) {
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    const Table& windows = table();
    if ((number & 0xFFFF) < kFirstNumber) return nullptr;
    const std::size_t index = indexOf(number);
    if (index >= windows.places.size()) return nullptr;
    Window* window = windows.places[index].window.get();
    return window && window->handle == handle ? window : nullptr;
}

Window& desktopWindow() {
    Table& windows = table();
    if (!windows.desktop) {
        auto desktopClass = std::make_shared<WindowClass>();
        desktopClass->name = "#32769";
        Window* window = addWindow();
        window->windowClass = std::move(desktopClass);
        window->procedure = DefWindowProcA;
        window->style = WS_POPUP | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
        window->place = screenPlace();
        windows.desktop = window;
    }
    return *windows.desktop;
}

Window* desktopIfMade() { return table().desktop; }

bool isDesktop(const Window& window) { return &window == table().desktop; }

Window* addWindow() {
    Table& windows = table();
    if (windows.places.size() - windows.freeCount >= kMostWindows) return nullptr;
    auto window = std::make_unique<Window>();
    const std::size_t index = takePlace(windows);
    Place& place = windows.places[index];
    place.generation = place.generation % kLastGeneration + 1;
    window->handle = handleOf(index, place.generation);
    place.window = std::move(window);
    return place.window.get();
}

void freeWindow(const Window& window) {
    Table& windows = table();
    const std::size_t index = indexOf(reinterpret_cast<std::uintptr_t>(window.handle));
    windows.places[index].window.reset();
    givePlaceBack(windows, index);
}

}  // namespace kor
