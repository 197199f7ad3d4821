// Movable global memory, held by its address instead of its handle.
#include "korutil/memory.h"
#include "platform/win32.h"

void* KORUTIL_CALL GlobalAllocPtr(UINT flags, SIZE_T size) {
    HGLOBAL handle = GlobalAlloc(flags, size);
    if (handle == nullptr) return nullptr;
    void* block = GlobalLock(handle);
    if (block == nullptr) GlobalFree(handle);
    return block;
}

void* KORUTIL_CALL GlobalReAllocPtr(void* block, SIZE_T size, UINT flags) {
    HGLOBAL handle = GlobalHandle(block);
    if (handle == nullptr) return nullptr;
    GlobalUnlock(handle);
    HGLOBAL moved = GlobalReAlloc(handle, size, flags);
    if (moved == nullptr) {
        GlobalLock(handle);
        return nullptr;
    }
    void* locked = GlobalLock(moved);
    if (locked == nullptr) GlobalFree(moved);
    return locked;
}

HGLOBAL KORUTIL_CALL GlobalFreePtr(void* block) {
    HGLOBAL handle = GlobalHandle(block);
    if (handle == nullptr) return nullptr;
    GlobalUnlock(handle);
    return GlobalFree(handle);
}
