#pragma once
/// Processor faults as exceptions: while a CKorWinToCException lives, an access violation, an integer
/// division by zero, a floating-point trap and their like surface on its thread as a `CKorException*`, so
/// that one catch clause for framework exceptions, followed by `appHandleException`, handles faults and
/// ordinary errors alike.
///
///     try {
///         CKorWinToCException guard;
///         runMeasurement();
///     } catch (CException* e) {
///         appHandleException(e);
///     }
///
/// The exception carries the fault's own system code (0xC0000005, 0xC0000094, ...) and location number
/// 1001152, no texts; the error is in the ring as well. Natively the processor's signal is expressed as
/// that code; it does not tell a division that overflows from one by zero. 32-bit Windows has one code
/// for all traps of the SSE unit (0xC00002B5). Only continuable exceptions are translated (record flags
/// 0); all others take the system's own way, and so does a fault on a thread without a guard, also while
/// another thread has one: the process dies as it would have without this library. After a translated
/// floating-point fault every trap is masked; `appResetFP` brings the unit back to its default state, and
/// the caller switches on again the traps that it wants.
///
/// What is promised, on both targets: the fault may sit in code that was compiled without special flags,
/// also in plain C, as long as it is in a function called under the guard and its module carries unwind
/// tables (GCC and clang write them unless they are switched off).
///
/// What the compiler cannot promise:
/// - A function in which a fault shall run destructors or reach a catch clause of its own must be
///   compiled by GCC with `-fnon-call-exceptions -fasynchronous-unwind-tables`. Without them, and with
///   other compilers at all, call the risky work in a separate function that is not inlined.
/// - A fault whose result is not used may be optimised away, and what a faulting function had changed
///   before may be seen or not: variables that the handler reads are best `volatile` or behind a call.
/// - A fault below a function that must not throw (`noexcept`, a destructor, `strlen` and kin called
///   directly from a frame with a handler or destructors of its own, a callback of code without unwind
///   tables) ends in `std::terminate`.
/// - A fault inside the memory allocator, or while a lock is held that only its owner's normal course
///   releases, leaves that allocator or lock as it was.
/// - Natively: a signal that was sent (`kill`, `raise`) is not a fault; it goes to the handler that was
///   there before. A stack overflow is translated, but the frames within the last few kilobytes of the
///   stack must not have destructors to run.
/// - On Windows: a fault inside a module without unwind tables (the system's own libraries) and a stack
///   overflow are not translated. A continuable exception that was raised by `RaiseException` is. The
///   guard works through the process's unhandled-exception filter, which every new guard takes back when
///   a program has replaced it.

#include "korutil/platform.h"
#include "korutil/platform/exception.h"

/// A local guard, never shared: it must be destroyed on the thread that made it, in the reverse order of
/// making.
class KORUTIL_CLASS CKorWinToCException {
  public:
    /// Installs the library's translator for the calling thread and keeps the one that it replaces.
    CKorWinToCException();
    CKorWinToCException(const CKorWinToCException&) = delete;
    /// Installs the kept translator again.
    ~CKorWinToCException();
    /// Copies the kept translator, nothing else: afterwards this guard restores what `other` would restore.
    CKorWinToCException& operator=(const CKorWinToCException& other);

  private:
    void (*previous_)(unsigned int code, EXCEPTION_POINTERS* exception);
};
