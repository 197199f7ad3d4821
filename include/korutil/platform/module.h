#pragma once
/// Modules (dynamic libraries and resource-only libraries), their resources and version information, the
/// system's message texts and the debugger's output, with the system's names, results and error codes.
///
/// On Windows all of it is the system's own. Elsewhere:
/// - A module is a shared object of the process. `NAME.dll` also finds `libNAME.so`; a name without extension
///   gets `.dll`, a name that ends in a point is taken as it stands. The base name of a module, by which it
///   is looked up without regard to case, drops a leading `lib` and everything from `.so`. `kernel32`,
///   `user32`, `advapi32` and `ole32` are our own platform library.
/// - A library given without a folder is looked for in the folder of the host executable, the current folder,
///   the system folder, the Windows folder and the folders of PATH.
/// - A resource-only library is a file in portable-executable form without entry point and without imports.
/// It
///   is read as data: nothing in it is ever executed, so GetProcAddress finds nothing there; read its version
///   with GetFileVersionInfoA. One that has code is refused with ERROR_BAD_EXE_FORMAT unless it is loaded as
///   a data file. A shared object is not loaded as a data file, unless the process has it already.
/// - The resources of a shared object are its exported symbol `korResourceTable`.
/// - Whatever a library's bytes say, nothing outside them is read; damaged resources are just not found.
///
/// All functions may be called from several threads. A module handle, and whatever came from its resources,
/// is valid until the last FreeLibrary of the module.

#include "korutil/platform.h"

#ifndef _WIN32

// ------------------------------------------------------------------------------------------------- modules

inline constexpr DWORD DONT_RESOLVE_DLL_REFERENCES = 1;
inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 2;
inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;

inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 1;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;

inline constexpr UINT SEM_FAILCRITICALERRORS = 0x0001;
inline constexpr UINT SEM_NOGPFAULTERRORBOX = 0x0002;
inline constexpr UINT SEM_NOALIGNMENTFAULTEXCEPT = 0x0004;
inline constexpr UINT SEM_NOOPENFILEERRORBOX = 0x8000;

/// Loads a library, or counts one more reference to it.
/// @return the module; null with last error 126 (not found), 193 (not a library that can be loaded here)
KORPLATFORM_API HMODULE WINAPI LoadLibraryA(LPCSTR name);

/// @param reserved  null
/// @param flags  LOAD_LIBRARY_AS_DATAFILE or DONT_RESOLVE_DLL_REFERENCES: the file's resources only, code or
/// not;
///               LOAD_WITH_ALTERED_SEARCH_PATH: accepted
/// @return as LoadLibraryA; with a reserved that is not null, null and last error 87. A data file that is
///         missing gives 2, a folder 5, an empty name 87
KORPLATFORM_API HMODULE WINAPI LoadLibraryExA(LPCSTR name, HANDLE reserved, DWORD flags);

/// Gives one reference back; the last one unloads the module.
/// @return FALSE with last error 126 when there is no such module
KORPLATFORM_API BOOL WINAPI FreeLibrary(HMODULE module);

/// @param name  base name or path of a loaded module; null for the host executable
/// @return the module, no reference counted; null with last error 126
KORPLATFORM_API HMODULE WINAPI GetModuleHandleA(LPCSTR name);

/// @param flags   FROM_ADDRESS: name is an address inside the module; UNCHANGED_REFCOUNT: no reference is
/// counted;
///                PIN: the module stays until the process ends (not together with UNCHANGED_REFCOUNT)
/// @param module  receives the module, null on failure
/// @return FALSE with last error 126 (no such module) or 87 (flags, no place for the result)
KORPLATFORM_API BOOL WINAPI GetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module);

/// @return the length of the module's full path, without its terminator; when the path does not fit, it is
/// cut
///         to size - 1 characters and terminated, size is returned and the last error is 122; 0 with last
///         error 126 when there is no such module
KORPLATFORM_API DWORD WINAPI GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);

/// @param name  name of an exported function; ordinals are not known here
/// @return the function; null with last error 127 (no such function) or 126 (no such module)
KORPLATFORM_API FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);

/// Looks for a file in a list of folders.
/// @param path       folders separated by ";", null for the search path of libraries; not used when the file
///                   name is absolute or starts with "." or ".." as a folder
/// @param extension  with its point; appended when the file name has none. May be null
/// @param part       receives the address of the file name in the buffer, null when it names a folder. May be
/// null
/// @return length of the path found, without terminator; the size needed with it when the buffer is too
/// small;
///         0 with last error 2 when there is no such file
KORPLATFORM_API DWORD WINAPI SearchPathA(LPCSTR path, LPCSTR file, LPCSTR extension, DWORD size, LPSTR buffer,
                                         LPSTR* part);

/// Sets which errors the system would show in boxes of its own (there are none here: the value is only kept).
/// @return the previous mode
KORPLATFORM_API UINT WINAPI SetErrorMode(UINT mode);
KORPLATFORM_API UINT WINAPI GetErrorMode();

// ----------------------------------------------------------------------------------------------- resources

#define RT_CURSOR MAKEINTRESOURCEA(1)
#define RT_DIALOG MAKEINTRESOURCEA(5)
#define RT_STRING MAKEINTRESOURCEA(6)
#define RT_RCDATA MAKEINTRESOURCEA(10)
#define RT_GROUP_CURSOR MAKEINTRESOURCEA(12)
#define RT_VERSION MAKEINTRESOURCEA(16)

using ENUMRESNAMEPROCA = BOOL(CALLBACK*)(HMODULE, LPCSTR type, LPSTR name, LONG_PTR parameter);
using ENUMRESLANGPROCA = BOOL(CALLBACK*)(HMODULE, LPCSTR type, LPCSTR name, WORD language,
                                         LONG_PTR parameter);

/// Finds a resource; a null module is the host executable. Type and name are numbers below 0x10000
/// (MAKEINTRESOURCEA), texts without regard to case, or texts "#123" that stand for numbers. Of several
/// languages the neutral one is taken, else the user's, else English, else the first.
/// @return null with last error 1812 (the module has no resources), 1813 (type), 1814 (name)
KORPLATFORM_API HRSRC WINAPI FindResourceA(HMODULE module, LPCSTR name, LPCSTR type);

/// As FindResourceA, for a language: that one, else the same language without a country, else the neutral one
/// (and, when 0 is asked for, on as FindResourceA). @return also null with last error 1815 (language)
KORPLATFORM_API HRSRC WINAPI FindResourceExA(HMODULE module, LPCSTR type, LPCSTR name, WORD language);

/// @return a handle on the resource's bytes, null with last error 1812 when it is not one of the module's
KORPLATFORM_API HGLOBAL WINAPI LoadResource(HMODULE module, HRSRC resource);
/// @return the resource's bytes, SizeofResource of them, valid while the module is; null for a null handle
KORPLATFORM_API LPVOID WINAPI LockResource(HGLOBAL data);
/// @return size in bytes, 0 with last error 1812 when the resource is not one of the module's
KORPLATFORM_API DWORD WINAPI SizeofResource(HMODULE module, HRSRC resource);
/// Does nothing. @return FALSE, as the system's does
KORPLATFORM_API BOOL WINAPI FreeResource(HGLOBAL data);

/// Calls a function for each name of a type (for each language of a resource) until it returns FALSE.
/// @return FALSE with last error 1812, 1813 or 1814 when there is none, or when the function returned FALSE
KORPLATFORM_API BOOL WINAPI EnumResourceNamesA(HMODULE module, LPCSTR type, ENUMRESNAMEPROCA function,
                                               LONG_PTR parameter);
KORPLATFORM_API BOOL WINAPI EnumResourceLanguagesA(HMODULE module, LPCSTR type, LPCSTR name,
                                                   ENUMRESLANGPROCA function, LONG_PTR parameter);

/// Loads a string resource in the ANSI code page, cut (never within a character) to size - 1 bytes,
/// terminated.
/// @return bytes stored without the terminator; 0 when there is no such string, with the buffer an empty text
KORPLATFORM_API int WINAPI LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int size);

// ------------------------------------------------------------------------------------- version information

inline constexpr DWORD VS_FFI_SIGNATURE = 0xFEEF04BD;

/// The fixed block of a version resource ("\\" of VerQueryValueA).
struct VS_FIXEDFILEINFO {
    DWORD dwSignature;
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};

/// @param ignored  set to 0 when not null
/// @return size of the buffer for GetFileVersionInfoA; 0 with last error 1812 to 1814 (no version resource)
/// or
///         that of opening the library
KORPLATFORM_API DWORD WINAPI GetFileVersionInfoSizeA(LPCSTR file, LPDWORD ignored);
/// Reads a library's version resource into a buffer. @return FALSE with last error, 122 for a buffer too
/// small
KORPLATFORM_API BOOL WINAPI GetFileVersionInfoA(LPCSTR file, DWORD ignored, DWORD size, LPVOID data);
/// Finds a value in what GetFileVersionInfoA read.
/// @param path    "\\" for the VS_FIXEDFILEINFO, "\\VarFileInfo\\Translation" for the WORD pairs of language
/// and
///                code page, "\\StringFileInfo\\LLLLCCCC\\NAME" for a text
/// @param value   receives the address of the value in the buffer; a text is in the ANSI code page,
/// terminated
/// @param length  receives bytes, or characters with the terminator for a text
KORPLATFORM_API BOOL WINAPI VerQueryValueA(LPCVOID data, LPCSTR path, LPVOID* value, UINT* length);

// ------------------------------------------------------------------------------------------- message texts

inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x0100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x0200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_STRING = 0x0400;
inline constexpr DWORD FORMAT_MESSAGE_FROM_HMODULE = 0x0800;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;
inline constexpr DWORD FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x2000;
inline constexpr DWORD FORMAT_MESSAGE_MAX_WIDTH_MASK = 0x00FF;

/// Makes a message text from the system's table (every code that this platform sets) or from a given string.
/// Inserts `%1` to `%99`, with an optional printf form `%1!08lx!` (s, S, c, d, i, u, x, X, with l, h or I64),
/// `%n` `%r` `%t` and `%0`, which ends the text, are understood; any other character behind a `%` stands for
/// itself. Natively the message table of a module is not read: FROM_HMODULE alone fails with 317.
/// @param flags      one source, and ALLOCATE_BUFFER: buffer is the address of a pointer that receives a
/// block
///                   for LocalFree; the low byte is the line width (0 keeps line breaks, 255 removes them)
/// @param arguments  a KORUTIL_ARGUMENTS list, or with ARGUMENT_ARRAY an array of DWORD_PTR
/// @return characters without terminator; 0 with last error 317 (no such message), 122 (buffer too small),
///         87 (bad flags or form)
KORPLATFORM_API DWORD WINAPI FormatMessageA(DWORD flags, LPCVOID source, DWORD message, DWORD language,
                                            LPSTR buffer, DWORD size, va_list* arguments);

/// Hands a text to the debugger: to standard error when the environment has KORUTIL_DEBUG=1, else nowhere.
KORPLATFORM_API void WINAPI OutputDebugStringA(LPCSTR text);

#endif
