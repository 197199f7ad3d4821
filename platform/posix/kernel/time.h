#pragma once
/// Time, the process's and thread's identity, and critical sections under the system's names.
///
/// A FILETIME counts 100-nanosecond units since 1 January 1601, UTC; a SYSTEMTIME is broken down, years 1601
/// to 30827. Functions that return a BOOL give FALSE with the last error set on failure. All are safe in any
/// thread.

#include <pthread.h>

#include "korutil/platform.h"

inline constexpr DWORD INFINITE = 0xFFFFFFFF;

/// Milliseconds since the system started, modulo 2^32.
KORPLATFORM_API DWORD WINAPI GetTickCount();

/// Pauses the thread for at least that many milliseconds; 0 gives up the rest of its time slice.
KORPLATFORM_API void WINAPI Sleep(DWORD milliseconds);

KORPLATFORM_API void WINAPI GetSystemTime(SYSTEMTIME* time);
KORPLATFORM_API void WINAPI GetLocalTime(SYSTEMTIME* time);
KORPLATFORM_API void WINAPI GetSystemTimeAsFileTime(FILETIME* time);

/// A time of 2^63 units or more is ERROR_INVALID_PARAMETER.
KORPLATFORM_API BOOL WINAPI FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* broken);

/// The day of the week is ignored; a field out of range is ERROR_INVALID_PARAMETER.
KORPLATFORM_API BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* broken, FILETIME* time);

/// Both use the time zone's present distance from UTC, whatever the time given: required, as the system does
/// so.
KORPLATFORM_API BOOL WINAPI FileTimeToLocalFileTime(const FILETIME* time, FILETIME* local);
KORPLATFORM_API BOOL WINAPI LocalFileTimeToFileTime(const FILETIME* local, FILETIME* time);

/// @return -1, 0 or 1
KORPLATFORM_API LONG WINAPI CompareFileTime(const FILETIME* first, const FILETIME* second);

KORPLATFORM_API BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* count);
/// 10,000,000 counts a second.
KORPLATFORM_API BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* frequency);

/// The pseudo handle of the calling process; it need not be closed.
KORPLATFORM_API HANDLE WINAPI GetCurrentProcess();
KORPLATFORM_API DWORD WINAPI GetCurrentProcessId();
KORPLATFORM_API DWORD WINAPI GetCurrentThreadId();

/// A recursive lock of this process; its contents are nobody's business.
struct CRITICAL_SECTION {
    pthread_mutex_t mutex;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

KORPLATFORM_API void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section);
KORPLATFORM_API void WINAPI EnterCriticalSection(CRITICAL_SECTION* section);
KORPLATFORM_API BOOL WINAPI TryEnterCriticalSection(CRITICAL_SECTION* section);
KORPLATFORM_API void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section);
KORPLATFORM_API void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section);
