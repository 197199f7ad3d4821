#pragma once
/// Settings: values kept as text in two initialisation files (sections with keys), the application profile
/// (one per installation) and the user profile (one per user). A read looks into the user profile and falls
/// back to the application profile; a write goes to the user profile, to both, or to a file of the caller's.
///
///     appSetProfiles("C:\\Lumetra\\lumetra.ini", "C:\\Users\\ann\\lumetra.ini");
///     appWriteProfileDouble("Camera", "Exposure", 0.25, kProfileDefault, nullptr);
///     double exposure = appGetProfileDouble("Camera", "Exposure", 1.0, kProfileDefault, nullptr);
///
/// What all functions share:
/// - A selector chooses the files, see below.
/// - A section name, a key name, a format and (for string reads) a default is a text, or the number (below
///   0x10000) of a string resource of `module`; with a null module, of the module that the library takes its
///   texts from (`utlGetResourceHandle`). A number whose string cannot be loaded makes the call fail with 0
///   at once. A text that was loaded is cut to 259 characters.
/// - The files are read and written as `GetPrivateProfileStringA` and `WritePrivateProfileStringA` do it:
///   names without regard to case, blanks and one pair of quotes around a value dropped, a file name without
///   a folder in the system's Windows folder. Natively see docs/format-initialisation-file.md.
/// - Numbers are written and read the same way in every locale.
///
/// Nothing here raises an error object; a lack of memory makes the call fail. All state (the two names, the
/// found-in-user flag, the names loaded from resources) is process-wide and unguarded: one thread at a time.

#include "korutil/platform.h"

/// Selectors: bit 0 stands for the user profile, bit 1 for the application profile. A value of 0x10000 or
/// more is the address of a file name: that file only (profileFile).
inline constexpr UINT_PTR kProfileDefault = 0;      ///< reads as kProfileBoth, writes as kProfileUser
inline constexpr UINT_PTR kProfileUser = 1;         ///< the user profile only
inline constexpr UINT_PTR kProfileApplication = 2;  ///< the application profile only
inline constexpr UINT_PTR kProfileBoth = 3;         ///< reads: user, then application; writes: both

/// The selector of a file.
/// @param name  must live as long as the call it is used in
inline UINT_PTR profileFile(const char* name) { return reinterpret_cast<UINT_PTR>(name); }

// ----------------------------------------------------------------------------------------------- the names

/// Sets the names of the two profiles, each cut to 259 characters; null counts as empty.
/// @return whether both are the same file: equal names, without regard to case
KORUTIL_API BOOL KORUTIL_CALL appSetProfiles(const char* applicationProfile, const char* userProfile);

/// @param applicationOut  receives the application profile's name: 260 characters, or null
/// @param userOut         receives the user profile's name: 260 characters, or null
/// @return whether both are the same file; at first, with both names empty, they are
KORUTIL_API BOOL KORUTIL_CALL appGetProfiles(char* applicationOut, char* userOut);

/// The application profile's name. While it is empty, it is set to the full path of the process's executable
/// with ".ini" for its extension; whether both are the same file stays as it was then.
/// @return the library's own copy, valid until the name is set again; never null
KORUTIL_API const char* KORUTIL_CALL appGetProfilePathname();

/// Copies the user profile's name.
/// @param size  of `buffer`
/// @return 1; 0 when `size` is 0 or the name with its terminator does not fit (the buffer is then empty)
KORUTIL_API BOOL KORUTIL_CALL appGetUserProfile(char* buffer, DWORD size);

/// @return whether the most recent read or enumeration took its value from the user profile. It is 0 after
///         one from a file of the caller's
KORUTIL_API BOOL KORUTIL_CALL appFoundInUserProfile();

/// @return the folder of the process's executable with its trailing backslash, found out once; null when the
///         executable's path has no backslash
KORUTIL_API const char* KORUTIL_CALL appGetExeDir();

/// The folder below which the user's files lie: key "Root" of section "System" (user, then application
/// profile); when that is empty, the folder of the help files (utlMakeHelpPathName). Without a trailing
/// backslash.
/// @param size  of `buffer`; either folder is cut when it does not fit
/// @return 1; 0 when `buffer` is null or `size` is 0
KORUTIL_API BOOL KORUTIL_CALL appGetUserRootDir(char* buffer, DWORD size);

/// The path of a help file: help files lie in the executable's folder.
/// @param buffer  receives the folder, with its backslash, and the name
/// @param name    of the help file; null or empty for the folder alone
/// @return 1; 0, with an empty buffer, when the path does not fit or the executable's folder is not known
KORUTIL_API BOOL KORUTIL_CALL utlMakeHelpPathName(char* buffer, DWORD size, const char* name);

// ------------------------------------------------------------------------------------------------- reading
//
// A key that the user profile has, if only with an empty value, never falls back: an empty value there is the
// answer. Integers are otherwise: a text that is no number is 0 and does not fall back either, but an empty
// value counts as no key, as it does to the system's `GetPrivateProfileIntA`.

/// Reads a text.
/// @param defaultText  for a key that is in none of the files. From a file of the caller's, and from the
///                     application profile, it is cut to the buffer as any value; when only the user profile
///                     was asked, or both profiles are the same file, it is copied whole, whatever `size`
///                     says: the buffer must hold it. Null counts as empty
/// @param buffer       receives the text, cut to `size` - 1 characters and terminated
/// @param size         0: nothing is read and the buffer stays untouched
/// @return length of the text in the buffer; 0 for an empty value and for a failure. With a null key or
///         section the buffer receives the names of all keys or sections, as the system's function has it
KORUTIL_API DWORD KORUTIL_CALL appGetProfileString(const char* section, const char* key,
                                                   const char* defaultText, char* buffer, DWORD size,
                                                   UINT_PTR selector, HINSTANCE module);

/// Reads a decimal integer, as the system's `GetPrivateProfileIntA` does.
/// @return the integer; `defaultValue` for a key that is in none of the files, or has an empty value
KORUTIL_API int KORUTIL_CALL appGetProfileInt(const char* section, const char* key, int defaultValue,
                                              UINT_PTR selector, HINSTANCE module);

/// Reads a double from the first 127 characters of a value. A number begins with a digit, a point and a
/// digit, or a sign and either of them; what stands behind it does not count.
/// @return the number; `defaultValue` for a key that is not there, an empty value and one that is no number
KORUTIL_API double KORUTIL_CALL appGetProfileDouble(const char* section, const char* key, double defaultValue,
                                                    UINT_PTR selector, HINSTANCE module);

/// Reads doubles, separated by commas without blanks, from the first 519 characters of a value. Reading ends
/// at the first thing that is no number ("1.5,2.5,,3" has two).
/// @param defaults  `count` doubles that `values` has where the profile has none; may be `values` itself, and
///                  null to leave `values` as it is
/// @param values    receives `count` doubles
/// @return how many came from the profile; `count` itself when it is negative
KORUTIL_API int KORUTIL_CALL appGetProfileDblArray(const char* section, const char* key,
                                                   const double* defaults, double* values, int count,
                                                   UINT_PTR selector, HINSTANCE module);

/// Reads a block of bytes, written as two hexadecimal digits each, of any case.
/// @param size  in bytes; a value of any other length is refused and leaves `data` untouched. A missing key
///              counts as the empty value, which is a block of no bytes
/// @return 1; 0 also at a bad digit: the bytes in front of it are written
KORUTIL_API BOOL KORUTIL_CALL appGetProfileStruct(const char* section, const char* key, void* data,
                                                  DWORD size, UINT_PTR selector, HINSTANCE module);

/// Reads a path, or paths separated by ";", and makes it absolute (`sysCvtToAbsPath`): a relative path starts
/// in the folder of the profile that it came from; a default counts as coming from the application profile
/// (or from the caller's file).
/// @param defaultText  see appGetProfileString
/// @param size         of `buffer`. A single path that does not fit when it is absolute is a failure
/// @return 1 for a path, the number of paths for a list; 0 when there is none or it cannot be made absolute:
///         the buffer then holds the text as it was read
KORUTIL_API int KORUTIL_CALL appGetProfilePaths(const char* section, const char* key, const char* defaultText,
                                                char* buffer, DWORD size, UINT_PTR selector,
                                                HINSTANCE module);

/// Scans the first 259 characters of a value.
/// @param format     text or string number; conversions as `scanf`'s, `l` is 32 bits on every target
/// @param arguments  argument list (KORUTIL_ARGUMENTS, KorArgumentList) of pointers. A text conversion
///                   without a width needs 260 characters
/// @return how many values were stored; 0 also when `format` is null or cannot be loaded
KORUTIL_API int KORUTIL_CALL appVScanProfileString(const char* section, const char* key, UINT_PTR selector,
                                                   const char* format, void* arguments, HINSTANCE module);

/// The same with the arguments in place, and a null module.
KORUTIL_API int appScanProfileString(const char* section, const char* key, UINT_PTR selector,
                                     const char* format, ...);

// Texts of several lines take a section of their own: keys "1", "2", ... and "Lines", their number. A tab is
// stored as the two characters backslash and "t".
//
// No more lines are read than 4096 or, when it has more, the section has keys.

/// Puts such a text into an edit control, in place of what it holds, and marks the control as not modified.
/// Lines are separated by carriage return and line feed; a line that is missing is empty.
/// @return the number of lines
KORUTIL_API int KORUTIL_CALL profLoadEdit(HWND editWindow, const char* section, UINT_PTR selector,
                                          HINSTANCE module);

/// The same into a buffer, which is not bounded: 257 characters for each of the section's lines ("Lines"),
/// and one more, are always enough. Null only counts.
/// @return the number of lines
KORUTIL_API int KORUTIL_CALL profLoadToBuf(char* buffer, const char* section, UINT_PTR selector,
                                           HINSTANCE module);

/// What a callback of appEnumProfileKeys receives: twelve pointer-sized words (48 bytes on 32 bits), valid
/// during the call.
struct ProfileEnumRecord {
    const char* section;   ///< the section's name
    const char* key;       ///< the key's full name
    UINT_PTR selector;     ///< where the key is: 1, 2 or the address of the file's name
    const char* prefix;    ///< the prefix asked for
    const char* keyTail;   ///< the key's name behind the prefix, within `key`
    UINT_PTR index;        ///< running number of the matching keys, from 1
    UINT_PTR userData;     ///< the caller's
    UINT_PTR reserved[5];  ///< 0
};

static_assert(sizeof(ProfileEnumRecord) == 12 * sizeof(void*));
static_assert(offsetof(ProfileEnumRecord, keyTail) == 4 * sizeof(void*));
static_assert(sizeof(void*) != 4 || sizeof(ProfileEnumRecord) == 48);

/// @return non-zero to go on, zero to stop
using ProfileEnumCallback = int(KORUTIL_CALL*)(ProfileEnumRecord* record);

/// Visits the keys of a section that begin with a prefix, in the file's order. The two profiles are never
/// mixed: when both are asked for, the user profile wins if it has any matching key (or the walk cannot be
/// made), else the application profile is walked. All names are read before the first callback, which may
/// therefore write; of a section whose names take more than 61438 characters, terminators included, only
/// those that fit whole are visited.
/// @param prefix    compared without regard to case; text or string number; null for all keys
/// @param userData  handed to the callback
/// @return 1; 0 when a callback stopped the walk, the section is null or empty, a name cannot be loaded, or
///         memory is short (which is shown: `OutOfMemoryError`)
KORUTIL_API int KORUTIL_CALL appEnumProfileKeys(const char* section, const char* prefix,
                                                ProfileEnumCallback callback, UINT_PTR userData,
                                                UINT_PTR selector, HINSTANCE module);

// ------------------------------------------------------------------------------------------------- writing
//
// A line feed ends a line of the file. Texts are written as they stand, so what follows a lone line feed in a
// value, or in a line of an edit control, becomes a line of the file of its own: it reads back as a key or a
// section if it looks like one, else not at all, and the value ends in front of it.
//
// Windows takes names and values of at most 32766 characters: with a longer one nothing is written, and the
// result is 0. Natively they have no limit of their own.
//
// A write to both profiles writes the user profile first, and the application profile only when that
// succeeded; when both are the same file, it is written once. The functions return non-zero when everything
// was written; a selector below 0x10000 with neither bit 0 nor bit 1 writes nothing and gives 1.

/// Writes a text as it stands.
/// @param key    null removes the whole section
/// @param value  null removes the key
KORUTIL_API BOOL KORUTIL_CALL appWriteProfileString(const char* section, const char* key, const char* value,
                                                    UINT_PTR selector, HINSTANCE module);

/// Writes a decimal integer.
KORUTIL_API BOOL KORUTIL_CALL appWriteProfileInt(const char* section, const char* key, int value,
                                                 UINT_PTR selector, HINSTANCE module);

/// Writes a double with up to 15 significant digits: "5", "0.1", "1e+020"; "1.#INF" and "1.#QNAN" for what is
/// no number, which the reads take back.
KORUTIL_API BOOL KORUTIL_CALL appWriteProfileDouble(const char* section, const char* key, double value,
                                                    UINT_PTR selector, HINSTANCE module);

/// Writes doubles, each as appWriteProfileDouble does, separated by commas without blanks.
/// @param count  0 or less writes an empty value
KORUTIL_API BOOL KORUTIL_CALL appWriteProfileDblArray(const char* section, const char* key,
                                                      const double* values, int count, UINT_PTR selector,
                                                      HINSTANCE module);

/// Writes a block of bytes, two upper-case hexadecimal digits for each.
KORUTIL_API BOOL KORUTIL_CALL appWriteProfileStruct(const char* section, const char* key, const void* data,
                                                    DWORD size, UINT_PTR selector, HINSTANCE module);

/// Writes a path relative to the folder of the file that it is written to (`sysCvtToRelPath`). The paths of
/// a list, separated by ";", are made absolute instead; that is required.
/// @param value  at most 32767 characters; null removes the key
/// @return 0 also when a path cannot be converted; the file at hand is then not written
KORUTIL_API BOOL KORUTIL_CALL appWriteProfilePaths(const char* section, const char* key, const char* value,
                                                   UINT_PTR selector, HINSTANCE module);

/// Formats a text, cut to 259 characters, and writes it.
/// @param format     text or string number; conversions as `printf`'s, `l` is 32 bits on every target
/// @param arguments  argument list (KORUTIL_ARGUMENTS, KorArgumentList)
/// @return the formatter's result: the length, whether or not it could be written; -1 when `format` is null;
///         0 when it cannot be loaded. A format that is not valid gives 0 and writes an empty value
KORUTIL_API int KORUTIL_CALL appVPrintProfileString(const char* section, const char* key, UINT_PTR selector,
                                                    const char* format, void* arguments, HINSTANCE module);

/// The same with the arguments in place, and a null module.
KORUTIL_API int appPrintProfileString(const char* section, const char* key, UINT_PTR selector,
                                      const char* format, ...);

/// Stores the text of an edit control in a section of its own, in place of all that it held; in one step, so
/// that the section is whole at any moment (on Windows line by line from 65535 characters on). A line ends at
/// a carriage return; the character behind that is taken for its line feed. A line has at most 254 characters
/// (a last one of two may make it 255): with more, it is stored cut, and the rest of the text is not stored;
/// that is required.
/// @return the number of lines stored; 0, with nothing written, when the control says that it is not modified
///         (EM_GETMODIFY), and 0 when the file cannot be written or memory is short
KORUTIL_API int KORUTIL_CALL profSaveEdit(HWND editWindow, const char* section, UINT_PTR selector,
                                          HINSTANCE module);

// ------------------------------------------------------------------------------------ bytes as hexadecimal

/// Writes bytes as two upper-case hexadecimal digits each, in memory order, terminated.
/// @param textSize  of `text`
/// @return 1; 0, with nothing written, when `textSize` is below 2 x `size` + 1
KORUTIL_API BOOL KORUTIL_CALL utlStructToString(const void* data, DWORD size, char* text, DWORD textSize);

/// Reads them back.
/// @param length  of `text`; an odd last character does not count
/// @return 1; 0, with nothing written, unless `length` / 2 is `size`; 0 at the first character that is not
///         "0" to "9" or "A" to "F": the bytes in front of it are written
KORUTIL_API BOOL KORUTIL_CALL utlStringToStruct(const char* text, DWORD length, void* data, DWORD size);
