#pragma once
/// Memory: blocks of the one runtime heap that every module may free, arrays that describe themselves ("arm"
/// arrays), and thin layers over movable global memory and over reserved virtual memory.
///
/// No function here places an error: each tells failure by its result alone and then leaves the caller's
/// pointer, and the block behind it, as they were. A size that cannot be represented is a failure. There are
/// no locks; a heap handle brings the serialisation that the heap has.
///
/// ## Arm arrays
/// An array of 1 to 16 dimensions is one heap block. The caller holds P, a pointer to the first byte of data
/// or, for two or more dimensions, to the top table of pointers, so that `p[i][j]` needs no arithmetic. In
/// front of P lie d + 5 words (w = `sizeof(void*)` bytes each), from the start of the block:
///
/// | word | content |
/// |---|---|
/// | 0 | size of the block in bytes, this header included |
/// | 1 | heap that the block came from; 0 is the runtime heap |
/// | 2 | element size in bytes, below 65536 |
/// | 3 | type tag, the caller's own; `ARM_TAG_OF_ARRAYS` alone means something here |
/// | 4 to d + 3 | the sizes of the dimensions, the last one first |
/// | d + 4 | bits 0 to 5: d; bit 31: `armShiftPointers` was here |
///
/// A row is the last dimension, its bytes rounded up to a multiple of w. The tables stand in depth-first
/// order: the top table at P, then all that belongs to its first entry, then to its second, and so on. New
/// blocks are zero throughout, padding too.

#include "korutil/platform.h"

/// The type tag of a one-dimensional array whose elements are arm arrays (pointers P, or null), freed with
/// it.
inline constexpr DWORD ARM_TAG_OF_ARRAYS = 0x0100000D;

/// A block of the runtime heap; it is freed by `korFree` or by the runtime, in any module.
/// The further words of these three functions are not used.
/// @return null when memory is short
KORUTIL_API void* KORUTIL_CALL korMalloc(SIZE_T size, UINT_PTR, UINT_PTR, UINT_PTR);

/// The runtime's `realloc`: null makes a new block; null as a result leaves the old block (but the runtime
/// may free it for size 0).
KORUTIL_API void* KORUTIL_CALL korRealloc(void* block, SIZE_T size, UINT_PTR, UINT_PTR, UINT_PTR);

/// Frees a block of the runtime heap; null does nothing.
KORUTIL_API void KORUTIL_CALL korFree(void* block, UINT_PTR);

/// Makes an arm array, all zero.
/// @param heap         heap to take the block from; null is the runtime heap
/// @param elementSize  bytes of an element, below 65536
/// @param typeTag      stored as it is
/// @param dimensions   1 to 16; as many sizes follow, each a DWORD, the outermost dimension first
/// @return P, or null when an argument is out of range or memory is short
KORUTIL_API void* armAllocEx(HANDLE heap, DWORD elementSize, DWORD typeTag, DWORD dimensions, ...);

/// Makes an arm array of one dimension; see `armAllocEx`.
KORUTIL_API void* KORUTIL_CALL armAlloc(DWORD count, DWORD elementSize, DWORD typeTag, HANDLE heap);

/// Changes the count of an array of one dimension. Elements that were there stay; when the block grows, what
/// it gains is zero. The block may move. Element size, tag and heap stay.
/// @param array  address of P
/// @return 1, or 0 for a negative count, for what is no array of one dimension, and when memory is short
KORUTIL_API BOOL KORUTIL_CALL armReAlloc(void** array, LONG count);

/// Makes the array when P is null, else changes its count by `armReAlloc`; the last three arguments count
/// only for the first.
/// @param array  address of P
/// @return 1, or 0 on failure
KORUTIL_API BOOL KORUTIL_CALL armReSize(void** array, DWORD count, DWORD elementSize, DWORD typeTag,
                                        HANDLE heap);

/// Sees to room: does nothing while dimension 0 holds the needed count, else `armReAlloc` to needed + extra.
/// @param array  address of P, which must not be null
/// @return 1, or 0 on failure
KORUTIL_API BOOL KORUTIL_CALL armCheckSize(void** array, DWORD needed, DWORD extra);

/// Frees an array and sets P to null. An array tagged `ARM_TAG_OF_ARRAYS` (one dimension, elements of pointer
/// size) first frees its elements, the last one first; what is nested more than 16 levels deep is left alone.
/// @param array  address of P; a null P is success
/// @return 1 for the runtime heap, else what the heap's free says; 0 for what is no array
KORUTIL_API BOOL KORUTIL_CALL armFreeReset(void** array);

/// The size of a dimension, 0 being the outermost; 0 for a null P or a dimension that is not there.
KORUTIL_API DWORD KORUTIL_CALL armGetCount(const void* array, DWORD dimension);

/// What the header says; each output may be null.
/// @param blockSize    size of the block in bytes
/// @param count        size of dimension 0
/// @param dimensions   number of dimensions
/// @param elementSize  bytes of an element
/// @param typeTag      the caller's tag
/// @return 1, or 0 when P is below 0x10000 (never touched then) or is no array
KORUTIL_API BOOL KORUTIL_CALL armGetData(const void* array, SIZE_T* blockSize, DWORD* count,
                                         DWORD* dimensions, DWORD* elementSize, DWORD* typeTag);

/// The heap that the array came from; null for the runtime heap and for a null P.
KORUTIL_API HANDLE KORUTIL_CALL armGetHeap(const void* array);

/// Lets an array be indexed from another origin (-1: from 1), once: every pointer to a row moves by `shift`
/// elements, every pointer to a table by `shift` pointers. The header stays: all other functions here still
/// need the P of before.
/// @param shift  used as a signed count
/// @return P moved likewise; null for a null P, for what is no array, and for an array that was shifted
/// before
KORUTIL_API void* KORUTIL_CALL armShiftPointers(void* array, DWORD shift);

/// A new block of global memory, locked.
/// @param flags  GMEM_*, see platform/memory.h
/// @return its address, or null
KORUTIL_API void* KORUTIL_CALL GlobalAllocPtr(UINT flags, SIZE_T size);

/// Resizes such a block.
/// @return the locked block; null on failure: the old one is locked again and stays valid. A movable block
/// that is
///         resized to 0 bytes is freed, and the result is null too
KORUTIL_API void* KORUTIL_CALL GlobalReAllocPtr(void* block, SIZE_T size, UINT flags);

/// Unlocks and frees such a block. @return null on success and for what is no such block, else its handle
KORUTIL_API HGLOBAL KORUTIL_CALL GlobalFreePtr(void* block);

/// @name Results of the functions below
/// @{
inline constexpr WORD UTL_GLOBAL_DONE = 0;
inline constexpr WORD UTL_GLOBAL_INVALID = 3;        ///< invalid pointer or handle
inline constexpr WORD UTL_GLOBAL_OUT_OF_MEMORY = 5;  ///< also: more than was reserved
/// @}

/// Reserves address space and commits the start of it, so that the block can grow without moving.
/// @param committed  bytes that can be used at once, at least 1
/// @param result     receives the block; null on every failure
/// @param reserved   bytes that the block can grow to
/// @return 0; 5 when one of the two cannot be had; 3 without a `result`
KORUTIL_API WORD KORUTIL_CALL utlGlobal32Alloc(SIZE_T committed, void** result, SIZE_T reserved, UINT_PTR);

/// Grows the committed part of such a block, in place.
/// @return 0; 3 for a null block; 5 on failure
KORUTIL_API WORD KORUTIL_CALL utlGlobal32Realloc(void* block, SIZE_T committed, UINT_PTR);

/// Gives such a block back, with all that was reserved. @return 0; 3 when it is not the start of a
/// reservation
KORUTIL_API WORD KORUTIL_CALL utlGlobal32Free(void* block, UINT_PTR);

/// The address `offset` bytes behind a base. @return 0; 3 for a null base or no `result`
KORUTIL_API WORD KORUTIL_CALL utlGlobal16PointerAlloc(void* base, SIZE_T offset, void** result, UINT_PTR,
                                                      UINT_PTR);

/// The end of such an address: nothing is freed. @return 0; 3 when one of the first two words is 0
KORUTIL_API WORD KORUTIL_CALL utlGlobal16PointerFree(UINT_PTR pointer, UINT_PTR base, UINT_PTR);
