// Global memory: handles are looked up in a table under a lock and never followed.
#include <sys/single_threaded.h>

#include <cstddef>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#include "korutil/platform/last_error.h"
#include "korutil/platform/memory.h"

namespace kor {
namespace {

// A movable block's handle: an index and, against stale handles, how often its entry was used before. Its low
// bits keep it apart from the address of a fixed block, which is its own handle.
constexpr unsigned kIndexShift = 4;
constexpr unsigned kUseShift = 36;
constexpr std::uintptr_t kHandleBits = 0x4;
constexpr std::uintptr_t kFirstIndex = 0x1000;  // no handle looks like a small number
constexpr std::uintptr_t kIndexMask = (std::uintptr_t{1} << (kUseShift - kIndexShift)) - 1;
constexpr std::uintptr_t kUseMask = 0xFFFFFF;

// Of a power of two of bytes, which makes an index cheap to check.
struct alignas(64) Block {
    HGLOBAL handle = nullptr;  // null: not used
    std::uintptr_t uses = 0;
    void* data = nullptr;  // null: discarded
    SIZE_T size = 0;
    SIZE_T room = 0;  // bytes that the heap gave
    UINT locks = 0;
    bool discardable = false;
};

// Blocks that grow from this size on are given half as much again, so that growing step by step costs the
// same however large the block is.
constexpr SIZE_T kRoomyFrom = 0x10000;

DWORD heapFlags(UINT flags) { return (flags & GMEM_ZEROINIT) != 0 ? HEAP_ZERO_MEMORY : 0; }

class GlobalMemory {
  public:
    HGLOBAL allocate(UINT flags, SIZE_T size) {
        if ((flags & GMEM_MOVEABLE) == 0) return addFixed(newData(flags, size != 0 ? size : 1));
        void* data = size != 0 ? newData(flags, size) : nullptr;
        if (size != 0 && data == nullptr) return nullptr;
        HGLOBAL handle = addMovable(data, size, (flags & GMEM_DISCARDABLE) != 0);
        if (handle == nullptr) freeData(data);
        return handle;
    }

    bool isFixed(HGLOBAL handle) const {
        const auto found = handles_.find(handle);
        return found != handles_.end() && found->second == handle;
    }

    Block* movable(HGLOBAL handle) {
        const auto value = reinterpret_cast<std::uintptr_t>(handle);
        const std::uintptr_t index = ((value >> kIndexShift) & kIndexMask) - kFirstIndex;
        if (handle == nullptr || index >= blocks_.size() || blocks_[index].handle != handle) return nullptr;
        return &blocks_[index];
    }

    HGLOBAL handleOfAddress(const void* address) const {
        const auto found = handles_.find(address);
        return found != handles_.end() ? found->second : nullptr;
    }

    HGLOBAL resizeFixed(HGLOBAL handle, SIZE_T size, UINT flags) {
        const DWORD inPlace = (flags & GMEM_MOVEABLE) == 0 ? HEAP_REALLOC_IN_PLACE_ONLY : 0;
        return resizeData(handle, handle, size, heapFlags(flags) | inPlace, true);
    }

    HGLOBAL resizeMovable(HGLOBAL handle, Block& block, SIZE_T size, UINT flags) {
        if (size == 0) return discard(handle, block, flags);
        if (block.data == nullptr) {
            void* data = newData(flags, size);
            if (data == nullptr || !note(data, handle)) return nullptr;
            setData(block, data, size, size);
            return handle;
        }
        const SIZE_T former = block.size;
        if (size < former || size > block.room) {
            if (!resizeRoom(handle, block, size, block.locks == 0 || (flags & GMEM_MOVEABLE) != 0))
                return nullptr;
        }
        block.size = size;
        if ((flags & GMEM_ZEROINIT) != 0 && size > former)
            std::memset(static_cast<char*>(block.data) + former, 0, size - former);
        return handle;
    }

    HGLOBAL makeMovable(HGLOBAL fixed, bool discardable) {
        HGLOBAL handle = addMovable(nullptr, 0, discardable);
        if (handle == nullptr) return nullptr;
        const SIZE_T size = HeapSize(GetProcessHeap(), 0, fixed);
        setData(*movable(handle), fixed, size, size);
        handles_.at(fixed) = handle;
        return handle;
    }

    void free(Block& block) {
        if (block.data != nullptr) forget(block.data);
        block.handle = nullptr;
        ++block.uses;
        block.data = nullptr;
        freeIndexes_.push_back(
            static_cast<std::size_t>(&block - blocks_.data()));  // has the room, see addMovable
    }

    void forget(void* data) {
        handles_.erase(data);
        freeData(data);
    }

    std::mutex mutex;

  private:
    static void* newData(UINT flags, SIZE_T size) {
        return HeapAlloc(GetProcessHeap(), heapFlags(flags), size);
    }
    static void freeData(void* data) { HeapFree(GetProcessHeap(), 0, data); }

    HGLOBAL handleOf(std::size_t index) const {
        return reinterpret_cast<HGLOBAL>(((blocks_[index].uses & kUseMask) << kUseShift) |
                                         ((index + kFirstIndex) << kIndexShift) | kHandleBits);
    }

    HGLOBAL addFixed(void* data) { return data != nullptr && note(data, data) ? data : nullptr; }

    HGLOBAL addMovable(void* data, SIZE_T size, bool discardable) try {
        if (freeIndexes_.empty()) {
            blocks_.emplace_back();
            // Room for every index there is: giving a block back must not need memory.
            if (freeIndexes_.capacity() < blocks_.size()) freeIndexes_.reserve(blocks_.capacity());
            freeIndexes_.push_back(blocks_.size() - 1);
        }
        const std::size_t index = freeIndexes_.back();
        const HGLOBAL handle = handleOf(index);
        if (data != nullptr) handles_.emplace(data, handle);
        freeIndexes_.pop_back();
        Block& block = blocks_[index];
        block = {handle, block.uses, data, size, size, 0, discardable};
        return handle;
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }

    static void setData(Block& block, void* data, SIZE_T size, SIZE_T room) {
        block.data = data;
        block.size = size;
        block.room = room;
    }

    // Has the heap resize a movable block: with room to grow into when it grows, exactly when it shrinks.
    bool resizeRoom(HGLOBAL handle, Block& block, SIZE_T size, bool mayMove) {
        if (mayMove && size > block.size && size >= kRoomyFrom && size <= SIZE_MAX / 2) {
            const DWORD former = GetLastError();
            if (resizeRoomTo(handle, block, size + size / 2, 0)) return true;
            SetLastError(former);
        }
        return resizeRoomTo(handle, block, size, mayMove ? 0 : HEAP_REALLOC_IN_PLACE_ONLY);
    }

    bool resizeRoomTo(HGLOBAL handle, Block& block, SIZE_T room, DWORD flags) {
        void* data = resizeData(block.data, handle, room, flags, false);
        if (data == nullptr) return false;
        setData(block, data, block.size, room);
        return true;
    }

    // Enters an address; without memory for that the data is given back.
    bool note(void* data, HGLOBAL handle) try {
        handles_.emplace(data, handle);
        return true;
    } catch (const std::bad_alloc&) {
        freeData(data);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }

    // The address entry is re-keyed, not made anew: after the block has moved nothing may fail.
    void* resizeData(void* data, HGLOBAL handle, SIZE_T size, DWORD flags, bool fixed) {
        auto entry = handles_.extract(data);
        void* moved = HeapReAlloc(GetProcessHeap(), flags, data, size);
        entry.key() = moved != nullptr ? moved : data;
        entry.mapped() = fixed ? const_cast<void*>(entry.key()) : handle;
        handles_.insert(std::move(entry));
        return moved;
    }

    HGLOBAL discard(HGLOBAL handle, Block& block, UINT flags) {
        if (block.locks != 0) return nullptr;
        if ((flags & GMEM_MOVEABLE) == 0) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        if (block.data != nullptr) forget(block.data);
        setData(block, nullptr, 0, 0);
        return handle;
    }

    std::vector<Block> blocks_;
    std::vector<std::size_t> freeIndexes_;
    std::unordered_map<const void*, HGLOBAL> handles_;  // by the address of the data
};

// Outlives every other object's destructor, and needs no memory to begin with.
alignas(GlobalMemory) std::byte globalMemoryStorage[sizeof(GlobalMemory)];
GlobalMemory& globalMemory() {
    static GlobalMemory& memory = *new (globalMemoryStorage) GlobalMemory;
    return memory;
}

// Does what one thread may do at a time; while there is only one, nothing is locked.
template <class Work>
auto inTurn(Work work) {
    GlobalMemory& memory = globalMemory();
    if (__libc_single_threaded) return work(memory);
    const std::lock_guard lock(memory.mutex);
    return work(memory);
}

template <class Result>
Result failWith(DWORD code, Result result) {
    SetLastError(code);
    return result;
}

}  // namespace
}  // namespace kor

using namespace kor;

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size) {
    return inTurn([&](GlobalMemory& memory) -> HGLOBAL { return memory.allocate(flags, size); });
}

HGLOBAL WINAPI GlobalReAlloc(HGLOBAL handle, SIZE_T size, UINT flags) {
    return inTurn([&](GlobalMemory& memory) -> HGLOBAL {
        const bool modify = (flags & GMEM_MODIFY) != 0;
        if (Block* block = memory.movable(handle)) {
            if (!modify) return memory.resizeMovable(handle, *block, size, flags);
            block->discardable = block->discardable || (flags & GMEM_DISCARDABLE) != 0;
            return handle;
        }
        if (!memory.isFixed(handle)) return failWith<HGLOBAL>(ERROR_INVALID_HANDLE, nullptr);
        if (!modify) return memory.resizeFixed(handle, size, flags);
        if ((flags & GMEM_MOVEABLE) == 0) return handle;
        return memory.makeMovable(handle, (flags & GMEM_DISCARDABLE) != 0);
    });
}

HGLOBAL WINAPI GlobalFree(HGLOBAL handle) {
    if (handle == nullptr) return nullptr;
    return inTurn([&](GlobalMemory& memory) -> HGLOBAL {
        if (Block* block = memory.movable(handle)) {
            memory.free(*block);
            return nullptr;
        }
        if (!memory.isFixed(handle)) return failWith(ERROR_INVALID_HANDLE, handle);
        memory.forget(handle);
        return nullptr;
    });
}

LPVOID WINAPI GlobalLock(HGLOBAL handle) {
    return inTurn([&](GlobalMemory& memory) -> LPVOID {
        Block* block = memory.movable(handle);
        if (block == nullptr)
            return memory.isFixed(handle) ? handle : failWith<LPVOID>(ERROR_INVALID_HANDLE, nullptr);
        if (block->data == nullptr) return failWith<LPVOID>(ERROR_DISCARDED, nullptr);
        if (block->locks < GMEM_LOCKCOUNT) ++block->locks;
        return block->data;
    });
}

BOOL WINAPI GlobalUnlock(HGLOBAL handle) {
    return inTurn([&](GlobalMemory& memory) -> BOOL {
        Block* block = memory.movable(handle);
        if (block == nullptr) return memory.isFixed(handle) ? TRUE : failWith(ERROR_INVALID_HANDLE, FALSE);
        if (block->locks == 0) return failWith(ERROR_NOT_LOCKED, FALSE);
        if (--block->locks == 0) return failWith(NO_ERROR, FALSE);
        return TRUE;
    });
}

HGLOBAL WINAPI GlobalHandle(LPCVOID address) {
    if (address == nullptr) return failWith<HGLOBAL>(ERROR_INVALID_PARAMETER, nullptr);
    return inTurn([&](GlobalMemory& memory) -> HGLOBAL {
        const HGLOBAL handle = memory.handleOfAddress(address);
        return handle != nullptr ? handle : failWith<HGLOBAL>(ERROR_INVALID_HANDLE, nullptr);
    });
}

SIZE_T WINAPI GlobalSize(HGLOBAL handle) {
    return inTurn([&](GlobalMemory& memory) -> SIZE_T {
        if (memory.isFixed(handle)) return HeapSize(GetProcessHeap(), 0, handle);
        const Block* block = memory.movable(handle);
        if (block == nullptr) return failWith<SIZE_T>(ERROR_INVALID_HANDLE, 0);
        return block->size;
    });
}

UINT WINAPI GlobalFlags(HGLOBAL handle) {
    return inTurn([&](GlobalMemory& memory) -> UINT {
        if (memory.isFixed(handle)) return 0;
        const Block* block = memory.movable(handle);
        if (block == nullptr) return failWith(ERROR_INVALID_HANDLE, GMEM_INVALID_HANDLE);
        return block->locks | (block->discardable ? GMEM_DISCARDABLE : 0) |
               (block->data == nullptr ? GMEM_DISCARDED : 0);
    });
}

HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T size) { return GlobalAlloc(flags, size); }

HLOCAL WINAPI LocalFree(HLOCAL handle) { return GlobalFree(handle); }
