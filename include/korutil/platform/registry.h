#pragma once
/// The registry, with the system's names, results and error codes.
///
/// On Windows all of it is the system's own. Elsewhere it is read from text files in the system's export
/// format, one for each root (`HKEY_LOCAL_MACHINE.reg`, `HKEY_CURRENT_USER.reg`, `HKEY_CLASSES_ROOT.reg`,
/// `HKEY_USERS.reg`), in the folder that the environment's KORUTIL_REGISTRY names (a native path), else
/// `registry` below KORUTIL_HOME; see docs/format-registry-text.md. A root without a file has no keys. The
/// registry cannot be written natively.
///
/// A file that has changed is read again by the next call. Line and reason of everything that a file says and
/// that cannot be read go to the debugger once for each state of the file (OutputDebugStringA;
/// KORUTIL_DEBUG=1 shows it); the rest is read.
///
/// All functions may be called from several threads.

#include "korutil/platform.h"

#ifndef _WIN32

struct HKEY__;
using HKEY = HKEY__*;
using PHKEY = HKEY*;
using REGSAM = DWORD;
using LSTATUS = LONG;

#define HKEY_CLASSES_ROOT (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(0x80000000))))
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(0x80000001))))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(0x80000002))))
#define HKEY_USERS (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(0x80000003))))

inline constexpr DWORD KEY_QUERY_VALUE = 0x0001;
inline constexpr DWORD KEY_SET_VALUE = 0x0002;
inline constexpr DWORD KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr DWORD KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr DWORD KEY_NOTIFY = 0x0010;
inline constexpr DWORD KEY_CREATE_LINK = 0x0020;
inline constexpr DWORD KEY_WOW64_64KEY = 0x0100;
inline constexpr DWORD KEY_WOW64_32KEY = 0x0200;
inline constexpr DWORD KEY_READ = 0x20019;
inline constexpr DWORD KEY_WRITE = 0x20006;
inline constexpr DWORD KEY_EXECUTE = KEY_READ;
inline constexpr DWORD KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD MAXIMUM_ALLOWED = 0x02000000;

inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
inline constexpr DWORD REG_LINK = 6;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

inline constexpr DWORD ERROR_KEY_DELETED = 1018;

/// Opens a key.
/// @param key      an open key or a root
/// @param subKey   path below it, separated by backslashes, without regard to case; null or empty: the key
///                 itself
/// @param options  not looked at
/// @param access   what the handle is for; anything that writes is refused
/// @param result   receives the handle, to be closed with RegCloseKey; null on failure
/// @return ERROR_SUCCESS; 2 no such key, 5 the access writes, or the root's file may not be read, 6 `key` is
///         not open, 8 memory is short or the file is too large (2 GB), 87 `result` is null, 161 the path
///         begins with a backslash. The last error is not touched
KORPLATFORM_API LSTATUS WINAPI RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access,
                                             PHKEY result);

/// Reads a value. Texts are in the ANSI code page.
/// @param key       an open key or a root
/// @param name      without regard to case; null or empty: the default value
/// @param reserved  null
/// @param type      receives the value's type (REG_...); may be null
/// @param data      receives the value's bytes; null to ask for their number
/// @param size      size of `data`, in bytes; receives the number of bytes that the value has. May be null
///                  when `data` is null
/// @return ERROR_SUCCESS; 2 no such value, 5 the handle was not opened for KEY_QUERY_VALUE, 6 `key` is not
///         open, 8 memory is short, 87 `data` without `size`, or `reserved` is not null, 234 `data` is too
///         small (`size` and `type` are set), 1018 the file has lost the key since it was opened
KORPLATFORM_API LSTATUS WINAPI RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type,
                                                LPBYTE data, LPDWORD size);

/// Closes a key; closing a root does nothing.
/// @return ERROR_SUCCESS; 6 when it is not open
KORPLATFORM_API LSTATUS WINAPI RegCloseKey(HKEY key);

#endif
