#pragma once
/// The info store: optional pieces of data that are attached to an object, each under a number or a short
/// name. A store is a packed list (korutil/list.h) of entries, so it can be copied and handed on as one
/// block; while it is empty it is a null pointer.
///
/// A key from 1 to 65535 is a number; any other value is the address of a name (`infName`). Names are
/// compared exactly; a name counts with its first 30 bytes (fewer where that would cut a double-byte
/// character), wherever it is given. 0 and the empty name are no keys: nothing is found or stored under them.
///
/// An entry's first word is its size. A number's entry goes on with a word 0 and a word that is the number,
/// and its data begins at byte 12. A name's has the name in the bytes 4 to 35, zeros behind it, and its data
/// begins at byte 36. What does not look like that is passed over; of several entries with one key the first
/// is the one. Looking up takes time in proportion to the entries. Stores are not locked.

#include "korutil/list.h"
#include "korutil/platform.h"

/// A name as a key.
inline UINT_PTR infName(const char* name) { return reinterpret_cast<UINT_PTR>(name); }

/// Begins with an empty store: sets the pointer to null, and frees nothing.
/// @param store  address of the store pointer
/// @return 1; 0 for a null address
KORUTIL_API BOOL KORUTIL_CALL infInit(ListBlock** store);

/// Stores a copy of the data as the last entry, in place of the entry with that key when there is one. The
/// list is made on first use, with the growth step 4.
/// @param store   address of the store pointer; the block may move
/// @param data    may lie in the store itself, and may be null when `length` is 0
/// @param length  bytes; an entry (12 or 36 bytes more) must be representable in 32 bits
/// @return the number of entries; 0 when an argument is not as said, and when memory is short. The entry that
///         was to be replaced is then gone if memory was there for the new entry but not for the larger list
KORUTIL_API DWORD KORUTIL_CALL infSet(ListBlock** store, UINT_PTR key, const void* data, DWORD length);

/// Copies data out.
/// @param buffer  receives at most `size` bytes
/// @return bytes copied: the smaller one of the data's length and `size`; 0 when there is no such entry or no
///         buffer
KORUTIL_API DWORD KORUTIL_CALL infGet(const ListBlock* store, UINT_PTR key, void* buffer, DWORD size);

/// @return length of the data in bytes; 0 also when there is no such entry
KORUTIL_API DWORD KORUTIL_CALL infGetSize(const ListBlock* store, UINT_PTR key);

/// The data in its place, at a multiple of 4 bytes, with a zero byte behind it; valid until the store is
/// changed.
/// @param length  receives the data's length, 0 when there is no such entry; may be null
/// @return null when there is no such entry
KORUTIL_API void* KORUTIL_CALL infGetPointer(ListBlock* store, UINT_PTR key, DWORD* length);

/// Removes an entry. A list that is then empty (or was empty before) is destroyed and the pointer set to
/// null.
/// @param store  address of the store pointer; the block may move
/// @return 1 when an entry was removed, else 0
KORUTIL_API BOOL KORUTIL_CALL infDelete(ListBlock** store, UINT_PTR key);
