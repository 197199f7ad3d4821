#pragma once
/// What an address belongs to: the whole region that was allocated at once and the one block of alike pages
/// within it. It tells a stack from a heap block and finds the size to give back of a reservation.

#include "korutil/platform.h"

/// A region and one of its blocks, in eleven pointer-sized words. Kinds, states and protections are the
/// system's (MEM_*, PAGE_*, see platform/memory.h).
struct UtlVirtualDescription {
    UINT_PTR regionBase;        ///< start of the region; of the free block where nothing is allocated
    UINT_PTR regionProtection;  ///< protection with which the region was allocated; of the free block
    UINT_PTR regionSize;        ///< all blocks together; of the free block
    UINT_PTR regionType;        ///< image, mapped or private; the free state where nothing is allocated
    UINT_PTR blockCount;        ///< blocks in the region
    UINT_PTR guardCount;        ///< blocks that are guarded
    UINT_PTR isStack;           ///< 1 when the region is a thread's stack
    UINT_PTR blockBase;         ///< start of the block that holds the address
    UINT_PTR blockProtection;   ///< its protection
    UINT_PTR blockSize;         ///< its size
    UINT_PTR blockKind;         ///< its type when committed, the reserved state when reserved
};
static_assert(sizeof(UtlVirtualDescription) == 11 * sizeof(void*));

/// Describes the memory at an address.
///
/// A region is private until the first block of another type is met. It is a stack when a block is guarded,
/// or when its last four blocks are, in order, reserved, without access, read-write and reserved. Where
/// nothing is allocated only the first four words are set. Natively the main thread's stack and the calling
/// thread's are told as stacks; those of other threads are told as plain private blocks.
/// @param address      any address
/// @param description  cleared first, then filled
/// @return 1, or 0 when the system cannot tell or there is no description
KORUTIL_API BOOL KORUTIL_CALL utlVirtualQuery(const void* address, UtlVirtualDescription* description);
