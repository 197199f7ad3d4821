#pragma once
/// Files that the user chooses: the description of a kind of files, the dialog that opens or saves one of
/// them, the list of those in the kind's folder, and the pieces of a dialog's selection.
///
/// The dialog is the system's on Windows. Natively it is a question on the terminal, asked on standard error
/// and answered on standard input; where one of the two is no terminal, it is answered as cancelled. The
/// answer may be a native path (`/home/x/a.tif`), a platform path (`Z:\home\x\a.tif`), or a name in the
/// description's folder.

#include "korutil/platform.h"

/// Loads from, or saves to, the file that the user chose. It tells the user itself when it fails.
/// @param fileName  full path
/// @param user      the description's value
using FileIoFunction = void(KORUTIL_CALL*)(const char* fileName, UINT_PTR user);

/// A kind of files. Each text is a text, or the number (below 0x10000) of a string resource of `instance`
/// (at most 259 characters); null is none.
struct FileIoDescription {
    HINSTANCE instance;       ///< module of the texts given by number; null for the library's own texts
    const char* folder;       ///< where the files are; null for the user's root folder (appGetUserRootDir)
    const char* subfolder;    ///< below it
    const char* extension;    ///< without dot; also added to a name that the user gives none
    const char* filter;       ///< "Images|*.tif;*.tiff|All files|*.*"; null for all with the extension
    const char* defaultName;  ///< name offered first
    FileIoFunction load;
    FileIoFunction save;
    UINT_PTR user;  ///< handed to both functions
};
static_assert(sizeof(FileIoDescription) == 9 * sizeof(void*));

inline constexpr int kFileIoLoad = 0;  ///< modes of the dialog
inline constexpr int kFileIoSave = 1;

inline constexpr WORD kFileIoCancelled = 2;  ///< results of the dialog
inline constexpr WORD kFileIoSaved = 4;
inline constexpr WORD kFileIoLoaded = 8;

/// Runs the dialog. When the user confirms, the description's function for the mode is called with the chosen
/// path (a null one is not called). Loading takes a file that exists; before a file is overwritten, the user
/// is asked. The current folder stays.
/// @param mode         kFileIoLoad or kFileIoSave
/// @param defaultName  text or number, in place of the description's; null for that
/// @return kFileIoLoaded, kFileIoSaved or kFileIoCancelled; 0 for a null description, any other mode, and
/// when
///         the dialog could not be shown
KORUTIL_API WORD KORUTIL_CALL io_File(const FileIoDescription* description, int mode,
                                      const char* defaultName);

/// The same, and tells the path.
/// @param buffer  receives the path when a file was loaded or saved, empty when it does not fit; else
/// unchanged. May be null
/// @param size    of the buffer
KORUTIL_API WORD KORUTIL_CALL io_FileEx(const FileIoDescription* description, int mode,
                                        const char* defaultName, char* buffer, DWORD size);

/// Lists the files with the description's extension in its folder, without their extensions, as
/// `sysBeautifyPathname` writes them. Folders and hidden, system, temporary and offline files are left out.
/// With an empty extension these are the files without a dot in their names; with wild cards in it, what the
/// system finds.
/// @return an arm array of texts (each an arm array of bytes with element size 1 and tag 3), tagged
///         `ARM_TAG_OF_ARRAYS`: walk it up to the first null entry, which is always there, and free it by
///         `armFreeReset`. Null when nothing was found; when memory is short, what was found until then
KORUTIL_API char** KORUTIL_CALL io_GetListOfFiles(const FileIoDescription* description);

/// Takes one entry's patterns ("*.tif;*.tiff") out of the filter of a file dialog: pairs of a name and its
/// patterns, separated by `|`, or each ended by a zero with one more at the end (the dialog's own form: a
/// filter without `|` is taken for that one).
/// @param index   of the entry, from 1, as the dialog tells it
/// @param buffer  unchanged on failure
/// @return 1; 0 when there is no such entry or its patterns do not fit
KORUTIL_API int KORUTIL_CALL sysGetSelectedFilter(const char* filter, DWORD index, char* buffer, DWORD size);

/// Takes one file's full path out of what a dialog for several files leaves: one full path, or a folder and
/// names, each ended by a zero with one more at the end.
/// @param index   of the file, from 0
/// @param buffer  unchanged on failure
/// @return 1; 0 when there is no such file or its path does not fit
KORUTIL_API int KORUTIL_CALL sysGetSelectedFileName(const char* selection, DWORD index, char* buffer,
                                                    DWORD size);
