#include "platform/posix/kernel/handle_table.h"

#include <cstdlib>
#include <new>
#include <utility>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/time.h"

namespace kor {
namespace {

constexpr std::size_t kNoIndex = SIZE_MAX;

alignas(HandleTable) std::byte tableStorage[sizeof(HandleTable)];

std::size_t indexOf(HANDLE handle) {
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    return number != 0 && number % 4 == 0 ? number / 4 - 1 : kNoIndex;
}

}  // namespace

HandleTable& HandleTable::instance() {
    // Never destroyed: other objects' destructors may close handles later. Files that go with their last
    // handle must still go with the process.
    static HandleTable& table = []() -> HandleTable& {
        std::atexit(closeAll);
        return *new (tableStorage) HandleTable;
    }();
    return table;
}

void HandleTable::closeAll() {
    HandleTable& table = instance();
    const std::lock_guard lock(table.mutex_);
    for (std::size_t index = 0; index < table.places_.size(); ++index) {
        if (std::exchange(table.places_[index].entry, {}).object) table.givePlaceBack(index);
    }
}

std::size_t HandleTable::takePlace() {
    const std::lock_guard lock(mutex_);
    constexpr std::size_t kRest = 16;
    if (freeCount_ <= kRest) {
        places_.emplace_back();
        return places_.size() - 1;
    }
    const std::size_t index = firstFree_;
    firstFree_ = places_[index].nextFree;
    --freeCount_;
    return index;
}

void HandleTable::givePlaceBack(std::size_t index) {
    (freeCount_ == 0 ? firstFree_ : places_[lastFree_].nextFree) = index;
    lastFree_ = index;
    ++freeCount_;
}

HANDLE HandleTable::fillPlace(std::size_t index, Entry entry) {
    const std::lock_guard lock(mutex_);
    places_[index].entry = std::move(entry);
    return reinterpret_cast<HANDLE>((index + 1) * 4);
}

HANDLE HandleTable::add(Entry entry) { return HandlePlace().fill(std::move(entry)); }

HandleTable::Entry HandleTable::find(HANDLE handle) const {
    const std::lock_guard lock(mutex_);
    const std::size_t index = indexOf(handle);
    return index < places_.size() ? places_[index].entry : Entry{};
}

HandleTable::Entry HandleTable::remove(HANDLE handle) {
    const std::lock_guard lock(mutex_);
    const std::size_t index = indexOf(handle);
    if (index >= places_.size() || !places_[index].entry.object) return {};
    Entry removed;
    std::swap(removed, places_[index].entry);
    givePlaceBack(index);
    return removed;
}

HandlePlace::HandlePlace() : index_(HandleTable::instance().takePlace()) {}

HandlePlace::~HandlePlace() {
    if (filled_) return;
    HandleTable& table = HandleTable::instance();
    const std::lock_guard lock(table.mutex_);
    table.givePlaceBack(index_);
}

HANDLE HandlePlace::fill(HandleTable::Entry entry) {
    filled_ = true;
    return HandleTable::instance().fillPlace(index_, std::move(entry));
}

}  // namespace kor

KORPLATFORM_API BOOL WINAPI CloseHandle(HANDLE handle) {
    // The pseudo handle need not be closed, but may be: required, as the system does so.
    if (handle == GetCurrentProcess()) return TRUE;
    if (!kor::HandleTable::instance().remove(handle).object) return kor::failWith(ERROR_INVALID_HANDLE);
    return TRUE;
}
