#pragma once
/// The last error: each thread keeps the code of its latest failed platform call. A function of the platform
/// that fails sets it; one that succeeds leaves it alone unless its own description says otherwise.
///
/// The codes have the system's values on every target.

#include "korutil/platform.h"

#ifndef _WIN32

/// @return the calling thread's last error code, 0 in a thread in which nothing has failed yet
KORPLATFORM_API DWORD WINAPI GetLastError();

/// Sets the calling thread's last error code. `errno` is left alone.
KORPLATFORM_API void WINAPI SetLastError(DWORD code);

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD NO_ERROR = 0;
inline constexpr DWORD ERROR_INVALID_FUNCTION = 1;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_BAD_FORMAT = 11;
inline constexpr DWORD ERROR_INVALID_ACCESS = 12;
inline constexpr DWORD ERROR_INVALID_DATA = 13;
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
inline constexpr DWORD ERROR_INVALID_DRIVE = 15;
inline constexpr DWORD ERROR_CURRENT_DIRECTORY = 16;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_NOT_READY = 21;
inline constexpr DWORD ERROR_BAD_LENGTH = 24;
inline constexpr DWORD ERROR_SEEK = 25;
inline constexpr DWORD ERROR_WRITE_FAULT = 29;
inline constexpr DWORD ERROR_READ_FAULT = 30;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_HANDLE_DISK_FULL = 39;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_BAD_NETPATH = 53;
inline constexpr DWORD ERROR_DEV_NOT_EXIST = 55;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_CANNOT_MAKE = 82;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;
inline constexpr DWORD ERROR_OPEN_FAILED = 110;
inline constexpr DWORD ERROR_BUFFER_OVERFLOW = 111;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_SEEK_ON_DEVICE = 132;
inline constexpr DWORD ERROR_DIR_NOT_ROOT = 144;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_DISCARDED = 157;
inline constexpr DWORD ERROR_NOT_LOCKED = 158;
inline constexpr DWORD ERROR_BAD_ARGUMENTS = 160;
inline constexpr DWORD ERROR_BAD_PATHNAME = 161;
inline constexpr DWORD ERROR_LOCK_FAILED = 167;
inline constexpr DWORD ERROR_BUSY = 170;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_NO_WORK_DONE = 235;
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_MR_MID_NOT_FOUND = 317;
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;
inline constexpr DWORD ERROR_ARITHMETIC_OVERFLOW = 534;
inline constexpr DWORD ERROR_STACK_OVERFLOW = 1001;
inline constexpr DWORD ERROR_NOACCESS = 998;
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;
inline constexpr DWORD ERROR_UNRECOGNIZED_VOLUME = 1005;
inline constexpr DWORD ERROR_FILE_INVALID = 1006;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_DLL_INIT_FAILED = 1114;
inline constexpr DWORD ERROR_IO_DEVICE = 1117;
inline constexpr DWORD ERROR_POSSIBLE_DEADLOCK = 1131;
inline constexpr DWORD ERROR_TOO_MANY_LINKS = 1142;
inline constexpr DWORD ERROR_NO_MORE_USER_HANDLES = 1158;
inline constexpr DWORD ERROR_CANCELLED = 1223;
inline constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr DWORD ERROR_INVALID_CURSOR_HANDLE = 1402;
inline constexpr DWORD ERROR_TLW_WITH_WSCHILD = 1406;
inline constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr DWORD ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr DWORD ERROR_INVALID_INDEX = 1413;
inline constexpr DWORD ERROR_CONTROL_ID_NOT_FOUND = 1421;
inline constexpr DWORD ERROR_INVALID_MSGBOX_STYLE = 1438;
inline constexpr DWORD ERROR_INVALID_GW_COMMAND = 1443;
inline constexpr DWORD ERROR_NO_SYSTEM_RESOURCES = 1450;
inline constexpr DWORD ERROR_INVALID_USER_BUFFER = 1784;
inline constexpr DWORD ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr DWORD ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;
inline constexpr DWORD ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
inline constexpr DWORD ERROR_RESOURCE_LANG_NOT_FOUND = 1815;
inline constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME = 1921;

#endif
