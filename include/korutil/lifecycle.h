#pragma once
/// The life of the library in its host: start and end, the module that texts come from, the shared drawing
/// objects, the size of the host's virtual-memory reserve, and loading of modules relative to the host's own
/// folder.
///
/// A host loads the library, calls `utlInitDLL1` and `utlInitDLL2` once, uses it from its user-interface
/// thread, and calls `utlExitDLL` before it unloads it. Warnings that are shown before `utlInitDLL1` or after
/// `utlExitDLL` go straight to the default display procedure. Loading and unloading do only what is safe
/// while the system's loader works: the drawing objects, the default font among them, are made on first use.
/// All state is process-wide and unguarded.

#include "korutil/platform.h"
#include "korutil/virtual_query.h"

/// First start call: keeps the product caption, loads the library's cursor (resource 105), registers the
/// library's window classes ("KorRegDlg32", "KorRegDlg"; a class that is still registered from an earlier
/// start is kept) and the host hooks 14041 (no default handler) and 14061 (default handler
/// `utlShowWarningProc`).
/// @param caption  caption of every warning from now on, kept by pointer: it must outlive the library's use;
///                 null brings back the first caption, "Lumetra"
/// @return 1; 0 when a step failed: the steps before it stay done, those after it are not tried
KORUTIL_API BOOL KORUTIL_CALL utlInitDLL1(const char* caption);

/// Second start call.
/// @param mainWindow  the host's main window, to which dialogs are placed; kept as it is
/// @return 1
KORUTIL_API BOOL KORUTIL_CALL utlInitDLL2(HWND mainWindow);

/// Ends the use of the library: removes the hooks and the window classes, forgets the main window, releases
/// the drawing objects. The caption and the resource module stay. The library may be started again.
/// @return 1 when every drawing object was released
KORUTIL_API BOOL KORUTIL_CALL utlExitDLL();

/// The module from which the library takes its texts.
/// @return the module set last; null until one was set (texts then come from the library itself)
KORUTIL_API HINSTANCE KORUTIL_CALL utlGetResourceHandle();

/// Sets the module from which the library takes its texts. It is not checked and not kept loaded.
/// @param module  null: the library itself
/// @return the module set before, null for none
KORUTIL_API HINSTANCE KORUTIL_CALL utlSetResourceHandle(HINSTANCE module);

/// A drawing object that all parts of the application share; the caller must not delete it. It is made on
/// first use and lives until `utlExitDLL`; asked for later, it is made anew.
///
/// The default font is the one that the setting "DftFont" names (section "KorUtil", user and then application
/// profile; see korutil/profile.h): a face name, a comma and the height of the characters in pixels, 4 to
/// 200, as in "Arial,12"; without such a setting the system's.
/// @param index  fonts: 0 default, 1 proportional, 2 fixed, 3 system, 4 fixed system, 5 OEM characters,
///               6 device; brushes: 7 white, 8 light grey, 9 grey, 10 dark grey, 11 black, 12 none; pens:
///               13 white, 14 black, 15 none; 16 default palette; 17 brush of the device context's colour
/// @return null when `index` is 18 or more, or the system has no such object
KORUTIL_API HGDIOBJ KORUTIL_CALL utlGetStockObject(WORD index);

/// The version of the resource module that this library needs.
/// @return 0x10002: major 1 in the high word, minor 2 in the low word
KORUTIL_API DWORD KORUTIL_CALL RequiredResourceDllVersion();

/// Brings the floating-point unit of the calling thread to its default state: all traps masked, no exception
/// pending, rounding to nearest, full precision.
KORUTIL_API void KORUTIL_CALL appResetFP();

/// The size of the host's virtual-memory reserve: what the host's settings hold (section "System", key
/// "Reserve-Memory", user and then application profile; see korutil/profile.h), read when it is first asked
/// for and kept for the life of the process.
/// @return bytes; 20000000 when nothing is stored, never below 10000000. A stored value is taken as unsigned
KORUTIL_API DWORD KORUTIL_CALL appGetReserveSizeForVirtualAlloc();

/// Sets the size of the reserve for this process, and stores it for later ones in the user profile.
/// @param bytes  anything below 10000000 counts as 10000000
/// @return non-zero when the value was stored; 0 when it could not be: it then holds for this process only
KORUTIL_API BOOL KORUTIL_CALL appSetReserveSizeForVirtualAlloc(DWORD bytes);

/// Options of appLoadLibrary.
inline constexpr DWORD kLoadFromSystemFolder = 1;
inline constexpr DWORD kLoadFromWindowsFolder = 2;
inline constexpr DWORD kLoadByFramework = 4;  // the framework's loader, which is the plain one here
inline constexpr DWORD kLoadWithoutLog = 8;

/// Loads a module. A name that is not an absolute path is looked up with the host executable's folder (or the
/// one that `options` chooses) as the current folder; that change is visible to every thread until the call
/// ends. The current folder and the error mode are restored. Both ends of the call are logged (`dbgPrintLog`,
/// flag 32).
/// @param name       of the module, at most 259 characters
/// @param errorMode  the system's error mode (SEM_...) during the load; 0 keeps the current one
/// @param loadFlags  0: plain load; else flags of the extended loader; exactly 2 (data file) is not logged
/// @param options    kLoad... combined; when both folders are asked for, it is the system folder
/// @return the module; null on failure, a null name included. The last error is the loader's in both cases
KORUTIL_API HMODULE KORUTIL_CALL appLoadLibrary(const char* name, UINT errorMode, DWORD loadFlags,
                                                DWORD options);

/// Searches a file as the system's `SearchPathA` does, with the host executable's folder as the current
/// folder for the duration of the call.
/// @param path       folders to search, separated by ';'; null: the system's search order
/// @param name       of the file
/// @param extension  added when `name` has none, dot included; may be null
/// @param size       of `buffer` in characters
/// @param buffer     receives the full path
/// @param filePart   receives the address of the name within `buffer`; may be null
/// @return length of the path without its end; the needed size when the buffer is too short; 0 when nothing
///         was found. The last error is the search's
KORUTIL_API DWORD KORUTIL_CALL appSearchPath(const char* path, const char* name, const char* extension,
                                             DWORD size, char* buffer, char** filePart);
