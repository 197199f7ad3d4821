#pragma once
/// Single values in a profile: a record says which file and section, and each value has a key, whose name may
/// come from a string resource and may be numbered.
///
///     ProfileTag camera;
///     pt_InitTag(&camera, "C:\\Lumetra\\setup.ini", "Camera", 2, nullptr);  // section "Camera2"
///     pt_WriteDOUBLE(&camera, "Exposure", 0, 0.25);
///
/// A section or key is a text, or the number (below 0x10000, not 0) of a string resource of the record's
/// module; with a null module, of the library itself. At most 75 bytes of it count (whole characters); an
/// index above 0 is appended in decimal. Values are read and written as `GetPrivateProfileStringA` and
/// `WritePrivateProfileStringA` do it, in that file alone, and numbers the same way in every locale. Nothing
/// here throws or shows a message; a null record, and a null key, is a failure. The functions keep no state.

#include "korutil/platform.h"

/// Where values are.
struct ProfileTag {
    char profile[260];  ///< path of the file
    char section[80];   ///< name of the section, its index included
    HINSTANCE module;   ///< of the string resources
};

static_assert(sizeof(void*) != 4 || sizeof(ProfileTag) == 344);

/// Fills a record.
/// @param profile  path of the file, cut to 259 characters; null counts as empty
/// @param index    appended to the section's name when above 0
/// @return 1; 0, with an empty section, when the section's name cannot be loaded or does not fit with its
///         index: calls with such a record fail
KORUTIL_API BOOL KORUTIL_CALL pt_InitTag(ProfileTag* record, const char* profile, const char* section,
                                         int index, HINSTANCE module);

/// Reads an integer from the first 39 characters of a value.
/// @param value  receives it: 0 when the text does not begin with one, the nearest one that fits when it is
///               too large; untouched on failure
/// @return 1; 0 when the key is missing or its value is empty
KORUTIL_API BOOL KORUTIL_CALL pt_ReadLONG(const ProfileTag* record, const char* key, int index, LONG* value);

/// Reads a double, likewise.
KORUTIL_API BOOL KORUTIL_CALL pt_ReadDOUBLE(const ProfileTag* record, const char* key, int index,
                                            double* value);

/// Reads a text.
/// @param size  of `buffer`; a longer text is cut
/// @return the length of what was read: 0 when the key is missing or its value is empty (the buffer is then
/// an
///         empty text)
KORUTIL_API DWORD KORUTIL_CALL pt_ReadStr(const ProfileTag* record, const char* key, int index, char* buffer,
                                          DWORD size);

/// Writes an integer in decimal. @return 1, or 0 when it could not be written
KORUTIL_API BOOL KORUTIL_CALL pt_WriteLONG(const ProfileTag* record, const char* key, int index, LONG value);

/// Writes a double with at most 14 significant digits: one fewer than trees and other settings have, which is
/// required. @return 1, or 0 when it could not be written
KORUTIL_API BOOL KORUTIL_CALL pt_WriteDOUBLE(const ProfileTag* record, const char* key, int index,
                                             double value);

/// Writes a text; null removes the key. @return 1, or 0 when it could not be written
KORUTIL_API BOOL KORUTIL_CALL pt_WriteStr(const ProfileTag* record, const char* key, int index,
                                          const char* text);
