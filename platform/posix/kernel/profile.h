#pragma once
/// Initialisation files: `[section]` lines, `key=value` lines below them, comments that begin with `;`.
/// docs/format-initialisation-file.md tells how they are read and written.
///
/// Section and key names are compared without regard to case; of several the first one counts. A file name
/// without a separator means a file in the folder of GetWindowsDirectoryA; a null one `WIN.INI` there. Names
/// and values are texts in the ANSI code page; a file with a byte-order mark (UTF-8, UTF-16 in either byte
/// order) is converted and stays what it is.
///
/// Files are kept parsed in memory, and looked at again on each call: what another program has changed is
/// seen. A write replaces the whole file in one step, or leaves it as it was. All functions are safe in any
/// thread, and processes that write the same file take turns.
///
/// A read of a file that is there leaves the last error 0, or ERROR_MORE_DATA when the buffer was too small;
/// of another one it gives the default, or nothing, with the last error ERROR_FILE_NOT_FOUND,
/// ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME, or ERROR_ACCESS_DENIED for what is no file or may not be read.

#include "korutil/platform.h"

/// Reads a value. Blanks around it and then one pair of quotes, single or double, are taken off.
/// @param section        null for the names of all sections, each with a zero, another zero at the end
/// @param key            null for the names of all keys of the section in the same form
/// @param defaultValue   copied, without the spaces at its end, when there is no such value or no such name;
///                       null: the empty text
/// @param size           bytes that `buffer` holds; what does not fit is cut off, to `size` - 1 bytes and a
///                       zero, and to `size` - 2 bytes and two zeros where it is names, which then must leave
///                       a byte of the buffer free; 0: nothing is done
/// @return bytes copied, the last zero of a text and of names not counted
KORPLATFORM_API DWORD WINAPI GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR defaultValue,
                                                      LPSTR buffer, DWORD size, LPCSTR file);

/// Reads a number: an optional sign and decimal digits, `0x` and hexadecimal ones, `0o` and octal ones, or
/// `0b` and binary ones; what follows them is passed over, and what is more than 32 bits is lost.
/// @return the number; 0 for another text; `defaultValue` when there is no such value or an empty one
KORPLATFORM_API UINT WINAPI GetPrivateProfileIntA(LPCSTR section, LPCSTR key, INT defaultValue, LPCSTR file);

/// Reads all lines of a section that are no comments, as `key=value` with neither blanks around the two nor
/// quotes taken off, each with a zero, another zero at the end.
/// @return as GetPrivateProfileStringA for names
KORPLATFORM_API DWORD WINAPI GetPrivateProfileSectionA(LPCSTR section, LPSTR buffer, DWORD size, LPCSTR file);

/// Reads the names of all sections, as GetPrivateProfileStringA does without a section; none give 0.
KORPLATFORM_API DWORD WINAPI GetPrivateProfileSectionNamesA(LPSTR buffer, DWORD size, LPCSTR file);

/// Writes a value. The line of a key that is there is changed and nothing else; a new key comes behind the
/// last line of its section that is not blank, a new section at the end; a missing file is made.
/// @param key    null removes the section, but for its comments
/// @param value  null removes the key
/// With all three null what is kept of the files is forgotten, and the result is FALSE.
/// @return FALSE on failure, with the file as it was: ERROR_ACCESS_DENIED for a file or folder that may not
///         be written, ERROR_SHARING_VIOLATION for a file that an open handle lets nobody write and for a
///         folder that others keep locked for 5 seconds, ERROR_PATH_NOT_FOUND, ERROR_DISK_FULL and whatever
///         else the disk says. To remove what is not there is no failure
KORPLATFORM_API BOOL WINAPI WritePrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR file);

/// Replaces the lines of a section, except comments, by others, each with a zero, another zero at the end.
/// @param lines  null removes the section, but for its comments
/// @return as WritePrivateProfileStringA
KORPLATFORM_API BOOL WINAPI WritePrivateProfileSectionA(LPCSTR section, LPCSTR lines, LPCSTR file);

/// The same reads of `WIN.INI` in the folder of GetWindowsDirectoryA.
KORPLATFORM_API DWORD WINAPI GetProfileStringA(LPCSTR section, LPCSTR key, LPCSTR defaultValue, LPSTR buffer,
                                               DWORD size);
KORPLATFORM_API UINT WINAPI GetProfileIntA(LPCSTR section, LPCSTR key, INT defaultValue);
