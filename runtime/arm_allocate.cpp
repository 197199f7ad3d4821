// Making arm arrays, and changing the count of those of one dimension.
#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>

#include "platform/win32.h"
#include "runtime/arm_header.h"

namespace kor {
namespace {

using Counts = std::span<const DWORD>;

struct ArmLayout {
    SIZE_T row = 0;    // bytes of a row, rounded up
    SIZE_T block = 0;  // bytes of everything
};

// Whether the sizes can be represented.
bool layOut(DWORD elementSize, Counts counts, ArmLayout& layout) {
    SIZE_T size;
    if (__builtin_mul_overflow(SIZE_T{elementSize}, counts.back(), &size)) return false;
    if (__builtin_add_overflow(size, kWord - 1, &size)) return false;
    layout.row = size -= size % kWord;
    for (std::size_t k = counts.size() - 1; k-- > 0;) {
        // A table's entry, and what it leads to.
        if (__builtin_add_overflow(size, kWord, &size)) return false;
        if (__builtin_mul_overflow(size, counts[k], &size)) return false;
    }
    const std::size_t header = ArmHeader::bytes(static_cast<DWORD>(counts.size()));
    return !__builtin_add_overflow(size, header, &layout.block);
}

// Fills a table whose entries lead to rows, which follow it. @return where the last row ends
char* fillRows(char** entry, DWORD count, SIZE_T row) {
    char** const end = entry + count;
    auto* cursor = reinterpret_cast<char*>(end);
    for (; entry != end; cursor += row)
        *entry++ = cursor;
    return cursor;
}

// Fills a table and all below it in the order in which they stand: whatever an entry leads to, with all that
// belongs to it, follows before what the next entry leads to. @return where that ends
[[gnu::noinline]] char* fillTables(char** entry, Counts counts, SIZE_T row) {
    if (counts.size() == 2) return fillRows(entry, counts[0], row);
    char** const end = entry + counts[0];
    auto* cursor = reinterpret_cast<char*>(end);
    while (entry != end) {
        *entry++ = cursor;
        cursor = fillTables(reinterpret_cast<char**>(cursor), counts.subspan(1), row);
    }
    return cursor;
}

// A runtime may keep small blocks at hand for malloc alone; for large ones it may know that they are zero.
constexpr SIZE_T kSmallBlock = 1024;

// A function of its own, so that the compiler takes the runtime's memset for small sizes too.
[[gnu::noinline]] void clear(char* from, SIZE_T size) { std::memset(from, 0, size); }

// A block that is zero from the array on.
void* newBlock(HANDLE heap, SIZE_T header, SIZE_T size) {
    if (heap != nullptr) return HeapAlloc(heap, HEAP_ZERO_MEMORY, size);
    if (size > kSmallBlock) return std::calloc(1, size);
    auto* block = static_cast<char*>(std::malloc(size));
    if (block != nullptr) clear(block + header, size - header);
    return block;
}

void* makeArray(HANDLE heap, DWORD elementSize, DWORD typeTag, Counts counts) {
    ArmLayout layout;
    if (elementSize >= kElementSizeLimit || !layOut(elementSize, counts, layout)) return nullptr;
    void* block = newBlock(heap, ArmHeader::bytes(static_cast<DWORD>(counts.size())), layout.block);
    if (block == nullptr) return nullptr;
    void* array = ArmHeader::write(block, layout.block, heap, elementSize, typeTag, counts);
    auto** top = static_cast<char**>(array);
    if (counts.size() == 2)
        fillRows(top, counts[0], layout.row);
    else if (counts.size() > 2)
        fillTables(top, counts, layout.row);
    return array;
}

void* resizeBlock(const ArmHeader& header, SIZE_T size) {
    if (header.heap() != nullptr) return HeapReAlloc(header.heap(), HEAP_ZERO_MEMORY, header.block(), size);
    const SIZE_T former = header.blockSize();
    auto* block = static_cast<char*>(std::realloc(header.block(), size));
    if (block != nullptr && size > former) std::memset(block + former, 0, size - former);
    return block;
}

}  // namespace
}  // namespace kor

using namespace kor;

void* armAllocEx(HANDLE heap, DWORD elementSize, DWORD typeTag, DWORD dimensions, ...) {
    if (dimensions < 1 || dimensions > kMostDimensions) return nullptr;
    std::array<DWORD, kMostDimensions> counts;
    va_list list;
    va_start(list, dimensions);
    for (DWORD k = 0; k < dimensions; ++k)
        counts[k] = va_arg(list, DWORD);
    va_end(list);
    return makeArray(heap, elementSize, typeTag, Counts(counts.data(), dimensions));
}

void* KORUTIL_CALL armAlloc(DWORD count, DWORD elementSize, DWORD typeTag, HANDLE heap) {
    return makeArray(heap, elementSize, typeTag, Counts(&count, 1));
}

BOOL KORUTIL_CALL armReAlloc(void** array, LONG count) {
    if (array == nullptr || count < 0) return 0;
    const ArmHeader header(*array);
    if (!header.valid() || header.dimensions() != 1) return 0;
    const auto newCount = static_cast<DWORD>(count);
    ArmLayout layout;
    if (!layOut(header.elementSize(), Counts(&newCount, 1), layout)) return 0;
    const SIZE_T kept = SIZE_T{header.elementSize()} * std::min(header.count(0), newCount);
    const SIZE_T known = std::min(header.blockSize(), layout.block) - ArmHeader::bytes(1);
    auto* block = static_cast<char*>(resizeBlock(header, layout.block));
    if (block == nullptr) return 0;
    ArmHeader moved(block + ArmHeader::bytes(1));
    // What is padding now, or was, is an element's when the array grows again.
    std::memset(static_cast<char*>(moved.array()) + kept, 0, known - kept);
    moved.setBlockSize(layout.block);
    moved.setCount(0, newCount);
    *array = moved.array();
    return 1;
}

BOOL KORUTIL_CALL armReSize(void** array, DWORD count, DWORD elementSize, DWORD typeTag, HANDLE heap) {
    if (array == nullptr) return 0;
    if (*array != nullptr) return armReAlloc(array, static_cast<LONG>(count));
    *array = armAlloc(count, elementSize, typeTag, heap);
    return *array != nullptr;
}

BOOL KORUTIL_CALL armCheckSize(void** array, DWORD needed, DWORD extra) {
    if (array == nullptr || !ArmHeader(*array).valid()) return 0;
    if (ArmHeader(*array).count(0) >= needed) return 1;
    const std::uint64_t count = std::uint64_t{needed} + extra;
    if (count > static_cast<std::uint64_t>(std::numeric_limits<LONG>::max())) return 0;
    return armReAlloc(array, static_cast<LONG>(count));
}
