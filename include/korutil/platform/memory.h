#pragma once
/// Memory of the platform: heaps, movable global memory, and virtual memory by the page.
///
/// On Windows everything here is the system's own. Natively the same names do the same work:
/// - The process heap is the runtime's heap, with the size of each block kept in front of it; it needs no
/// lock
///   of ours. A created heap counts what it hands out, refuses what would pass its maximum size, and gives
///   all its blocks back when it is destroyed.
/// - Global memory has handles that are looked up, never followed: a stale or invented handle is answered
/// with
///   the last error 6 (invalid handle).
/// - Virtual memory keeps a table of what VirtualAlloc reserved. VirtualQuery answers our own reservations
/// from
///   that table and everything else from the process map.
///
/// What differs natively, for want of a counterpart:
/// - HEAP_GENERATE_EXCEPTIONS and HEAP_CREATE_ENABLE_EXECUTE are accepted and do nothing: a failing call
///   returns null and blocks are never executable.
/// - PAGE_GUARD is offered for our own reservations only; VirtualProtect refuses it elsewhere (87, invalid
///   parameter). The first access to such a page faults; the fault translation (fault_guard.h) tells it as
///   STATUS_GUARD_PAGE_VIOLATION (0x80000001) and takes the guard off. Where no fault guard is alive the
///   process dies of the access, as it does on Windows. A system call that is handed a guarded buffer fails
///   and leaves the guard on.
/// - The stacks of the calling thread and of the main thread are told as reserved, guard and committed
/// blocks;
///   another thread's stack is told as the entries of the process map.

#include "korutil/platform.h"

#ifndef _WIN32

/// @name Heap flags
/// @{
inline constexpr DWORD HEAP_NO_SERIALIZE = 0x00000001;
inline constexpr DWORD HEAP_GENERATE_EXCEPTIONS = 0x00000004;
inline constexpr DWORD HEAP_ZERO_MEMORY = 0x00000008;
inline constexpr DWORD HEAP_REALLOC_IN_PLACE_ONLY = 0x00000010;
inline constexpr DWORD HEAP_CREATE_ENABLE_EXECUTE = 0x00040000;
/// @}

/// The heap of the process; it always exists and cannot be destroyed.
KORPLATFORM_API HANDLE WINAPI GetProcessHeap();

/// Makes a heap.
/// @param flags        HEAP_NO_SERIALIZE when only one thread uses it, else 0
/// @param initialSize  taken as a hint only
/// @param maximumSize  0 for a heap that grows; else the bytes, rounded up to a page, that all blocks with
/// their
///                     bookkeeping (32 bytes each) may take together
/// @return the heap; null with the last error 8 when memory is short
KORPLATFORM_API HANDLE WINAPI HeapCreate(DWORD flags, SIZE_T initialSize, SIZE_T maximumSize);

/// Gives back a created heap with all its blocks.
/// @return TRUE; FALSE with the last error 6 for the process heap and what is no heap
KORPLATFORM_API BOOL WINAPI HeapDestroy(HANDLE heap);

/// A block of the heap, aligned to 16 bytes; cleared with HEAP_ZERO_MEMORY. 0 bytes give a block of size 0.
/// @return null with the last error 8 when memory is short or the heap's maximum is reached
KORPLATFORM_API LPVOID WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T size);

/// Resizes a block; the block may move unless HEAP_REALLOC_IN_PLACE_ONLY is given.
/// HEAP_ZERO_MEMORY clears what is gained.
/// @return the block; null on failure (last error 8, or 87 for what is no block of this heap): the old one
/// stays
KORPLATFORM_API LPVOID WINAPI HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T size);

/// Frees a block; null is success.
/// @return FALSE with the last error 87 for what is no block of this heap
KORPLATFORM_API BOOL WINAPI HeapFree(HANDLE heap, DWORD flags, LPVOID block);

/// The size that a block was asked with; the largest SIZE_T, with the last error 87, for what is no block.
KORPLATFORM_API SIZE_T WINAPI HeapSize(HANDLE heap, DWORD flags, LPCVOID block);

/// Whether an address is a live block of this heap, or (null) whether the heap itself is sound. Any address
/// may be asked about. This is a call for diagnosis: it is slow.
KORPLATFORM_API BOOL WINAPI HeapValidate(HANDLE heap, DWORD flags, LPCVOID block);

/// @name Flags of global and local memory
/// @{
inline constexpr UINT GMEM_FIXED = 0x0000;
inline constexpr UINT GMEM_MOVEABLE = 0x0002;
inline constexpr UINT GMEM_NOCOMPACT = 0x0010;
inline constexpr UINT GMEM_NODISCARD = 0x0020;
inline constexpr UINT GMEM_ZEROINIT = 0x0040;
inline constexpr UINT GMEM_MODIFY = 0x0080;
inline constexpr UINT GMEM_DISCARDABLE = 0x0100;
inline constexpr UINT GMEM_SHARE = 0x2000;
inline constexpr UINT GMEM_DDESHARE = 0x2000;
inline constexpr UINT GMEM_DISCARDED = 0x4000;
inline constexpr UINT GMEM_INVALID_HANDLE = 0x8000;
inline constexpr UINT GMEM_LOCKCOUNT = 0x00FF;
inline constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
inline constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;
inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_MOVEABLE = 0x0002;
inline constexpr UINT LMEM_ZEROINIT = 0x0040;
inline constexpr UINT LPTR = LMEM_FIXED | LMEM_ZEROINIT;
/// @}

/// A block of global memory. A fixed block's handle is its address; a movable one has to be locked, and one
/// of size 0 is born discarded.
/// @return null with the last error 8 when memory is short
KORPLATFORM_API HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size);

/// Resizes a block (GMEM_ZEROINIT clears what is gained), discards an unlocked movable one (size 0), or with
/// GMEM_MODIFY changes its attributes only: GMEM_DISCARDABLE, and GMEM_MOVEABLE makes a fixed block movable.
/// A fixed or locked block moves only with GMEM_MOVEABLE.
/// @return the handle (a fixed block's may change); null on failure: the old block stays
KORPLATFORM_API HGLOBAL WINAPI GlobalReAlloc(HGLOBAL block, SIZE_T size, UINT flags);

/// Frees a block, locked or not. @return null on success (also for null), else the handle with the last error
/// 6
KORPLATFORM_API HGLOBAL WINAPI GlobalFree(HGLOBAL block);

/// The block's address, its lock count raised by one (it stops at 255).
/// @return null with the last error 6, or 157 when the block is discarded
KORPLATFORM_API LPVOID WINAPI GlobalLock(HGLOBAL block);

/// Lowers the lock count. @return TRUE while the block stays locked (always for a fixed one); FALSE with the
/// last error 0 when it is now unlocked, 158 when it was not locked, 6 when it is no block
KORPLATFORM_API BOOL WINAPI GlobalUnlock(HGLOBAL block);

/// The handle of the block that starts at an address; null with the last error 6 (87 for a null address).
KORPLATFORM_API HGLOBAL WINAPI GlobalHandle(LPCVOID address);

/// The block's size in bytes; 0 for a discarded block, and with the last error 6 for what is none.
KORPLATFORM_API SIZE_T WINAPI GlobalSize(HGLOBAL block);

/// Lock count (low byte), GMEM_DISCARDABLE and GMEM_DISCARDED; GMEM_INVALID_HANDLE, with the last error 6.
KORPLATFORM_API UINT WINAPI GlobalFlags(HGLOBAL block);

/// Local memory is global memory by another name; FormatMessageA's buffers come from it.
KORPLATFORM_API HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T size);
KORPLATFORM_API HLOCAL WINAPI LocalFree(HLOCAL block);

/// @name Virtual memory: what to do, states and kinds of blocks
/// @{
inline constexpr DWORD MEM_COMMIT = 0x00001000;
inline constexpr DWORD MEM_RESERVE = 0x00002000;
inline constexpr DWORD MEM_DECOMMIT = 0x00004000;
inline constexpr DWORD MEM_RELEASE = 0x00008000;
inline constexpr DWORD MEM_FREE = 0x00010000;
inline constexpr DWORD MEM_PRIVATE = 0x00020000;
inline constexpr DWORD MEM_MAPPED = 0x00040000;
inline constexpr DWORD MEM_TOP_DOWN = 0x00100000;
inline constexpr DWORD MEM_IMAGE = 0x01000000;
/// @}
/// @name Protections of pages
/// @{
inline constexpr DWORD PAGE_NOACCESS = 0x01;
inline constexpr DWORD PAGE_READONLY = 0x02;
inline constexpr DWORD PAGE_READWRITE = 0x04;
inline constexpr DWORD PAGE_WRITECOPY = 0x08;
inline constexpr DWORD PAGE_EXECUTE = 0x10;
inline constexpr DWORD PAGE_EXECUTE_READ = 0x20;
inline constexpr DWORD PAGE_EXECUTE_READWRITE = 0x40;
inline constexpr DWORD PAGE_EXECUTE_WRITECOPY = 0x80;
inline constexpr DWORD PAGE_GUARD = 0x100;
inline constexpr DWORD PAGE_NOCACHE = 0x200;
/// @}

/// A block of pages that are alike: from the page asked about to the last of the same kind.
struct MEMORY_BASIC_INFORMATION {
    PVOID BaseAddress;        ///< the page that holds the address
    PVOID AllocationBase;     ///< the start of the region; null for free pages
    DWORD AllocationProtect;  ///< the protection that the region was reserved with
    SIZE_T RegionSize;        ///< bytes in the block
    DWORD State;              ///< MEM_COMMIT, MEM_RESERVE or MEM_FREE
    DWORD Protect;            ///< 0 for reserved pages, PAGE_NOACCESS for free ones
    DWORD Type;               ///< MEM_IMAGE, MEM_MAPPED or MEM_PRIVATE; 0 for free pages
};
using PMEMORY_BASIC_INFORMATION = MEMORY_BASIC_INFORMATION*;

/// Reserves pages (regions start at multiples of 64 KB), commits them, or both at once. Without an address
/// and without MEM_RESERVE, both. A given address is rounded down: to 64 KB for a reservation, to a page
/// else. Pages committed anew are zero; pages committed already take the protection given.
/// @return the start; null with the last error 87 for bad arguments, 487 when the address is taken or, for a
///         commit, not within one reservation, 8 when memory is short
KORPLATFORM_API LPVOID WINAPI VirtualAlloc(LPVOID address, SIZE_T size, DWORD type, DWORD protect);

/// MEM_DECOMMIT takes pages of one reservation back to reserved (size 0 at its start: all of them);
/// MEM_RELEASE gives up a reservation: its start, size 0.
/// @return TRUE; FALSE with the last error 87 or 487
KORPLATFORM_API BOOL WINAPI VirtualFree(LPVOID address, SIZE_T size, DWORD type);

/// Changes the protection of committed pages of one region.
/// @param former  receives the protection that the first page had
/// @return TRUE; FALSE with the last error 87 (protection), 487 (pages) or 998 (no `former`)
KORPLATFORM_API BOOL WINAPI VirtualProtect(LPVOID address, SIZE_T size, DWORD protect, DWORD* former);

/// Describes the block of pages that holds an address.
///
/// Natively, outside our own reservations one entry of the process map is a block, all adjoining entries of
/// one file are one image region, and other mapped memory is private. The map is read once for a walk that
/// goes on from the end of each block told within one region.
/// @param length  at least the size of the description
/// @return bytes written; 0 with the last error 24 (length), 87 (address beyond the process), 998 (no buffer)
KORPLATFORM_API SIZE_T WINAPI VirtualQuery(LPCVOID address, PMEMORY_BASIC_INFORMATION information,
                                           SIZE_T length);

/// The machine: page size, the granularity of reservations (65536), the processors of this process.
struct SYSTEM_INFO {
    WORD wProcessorArchitecture;
    WORD wReserved;
    DWORD dwPageSize;
    LPVOID lpMinimumApplicationAddress;
    LPVOID lpMaximumApplicationAddress;
    DWORD_PTR dwActiveProcessorMask;
    DWORD dwNumberOfProcessors;
    DWORD dwProcessorType;
    DWORD dwAllocationGranularity;
    WORD wProcessorLevel;
    WORD wProcessorRevision;
};
KORPLATFORM_API void WINAPI GetSystemInfo(SYSTEM_INFO* information);

/// Memory of the machine and address space of the process, in bytes.
struct MEMORYSTATUS {
    DWORD dwLength;      ///< set by the call
    DWORD dwMemoryLoad;  ///< physical memory in use, in percent
    SIZE_T dwTotalPhys;
    SIZE_T dwAvailPhys;
    SIZE_T dwTotalPageFile;  ///< physical memory and swap space together
    SIZE_T dwAvailPageFile;
    SIZE_T dwTotalVirtual;
    SIZE_T dwAvailVirtual;
};
KORPLATFORM_API void WINAPI GlobalMemoryStatus(MEMORYSTATUS* status);

#endif
