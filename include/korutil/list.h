#pragma once
/// Packed lists: records of any size in one block of the runtime heap, so that a whole list can be copied,
/// stored or handed to another module as it stands; and the choice of a value from a sorted row of values.
///
/// The caller holds a pointer to the block. Functions that may move it take the address of that pointer. The
/// block holds no pointers and is the same on every target: eight words of 32 bits (`ListBlock`), the table
/// of one word for each element that there is room for, which holds where the element begins in the data
/// area, and the data area. Table words and data bytes that are not in use are 0 (but what a step of more
/// than 1 MB adds to the data area keeps its bytes of chance).
///
/// An element is a record whose first 32-bit word is its own size in bytes, that word included. It takes the
/// smallest multiple of 4 that is greater than its size, and the bytes behind it are 0, so a text at its end
/// is always terminated. It begins at a multiple of 4 bytes.
///
/// A list that came from a file or from another module is checked before it is used: when its words do not
/// agree with each other, it has no elements and cannot be changed; a function that was to change one whose
/// table is too small for its elements beeps. Word 0 is trusted: the block must really have that many bytes.
/// A block that is to be changed must be of the runtime heap (`korMalloc`). Lists are not locked.

#include "korutil/platform.h"

/// The words with which a list begins; the table follows.
struct ListBlock {
    DWORD totalSize;      ///< bytes of the block: 32 + 4 * tableCapacity + dataCapacity
    DWORD dataOffset;     ///< of the data area from the block's start: 32 + 4 * tableCapacity
    DWORD count;          ///< elements
    DWORD tableCapacity;  ///< elements that the table has room for; at first 100
    DWORD dataUsed;       ///< bytes of the data area in use
    DWORD dataCapacity;   ///< bytes of the data area; at first 0
    DWORD growthStep;     ///< bytes by which the data area becomes larger than needed, at least 4
    DWORD reserved;       ///< 0
};
static_assert(sizeof(ListBlock) == 32);

/// Makes an empty list of 432 bytes.
/// @param growthStep  spare bytes that each growth of the data area adds; raised to 4
/// @return null when memory is short
KORUTIL_API ListBlock* KORUTIL_CALL lisCreate(DWORD growthStep);

/// Frees a list and sets the pointer to null. The list is not looked at.
/// @return 1, or 0 when there was no list
KORUTIL_API BOOL KORUTIL_CALL lisDestroy(ListBlock** list);

/// Appends a copy of a record; it may be an element of the same list. A data area that is too small grows to
/// the bytes needed and the step. A full table grows to the places needed and 100; the data area, if it was
/// large enough, then keeps only the bytes needed.
/// @param list     address of the list pointer; the block may move
/// @param element  its size must be at least 4, and it must really have that many bytes
/// @return the new number of elements; 0 when an argument is null, for a size below 4, when the block would
///         have 4 GB or more and when memory is short: the list is then as it was
KORUTIL_API DWORD KORUTIL_CALL lisAdd(ListBlock** list, const void* element);

/// Removes an element; those behind it move up. When more than 512 bytes of the data area are then free, the
/// block shrinks to the bytes in use; the table keeps its size.
/// @param list  address of the list pointer; the block may move
/// @return 1; 0 when there is no such element, and when the block could not shrink: the element is removed
///         all the same
KORUTIL_API BOOL KORUTIL_CALL lisRemoveData(ListBlock** list, DWORD index);

/// @return the number of elements, 0 for null
KORUTIL_API DWORD KORUTIL_CALL lisGetElementCount(const ListBlock* list);

/// An element in its place, valid until the list is changed. The caller may write to it, but not to its size.
/// @return null when there is no such element, and when it does not lie within the data in use
KORUTIL_API void* KORUTIL_CALL lisGetPointerToElement(ListBlock* list, DWORD index);

/// @return the size of the block in bytes, as word 0 has it; 0 for null
KORUTIL_API DWORD KORUTIL_CALL lisGetTotalSize(const ListBlock* list);

/// Copies a whole list, byte for byte.
/// @return the new block; null for null, for what is no list and when memory is short
KORUTIL_API ListBlock* KORUTIL_CALL lisDuplicate(const ListBlock* list);

/// Snaps a value to a row of permitted ones, in the direction in which it moves.
/// @param value     returned itself when it is in the row
/// @param previous  the value before; a `value` that is not above it moves down
/// @param list      the permitted values, ascending
/// @param count     of them; with none, or without a list, the result is `value`
/// @return moving down the largest entry below `value`, or the first one when there is none; moving up the
///         first entry above it, or the last one
KORUTIL_API WORD KORUTIL_CALL utlGetNextInList(WORD value, WORD previous, const WORD* list, DWORD count);
