// Blocks of the one runtime heap.
#include <cstdlib>

#include "korutil/memory.h"

void* KORUTIL_CALL korMalloc(SIZE_T size, UINT_PTR, UINT_PTR, UINT_PTR) { return std::malloc(size); }

void* KORUTIL_CALL korRealloc(void* block, SIZE_T size, UINT_PTR, UINT_PTR, UINT_PTR) {
    return std::realloc(block, size);
}

void KORUTIL_CALL korFree(void* block, UINT_PTR) { std::free(block); }
