#pragma once
/// Paths: what counts as absolute, how paths are joined, taken apart, shortened to a relative form and made
/// absolute again (lists of paths too), which names the system reserves, and how a path is tidied for
/// display. Nothing in this header looks at a disk except where a function says so.
///
/// A path is a text of the ANSI code page of at most 260 bytes with its terminator; "character" means a byte
/// where a length is meant. The separator is the backslash. All functions know double-byte characters: a
/// second byte that looks like a backslash is none (under code page 65001 they know UTF-8 sequences). A drive
/// letter is one of A to Z, a to z. A path buffer holds 260 bytes unless a function says otherwise.
///
/// Results are 1 and 0. A function that gives 0 leaves its buffer as it was, except where said; a null path
/// gives 0. The functions keep no state and may be used in any thread.

#include "korutil/platform.h"

/// Room of a path with its terminator.
inline constexpr DWORD kPathRoom = 260;

// ---- What a path is

/// @return 1 for "X:\..." and for "\\..."
KORUTIL_API int KORUTIL_CALL sysIsAbsPath(const char* path);

/// @return 1 for "\\..."
KORUTIL_API int KORUTIL_CALL sysIsUNCPath(const char* path);

/// @return 1 for exactly "\\", "X:" and "X:\"
KORUTIL_API int KORUTIL_CALL sysIsRootDir(const char* path);

/// Whether a component of the path is a name that the system keeps for a device, with or without an
/// extension, in any case: con, prn, ept, nul, aux, clock$, com1 to com4, lpt1 to lpt9. Components are
/// separated by backslashes; the first 259 bytes are looked at.
KORUTIL_API int KORUTIL_CALL sysIsReservedFileName(const char* path);

/// Whether a character may stand in a file name: all but `"`, `*`, `/`, `:`, `;`, `<`, `>`, `?`, the
/// backslash and `|`, control characters included.
/// @param character  a byte; of a double-byte character both, the first one in the upper byte
KORUTIL_API int KORUTIL_CALL sysIsValidFileNameChar(UINT character);

/// @return 1 when the path holds `*` or `?` (behind a leading "\\?\")
KORUTIL_API int KORUTIL_CALL sysContainsWildCards(const char* path);

/// Finds the extension: the last dot, when no backslash stands behind it.
/// @param extension  receives where the dot stands, else null
/// @return 1, or 0 when there is none
KORUTIL_API int KORUTIL_CALL sysGetFileExt(const char* path, const char** extension);

// ---- Changing a path in place

/// Appends a backslash unless the path is empty or ends in one: room for one byte more. @return 1
KORUTIL_API int KORUTIL_CALL sysAppendBackslash(char* path);

/// Removes one trailing backslash, of a root too. @return 1
KORUTIL_API int KORUTIL_CALL sysDeleteBackslash(char* path);

/// The normal form of a folder, for dialogs and for the loader of modules: a root gets a trailing backslash,
/// every other folder loses one. The buffer has room for one byte more. @return 1
KORUTIL_API int KORUTIL_CALL sysMakeCommdlgDir(char* folder);

/// Appends a text, as it is. When both together have 260 characters or more, the user is warned first
/// (`sysPathTooLong`) and the text is appended all the same: the buffer must hold the join. @return 1
KORUTIL_API int KORUTIL_CALL sysConcatPath(char* path, const char* text);

/// Warns the user that a path is too long: message 10006, exclamation icon.
/// @param limit  number of characters that a path may not reach
/// @return what utlWarning returns: the button pressed
KORUTIL_API int KORUTIL_CALL sysPathTooLong(const char* path, DWORD limit);

/// Gives short names in capitals a readable case: `C:\WINNT\FILE.DAT` becomes `C:\Winnt\File.dat`. A
/// component (it ends at a backslash, a slash, a colon or the end) is changed when it has no lower-case
/// character, 1 to 12 bytes, fewer than 9 before its last dot and at most 3 behind it; what stands before a
/// colon is never changed.
/// @param size  not used
/// @return 1
KORUTIL_API int KORUTIL_CALL sysBeautifyPathname(char* path, DWORD size);

/// Makes a text one that a folder can have: slashes become backslashes, repeated backslashes one (but for
/// those of "\\server" at the start), characters that no name may hold and control characters become `_`,
/// blanks and dots at the end of a component go away (but "." and ".." stay), a reserved name gets a `_` in
/// front. The result has the form of `sysMakeCommdlgDir`.
/// @param size  of the buffer
/// @return 1; 0 when nothing is left, or the result does not fit the buffer or has 260 characters or more
KORUTIL_API int KORUTIL_CALL sysMakeValidDirPath(char* path, DWORD size);

// ---- Taking apart and putting together

/// Takes a path apart at its first colon (behind one character), its last separator (a backslash or a slash)
/// and the last dot behind that; the four pieces laid end to end are the path. Any buffer may be null.
/// @param drive      receives "X:"; empty for network paths
/// @param folder     receives the folder with its last separator
/// @param name       receives the name without extension
/// @param extension  receives the extension with its dot
/// @return 1; 0 when a piece does not fit its buffer: none is then written
KORUTIL_API int KORUTIL_CALL sysSplitPathEx(const char* path, char* drive, DWORD driveSize, char* folder,
                                            DWORD folderSize, char* name, DWORD nameSize, char* extension,
                                            DWORD extensionSize);

/// Puts a path together: a drive is its first character and a colon, a folder that does not end in a
/// separator gets a backslash, an extension without a dot gets one. Every piece may be null or empty and may
/// lie in the buffer.
/// @param size  of the buffer
/// @return 1; 0 when the path does not fit
KORUTIL_API int KORUTIL_CALL sysMakePathEx(char* path, DWORD size, const char* drive, const char* folder,
                                           const char* name, const char* extension);

/// Makes a path absolute and plain by the process's current folder: as the system's GetFullPathNameA.
/// @param size  of the buffer; `path` may lie in it
/// @return 1; 0, with the last error, when the path is empty, cannot be made full or does not fit
KORUTIL_API int KORUTIL_CALL sysFullPath(char* buffer, const char* path, DWORD size);

// ---- Relative and absolute

/// The relative form of a path: `c:\a\b\c.txt` against `c:\a\x\y` is `..\b\c.txt`. A path on another drive, a
/// network path against a drive (or the reverse), a path that is relative already and one whose relative form
/// would be too long stay as they are (1). Letter case does not count. What both have in common is counted in
/// whole components, a base that is part of the path included: the base itself becomes ".".
///
/// A text with a `;` is a list, and every path of it is made ABSOLUTE, exactly as by `sysCvtToAbsPath`.
/// @param path  the path, or a list of paths separated by `;`
/// @param base  the full name of a file; only its folder counts. Null: the host executable
/// @param size  of the buffer, used for a list; for a path the buffer holds 260 bytes
/// @return for a path 1, or 0 (an empty base, one that is not absolute); for a list as `sysCvtToAbsPath`
KORUTIL_API int KORUTIL_CALL sysCvtToRelPath(char* path, const char* base, DWORD size);

/// The absolute form of a path, passed through `sysBeautifyPathname`: `..\d.txt` against `c:\a\b\file` is
/// `c:\a\d.txt`; a path that begins with one backslash gets the base's drive; "." is the base's folder with a
/// backslash. Only "..\" counts as a step up, wherever it stands: all that stands before the last one is
/// dropped.
/// @param path  the path, or a list of paths separated by `;`: those that are empty, have 260 characters or
///              more or cannot be made absolute are left out
/// @param base  the full name of a file, as above
/// @param size  of the buffer, used for a list; for a path the buffer holds 260 bytes
/// @return for a path 1, or 0 (an empty path; an empty, relative or too short base; a result of 260 or more
///         characters). For a list the number of paths in the new one; 0, and the list as it was, when that
///         does not fit. A list of which no path is left becomes empty, and the result is 0
KORUTIL_API int KORUTIL_CALL sysCvtToAbsPath(char* path, const char* base, DWORD size);

/// Expands a path that begins with a symbolic folder, `<Name>\...` or `%Name%\...`: the value Name of the
/// registry key "Directories" of the installation (see korutil/registry.h, key 3) takes its place.
/// @param size  of the buffer
/// @return 1 when the path was expanded or has no symbolic folder; 0 when the folder's closing character, the
///         key or the value is missing, or the result does not fit
KORUTIL_API int KORUTIL_CALL sysExpandPath(char* path, DWORD size);
