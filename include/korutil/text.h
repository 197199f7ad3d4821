#pragma once
/// Small services for texts: numbers and units between settings and code pages, string resources, splitting
/// and searching, several buffers in one block.
///
/// Texts are in the ANSI code page. Functions that search or cut keep double-byte characters (and the
/// sequences of code page 65001) whole. A null text counts as empty. Functions that take framework classes
/// throw a `CMemoryException*` when memory is short, and then leave the objects as they were; no other
/// function here throws.

#include "korutil/framework/string.h"
#include "korutil/framework/string_array.h"
#include "korutil/platform.h"

/// Replaces decimal characters in place, by the user's decimal separator: the key "sDecimal" in section
/// "intl" of the system's profile (win.ini), its first character. It is read once, when it is first needed;
/// "." when it is missing, empty, or a part of a character. With "." nothing changes.
/// @param toLocal  non-zero: every "." becomes the separator; 0: every separator becomes "."
KORUTIL_API void KORUTIL_CALL strHandleDecimal(char* text, BOOL toLocal);

/// Makes the special characters of unit texts plain, in place, where the ANSI code page is not 1252; there
/// nothing changes.
/// @param reduce  non-zero: the text is in code page 1252, and its micro sign (0xB5), superscript two (0xB2)
///                and three (0xB3), degree sign (0xB0) and A with ring (0xC5) become "u", "2", "3", "o" and
///                "A", wherever these bytes stand. 0: the reverse, and so every "u", "2", "3", "o" and "A" of
///                the text, wherever it came from, becomes a special character of code page 1252 (but not the
///                second byte of a double-byte character)
KORUTIL_API void KORUTIL_CALL strHandleCharExtension(char* text, BOOL reduce);

/// Copies a text. Where the system has a double-byte character set, the text is taken for one of code page
/// 1252 and converted to the ANSI code page; what that page lacks becomes its default character ("?").
/// @param source       must not overlap the destination
/// @param destination  receives as many whole characters as fit, and a zero; may be null
/// @param size         of `destination` in bytes; with 0 nothing is written
/// @return `destination`
KORUTIL_API char* KORUTIL_CALL strMapUniCharsX(const char* source, char* destination, DWORD size);

/// Loads a string resource, language neutral. The block of sixteen strings that the number belongs to must be
/// there: a warning is shown when it is missing. Memory is reported to be short when the block cannot be had
/// though it is there.
/// @param module  null: the host executable
/// @param buffer  receives as many whole characters as fit, and a zero; may be null
/// @param size    of `buffer` in bytes; with 0 or less nothing is written
/// @return the full length of the string in characters (UTF-16 units, as the resource counts them), whatever
///         was copied; 0 on failure and for an empty string: the buffer is then an empty text
KORUTIL_API int KORUTIL_CALL utlLoadString(HINSTANCE module, UINT id, char* buffer, int size);

/// Loads a string resource into a string object, 256 bytes of it at most.
/// @param text    empty when there is no such string
/// @param direct  non-zero: as `utlLoadString`, with its warnings; 0: by the system's LoadStringA
/// @return length of the text
KORUTIL_API int KORUTIL_CALL strLoadString(HINSTANCE module, UINT id, CString& text, BOOL direct);

/// Makes several text buffers in one block, all zero.
/// @param count  of pairs that follow: the address of a `char*`, and the size in bytes as a DWORD
/// @return the block, for `strFree`, each pointer set to its piece, in order; null, and the pointers too,
///         when an address is null, and when memory is short, which is shown to the user
KORUTIL_API void* strAlloc(DWORD count, ...);

/// Frees such a block; null does nothing.
KORUTIL_API void KORUTIL_CALL strFree(void* block);

/// Splits a text at a separator. An empty field ends the split: where two separators stand together, or one
/// at the start, the rest, with that separator, is the last element (a,b,,c gives a and b and ,c). A
/// separator at the very end gives an empty last element. There is always at least one element.
/// @param array      receives the elements in place of what it held
/// @param separator  when it is empty, the whole text is the one element
KORUTIL_API void KORUTIL_CALL strSplit(const char* text, CStringArray& array, const char* separator);

/// Splits a text at the last occurrence of a character.
/// @param left   receives what stands before it
/// @param right  receives what stands behind it
/// @return its index; -1 when it is not in the text: both are then empty
KORUTIL_API int KORUTIL_CALL strSplitFromEnd(const char* text, CString& left, CString& right, char separator);

/// Finds a text in another, letters compared by their lower-case form in the code page.
/// @return the address in `text`, which is that of its start for an empty pattern; null when the pattern is
///         not there, for a null argument and when memory is short
KORUTIL_API char* KORUTIL_CALL _tcsistr(const char* text, const char* pattern);
