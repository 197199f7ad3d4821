// The process heap, which is the runtime's, and heaps made by HeapCreate.
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>

#include "korutil/platform/last_error.h"
#include "korutil/platform/memory.h"

namespace kor {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::uintptr_t kLiveHeap = 0x6B6F7248;
constexpr SIZE_T kNoSize = std::numeric_limits<SIZE_T>::max();

// In front of every block. The mark tells a live block of one heap from anything else.
struct alignas(16) BlockHeader {
    std::size_t size;
    std::uintptr_t mark;
};

// In front of that in a created heap, which has to find all its blocks again.
struct alignas(16) BlockLink {
    BlockLink* previous;
    BlockLink* next;
};

BlockHeader* headerOf(const void* block) { return static_cast<BlockHeader*>(const_cast<void*>(block)) - 1; }
void* dataOf(BlockHeader* header) { return header + 1; }
bool aligned(const void* block) {
    return reinterpret_cast<std::uintptr_t>(block) % alignof(BlockHeader) == 0;
}

void* failWith(DWORD code) {
    SetLastError(code);
    return nullptr;
}

bool readable(const void* address) {
    MEMORY_BASIC_INFORMATION information;
    return VirtualQuery(address, &information, sizeof information) != 0 && information.State == MEM_COMMIT &&
           (information.Protect & (PAGE_NOACCESS | PAGE_EXECUTE | PAGE_GUARD)) == 0;
}

class Heap {
  public:
    Heap(bool created, bool serialized, std::size_t limit)
        : created_(created), serialized_(serialized), limit_(limit) {}
    ~Heap() {
        state_ = 0;
        for (BlockLink* link = first_; link != nullptr;) {
            BlockLink* next = link->next;
            std::free(link);
            link = next;
        }
    }
    Heap(const Heap&) = delete;
    Heap& operator=(const Heap&) = delete;

    bool live() const { return state_ == kLiveHeap; }
    bool created() const { return created_; }

    void* allocate(std::size_t size, bool zero) {
        const std::size_t overhead = sizeof(BlockHeader) + linkSize();
        if (size > kNoSize - overhead - kPage) return nullptr;
        const auto guard = lock();
        if (!fits(0, size)) return nullptr;
        void* memory = zero ? std::calloc(1, size + overhead) : std::malloc(size + overhead);
        if (memory == nullptr) return nullptr;
        if (created_) {
            memory = enlist(static_cast<BlockLink*>(memory));
            used_ += charge(size);
        }
        auto* header = static_cast<BlockHeader*>(memory);
        *header = {size, markOf(header)};
        return dataOf(header);
    }

    void* reallocate(void* block, std::size_t size, bool zero, bool inPlace) {
        if (size > kNoSize - sizeof(BlockHeader) - linkSize() - kPage) return nullptr;
        const auto guard = lock();
        const std::size_t former = headerOf(block)->size;
        if (!fits(charge(former), size)) return nullptr;
        BlockHeader* header = inPlace ? resizeInPlace(block, size) : move(block, size);
        if (header == nullptr) return nullptr;
        if (created_) used_ = used_ - charge(former) + charge(size);
        if (zero && size > former) std::memset(static_cast<char*>(dataOf(header)) + former, 0, size - former);
        *header = {size, markOf(header)};
        return dataOf(header);
    }

    void release(void* block) {
        const auto guard = lock();
        BlockHeader* header = headerOf(block);
        header->mark = 0;
        if (!created_) return std::free(header);
        used_ -= charge(header->size);
        BlockLink* link = linkOf(header);
        delist(link);
        std::free(link);
    }

    // For a block that the caller says to be ours: its mark shows a wrong heap or a second free.
    bool owns(const void* block) const {
        return block != nullptr && aligned(block) && headerOf(block)->mark == markOf(headerOf(block));
    }

    // For any address at all.
    bool contains(const void* block) {
        if (!aligned(block)) return false;
        if (!created_) return readable(headerOf(block)) && owns(block);
        const auto guard = lock();
        for (BlockLink* link = first_; link != nullptr; link = link->next)
            if (dataOf(reinterpret_cast<BlockHeader*>(link + 1)) == block) return owns(block);
        return false;
    }

    bool sound() {
        const auto guard = lock();
        for (BlockLink* link = first_; link != nullptr; link = link->next)
            if (!owns(dataOf(reinterpret_cast<BlockHeader*>(link + 1)))) return false;
        return true;
    }

  private:
    std::unique_lock<std::mutex> lock() {
        return created_ && serialized_ ? std::unique_lock(mutex_) : std::unique_lock<std::mutex>();
    }
    std::size_t linkSize() const { return created_ ? sizeof(BlockLink) : 0; }
    std::uintptr_t markOf(const BlockHeader* header) const {
        return reinterpret_cast<std::uintptr_t>(header) ^ reinterpret_cast<std::uintptr_t>(this) ^ kLiveHeap;
    }
    static std::size_t charge(std::size_t size) {
        return sizeof(BlockHeader) + sizeof(BlockLink) + (size + 15) / 16 * 16;
    }
    // Whether a block of a size has room when `spared` bytes of what is used are given up for it.
    bool fits(std::size_t spared, std::size_t size) const {
        return limit_ == 0 || (size <= limit_ && used_ - spared + charge(size) <= limit_);
    }

    static BlockLink* linkOf(BlockHeader* header) { return reinterpret_cast<BlockLink*>(header) - 1; }
    void* enlist(BlockLink* link) {
        *link = {nullptr, first_};
        if (first_ != nullptr) first_->previous = link;
        first_ = link;
        return link + 1;
    }
    void delist(const BlockLink* link) {
        (link->previous != nullptr ? link->previous->next : first_) = link->next;
        if (link->next != nullptr) link->next->previous = link->previous;
    }

    BlockHeader* resizeInPlace(void* block, std::size_t size) const {
        BlockHeader* header = headerOf(block);
        void* memory = created_ ? static_cast<void*>(linkOf(header)) : header;
        const std::size_t room = malloc_usable_size(memory) - sizeof(BlockHeader) - linkSize();
        return size <= room ? header : nullptr;
    }
    BlockHeader* move(void* block, std::size_t size) {
        BlockHeader* header = headerOf(block);
        if (!created_) return static_cast<BlockHeader*>(std::realloc(header, size + sizeof(BlockHeader)));
        auto* link = static_cast<BlockLink*>(
            std::realloc(linkOf(header), size + sizeof(BlockHeader) + sizeof(BlockLink)));
        if (link == nullptr) return nullptr;
        (link->previous != nullptr ? link->previous->next : first_) = link;
        if (link->next != nullptr) link->next->previous = link;
        return reinterpret_cast<BlockHeader*>(link + 1);
    }

    std::uintptr_t state_ = kLiveHeap;
    const bool created_;
    const bool serialized_;
    const std::size_t limit_;  // 0: none
    std::size_t used_ = 0;
    BlockLink* first_ = nullptr;
    std::mutex mutex_;
};

// Never destroyed: blocks are freed by other objects' destructors at the very end of the process.
alignas(Heap) std::byte processHeapStorage[sizeof(Heap)];
Heap& processHeap() {
    static Heap& heap = *new (processHeapStorage) Heap(false, false, 0);
    return heap;
}

Heap* heapOf(HANDLE handle) {
    auto* heap = static_cast<Heap*>(handle);
    if (heap != nullptr && heap->live()) return heap;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

// The heap, when the block is one of its live ones.
Heap* heapOf(HANDLE handle, const void* block) {
    Heap* heap = heapOf(handle);
    if (heap == nullptr || heap->owns(block)) return heap;
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

}  // namespace
}  // namespace kor

using namespace kor;

HANDLE WINAPI GetProcessHeap() { return &processHeap(); }

HANDLE WINAPI HeapCreate(DWORD flags, SIZE_T, SIZE_T maximumSize) {
    if (maximumSize > kNoSize - kPage) return failWith(ERROR_NOT_ENOUGH_MEMORY);
    const SIZE_T limit = (maximumSize + kPage - 1) / kPage * kPage;
    Heap* heap = new (std::nothrow) Heap(true, (flags & HEAP_NO_SERIALIZE) == 0, limit);
    return heap != nullptr ? heap : failWith(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL WINAPI HeapDestroy(HANDLE handle) {
    Heap* heap = heapOf(handle);
    if (heap == nullptr) return FALSE;
    if (!heap->created()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    delete heap;
    return TRUE;
}

LPVOID WINAPI HeapAlloc(HANDLE handle, DWORD flags, SIZE_T size) {
    Heap* heap = heapOf(handle);
    if (heap == nullptr) return nullptr;
    void* block = heap->allocate(size, (flags & HEAP_ZERO_MEMORY) != 0);
    return block != nullptr ? block : failWith(ERROR_NOT_ENOUGH_MEMORY);
}

LPVOID WINAPI HeapReAlloc(HANDLE handle, DWORD flags, LPVOID block, SIZE_T size) {
    if (block == nullptr) return nullptr;
    Heap* heap = heapOf(handle, block);
    if (heap == nullptr) return nullptr;
    void* moved = heap->reallocate(block, size, (flags & HEAP_ZERO_MEMORY) != 0,
                                   (flags & HEAP_REALLOC_IN_PLACE_ONLY) != 0);
    return moved != nullptr ? moved : failWith(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL WINAPI HeapFree(HANDLE handle, DWORD, LPVOID block) {
    if (block == nullptr) return TRUE;
    Heap* heap = heapOf(handle, block);
    if (heap == nullptr) return FALSE;
    heap->release(block);
    return TRUE;
}

SIZE_T WINAPI HeapSize(HANDLE handle, DWORD, LPCVOID block) {
    return heapOf(handle, block) != nullptr ? headerOf(block)->size : kNoSize;
}

BOOL WINAPI HeapValidate(HANDLE handle, DWORD, LPCVOID block) {
    Heap* heap = heapOf(handle);
    if (heap == nullptr) return FALSE;
    return block != nullptr ? heap->contains(block) : heap->sound();
}
