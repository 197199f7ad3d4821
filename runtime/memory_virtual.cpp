// Blocks of reserved address space that grow in place.
#include "korutil/memory.h"
#include "korutil/virtual_query.h"
#include "platform/win32.h"

WORD KORUTIL_CALL utlGlobal32Alloc(SIZE_T committed, void** result, SIZE_T reserved, UINT_PTR) {
    if (result == nullptr) return UTL_GLOBAL_INVALID;
    *result = nullptr;
    void* block = VirtualAlloc(nullptr, reserved, MEM_RESERVE, PAGE_READWRITE);
    if (block == nullptr) return UTL_GLOBAL_OUT_OF_MEMORY;
    if (VirtualAlloc(block, committed, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        VirtualFree(block, 0, MEM_RELEASE);
        return UTL_GLOBAL_OUT_OF_MEMORY;
    }
    *result = block;
    return UTL_GLOBAL_DONE;
}

WORD KORUTIL_CALL utlGlobal32Realloc(void* block, SIZE_T committed, UINT_PTR) {
    if (block == nullptr) return UTL_GLOBAL_INVALID;
    void* grown = VirtualAlloc(block, committed, MEM_COMMIT, PAGE_READWRITE);
    return grown != nullptr ? UTL_GLOBAL_DONE : UTL_GLOBAL_OUT_OF_MEMORY;
}

WORD KORUTIL_CALL utlGlobal32Free(void* block, UINT_PTR) {
    UtlVirtualDescription region;
    if (block == nullptr || !utlVirtualQuery(block, &region)) return UTL_GLOBAL_INVALID;
    if (region.regionBase != reinterpret_cast<UINT_PTR>(block)) return UTL_GLOBAL_INVALID;
    const bool freed =
        VirtualFree(block, region.regionSize, MEM_DECOMMIT) && VirtualFree(block, 0, MEM_RELEASE);
    return freed ? UTL_GLOBAL_DONE : UTL_GLOBAL_INVALID;
}

WORD KORUTIL_CALL utlGlobal16PointerAlloc(void* base, SIZE_T offset, void** result, UINT_PTR, UINT_PTR) {
    if (base == nullptr || result == nullptr) return UTL_GLOBAL_INVALID;
    *result = reinterpret_cast<void*>(reinterpret_cast<UINT_PTR>(base) + offset);
    return UTL_GLOBAL_DONE;
}

WORD KORUTIL_CALL utlGlobal16PointerFree(UINT_PTR pointer, UINT_PTR base, UINT_PTR) {
    return pointer != 0 && base != 0 ? UTL_GLOBAL_DONE : UTL_GLOBAL_INVALID;
}
