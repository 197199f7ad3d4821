// Asking, shifting and freeing arm arrays.
#include <cstdlib>

#include "platform/win32.h"
#include "runtime/arm_header.h"

namespace kor {
namespace {

constexpr int kDeepestNesting = 16;

// Moves the pointers of a table and of all tables below it.
void shiftTable(const ArmHeader& header, DWORD level, char** table, UINT_PTR tableShift, UINT_PTR rowShift) {
    const bool leadsToRows = level + 2 == header.dimensions();
    for (DWORD i = 0; i < header.count(level); ++i) {
        if (!leadsToRows)
            shiftTable(header, level + 1, reinterpret_cast<char**>(table[i]), tableShift, rowShift);
        // As numbers: the origin may lie outside the block.
        const UINT_PTR moved = reinterpret_cast<UINT_PTR>(table[i]) + (leadsToRows ? rowShift : tableShift);
        table[i] = reinterpret_cast<char*>(moved);
    }
}

bool holdsArrays(const ArmHeader& header) {
    return header.typeTag() == ARM_TAG_OF_ARRAYS && header.dimensions() == 1 && header.elementSize() == kWord;
}

BOOL freeNested(void** array, int depth) {
    if (*array == nullptr) return 1;
    const ArmHeader header(*array);
    // What lies deeper is left alone: required, and it ends the walk whatever the elements say.
    if (depth > kDeepestNesting || !header.valid()) return 0;
    if (holdsArrays(header)) {
        auto** elements = static_cast<void**>(*array);
        for (DWORD i = header.count(0); i-- > 0;)
            freeNested(&elements[i], depth + 1);
    }
    BOOL freed = 1;
    if (header.heap() != nullptr)
        freed = HeapFree(header.heap(), 0, header.block());
    else
        std::free(header.block());
    *array = nullptr;
    return freed;
}

}  // namespace
}  // namespace kor

using namespace kor;

BOOL KORUTIL_CALL armFreeReset(void** array) { return array != nullptr ? freeNested(array, 1) : 0; }

DWORD KORUTIL_CALL armGetCount(const void* array, DWORD dimension) {
    const ArmHeader header(array);
    return header.valid() && dimension < header.dimensions() ? header.count(dimension) : 0;
}

BOOL KORUTIL_CALL armGetData(const void* array, SIZE_T* blockSize, DWORD* count, DWORD* dimensions,
                             DWORD* elementSize, DWORD* typeTag) {
    const ArmHeader header(array);
    if (!header.valid()) return 0;
    if (blockSize != nullptr) *blockSize = header.blockSize();
    if (count != nullptr) *count = header.count(0);
    if (dimensions != nullptr) *dimensions = header.dimensions();
    if (elementSize != nullptr) *elementSize = header.elementSize();
    if (typeTag != nullptr) *typeTag = header.typeTag();
    return 1;
}

HANDLE KORUTIL_CALL armGetHeap(const void* array) {
    const ArmHeader header(array);
    return header.valid() ? header.heap() : nullptr;
}

void* KORUTIL_CALL armShiftPointers(void* array, DWORD shift) {
    ArmHeader header(array);
    if (!header.valid() || header.shifted()) return nullptr;
    header.setShifted();
    // Unsigned throughout, so that the shift of a wild count wraps.
    const auto count = static_cast<UINT_PTR>(static_cast<INT_PTR>(static_cast<LONG>(shift)));
    const UINT_PTR tableShift = count * kWord;
    const UINT_PTR rowShift = count * header.elementSize();
    const bool hasTables = header.dimensions() > 1;
    if (hasTables) shiftTable(header, 0, static_cast<char**>(array), tableShift, rowShift);
    return reinterpret_cast<void*>(reinterpret_cast<UINT_PTR>(array) + (hasTables ? tableShift : rowShift));
}
