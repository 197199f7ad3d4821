// Making arm arrays, and changing the count of those of one dimension.
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

bool layOut(DWORD elementSize, Counts counts, ArmLayout& layout) {
    CheckedSize row(elementSize);
    row *= counts.back();
    row.roundUpToWords();
    CheckedSize tables;
    CheckedSize data = row;
    for (std::size_t k = counts.size() - 1; k-- > 0;) {
        tables += CheckedSize(kWord);
        tables *= counts[k];
        data *= counts[k];
    }
    CheckedSize block(ArmHeader::bytes(static_cast<DWORD>(counts.size())));
    block += tables;
    block += data;
    layout = {row.value(), block.value()};
    return row.fits() && block.fits();
}

// Fills the tables in the order in which they and the rows stand: whatever an entry leads to, with all that
// belongs to it, follows before what the next entry leads to.
class TableWalk {
  public:
    TableWalk(Counts counts, SIZE_T row) : counts_(counts), row_(row) {}

    /// Fills the table of a level at `cursor` and everything below it. @return where that ends
    char* fill(std::size_t level, char* cursor) const {
        auto* entry = reinterpret_cast<char**>(cursor);
        char** const end = entry + counts_[level];
        cursor = reinterpret_cast<char*>(end);
        if (level + 2 == counts_.size()) {
            for (const SIZE_T row = row_; entry != end; cursor += row)
                *entry++ = cursor;
            return cursor;
        }
        while (entry != end) {
            *entry++ = cursor;
            cursor = fill(level + 1, cursor);
        }
        return cursor;
    }

  private:
    Counts counts_;
    SIZE_T row_;
};

void* newBlock(HANDLE heap, SIZE_T size) {
    return heap == nullptr ? std::calloc(1, size) : HeapAlloc(heap, HEAP_ZERO_MEMORY, size);
}

void* makeArray(HANDLE heap, DWORD elementSize, DWORD typeTag, Counts counts) {
    ArmLayout layout;
    if (elementSize >= kElementSizeLimit || !layOut(elementSize, counts, layout)) return nullptr;
    void* block = newBlock(heap, layout.block);
    if (block == nullptr) return nullptr;
    void* array = ArmHeader::write(block, layout.block, heap, elementSize, typeTag, counts);
    if (counts.size() > 1) TableWalk(counts, layout.row).fill(0, static_cast<char*>(array));
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
    auto* block = static_cast<char*>(resizeBlock(header, layout.block));
    if (block == nullptr) return 0;
    ArmHeader moved(block + ArmHeader::bytes(1));
    moved.setBlockSize(layout.block);
    moved.setCount(0, newCount);
    *array = moved.array();
    return 1;
}

BOOL KORUTIL_CALL armReSize(void** array, LONG count, DWORD elementSize, DWORD typeTag, HANDLE heap) {
    if (array == nullptr || count < 0) return 0;
    if (*array != nullptr) return armReAlloc(array, count);
    *array = armAlloc(static_cast<DWORD>(count), elementSize, typeTag, heap);
    return *array != nullptr;
}

BOOL KORUTIL_CALL armCheckSize(void** array, DWORD needed, DWORD extra) {
    if (array == nullptr || !ArmHeader(*array).valid()) return 0;
    if (ArmHeader(*array).count(0) >= needed) return 1;
    const std::uint64_t count = std::uint64_t{needed} + extra;
    if (count > static_cast<std::uint64_t>(std::numeric_limits<LONG>::max())) return 0;
    return armReAlloc(array, static_cast<LONG>(count));
}
