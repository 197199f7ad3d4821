#pragma once
/// Structured exceptions: the record of a processor fault or of an exception that a program raised itself, in
/// the system's own layout and with the system's codes. On Windows all of it is the system's.

#include "korutil/platform.h"

#ifndef _WIN32

/// The first access to a page that VirtualAlloc or VirtualProtect gave PAGE_GUARD; the page has no guard any
/// more.
inline constexpr DWORD STATUS_GUARD_PAGE_VIOLATION = 0x80000001;
inline constexpr DWORD EXCEPTION_ACCESS_VIOLATION = 0xC0000005;
inline constexpr DWORD EXCEPTION_IN_PAGE_ERROR = 0xC0000006;
inline constexpr DWORD EXCEPTION_ILLEGAL_INSTRUCTION = 0xC000001D;
inline constexpr DWORD EXCEPTION_DATATYPE_MISALIGNMENT = 0x80000002;
inline constexpr DWORD EXCEPTION_ARRAY_BOUNDS_EXCEEDED = 0xC000008C;
inline constexpr DWORD EXCEPTION_FLT_DENORMAL_OPERAND = 0xC000008D;
inline constexpr DWORD EXCEPTION_FLT_DIVIDE_BY_ZERO = 0xC000008E;
inline constexpr DWORD EXCEPTION_FLT_INEXACT_RESULT = 0xC000008F;
inline constexpr DWORD EXCEPTION_FLT_INVALID_OPERATION = 0xC0000090;
inline constexpr DWORD EXCEPTION_FLT_OVERFLOW = 0xC0000091;
inline constexpr DWORD EXCEPTION_FLT_STACK_CHECK = 0xC0000092;
inline constexpr DWORD EXCEPTION_FLT_UNDERFLOW = 0xC0000093;
inline constexpr DWORD EXCEPTION_INT_DIVIDE_BY_ZERO = 0xC0000094;
inline constexpr DWORD EXCEPTION_INT_OVERFLOW = 0xC0000095;
inline constexpr DWORD EXCEPTION_PRIV_INSTRUCTION = 0xC0000096;
inline constexpr DWORD EXCEPTION_STACK_OVERFLOW = 0xC00000FD;

inline constexpr DWORD EXCEPTION_NONCONTINUABLE = 1;
inline constexpr DWORD EXCEPTION_MAXIMUM_PARAMETERS = 15;

struct EXCEPTION_RECORD {
    DWORD ExceptionCode;
    DWORD ExceptionFlags;               // 0: continuable
    EXCEPTION_RECORD* ExceptionRecord;  // an earlier exception in whose handling this one was raised
    PVOID ExceptionAddress;             // of the instruction
    DWORD NumberParameters;
    ULONG_PTR
    ExceptionInformation[EXCEPTION_MAXIMUM_PARAMETERS];  // access violation: 0 read, 1 write; address
};

/// The processor's state at the exception; here the system's `ucontext_t`, null for RaiseException.
struct CONTEXT;

struct EXCEPTION_POINTERS {
    EXCEPTION_RECORD* ExceptionRecord;
    CONTEXT* ContextRecord;
};

/// Raises an exception on the calling thread. It is offered to the thread's exception translator (see
/// `fault_guard.h`), which may throw a C++ exception out of this call; when there is none, or it returns, the
/// process is aborted.
/// @param code       stored without its bit 28, which the system reserves
/// @param flags      0, or EXCEPTION_NONCONTINUABLE; other bits are dropped
/// @param count      of `arguments`; what exceeds EXCEPTION_MAXIMUM_PARAMETERS is dropped
/// @param arguments  copied into `ExceptionInformation`; null means none
KORPLATFORM_API void WINAPI RaiseException(DWORD code, DWORD flags, DWORD count, const ULONG_PTR* arguments);

#endif
