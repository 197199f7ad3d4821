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
/// After any other fault the unit's control settings (rounding, traps) are what they were.
///
/// What is promised, on both targets: the fault may sit in code that was compiled without special flags,
/// also in plain C, as long as it is called under the guard across a border through which the compiler does
/// not see: the function lies in another source file (built without link-time optimisation), in another
/// module, or is called through a pointer whose value the compiler does not know. Its module must carry
/// unwind tables (GCC and clang write them unless they are switched off).
///
/// What the compiler cannot promise:
/// - Within one source file the compiler sees that a function which only computes throws nothing, and
///   leaves the calls of it out of the tables: its fault then ends in `std::terminate`, also when it is not
///   inlined (`noinline`, `noipa`). So a file that holds a guard, a catch clause or destructors together with
///   the code that may fault must be compiled by GCC with `-fnon-call-exceptions
///   -fasynchronous-unwind-tables`: in CMake, link the program with `KorUtil::FaultTranslation`, which adds
///   these options. Other compilers have no such option: put the risky work into a file of its own.
/// - A fault whose result is not used may be optimised away, and what a faulting function had changed
///   before may be seen or not: variables that the handler reads are best `volatile` or behind a call.
/// - A fault below a function that must not throw (`noexcept`, a destructor, `strlen` and kin called
///   directly from a frame with a handler or destructors of its own, a callback of code without unwind
///   tables) ends in `std::terminate`.
/// - A fault while a lock is held that only its owner's normal course releases leaves that lock as it was.
///   The translation itself allocates: after a fault inside the memory allocator (a heap that was
///   overwritten) it may wait for ever or end the process.
/// - Natively: a signal that was sent (`kill`, `raise`) is not a fault; it goes to the handler that was
///   there before. A thread that blocks SIGSEGV, SIGFPE, SIGILL or SIGBUS has its faults of that kind not
///   translated: the system ends the process. A breakpoint (`int3`) is not translated; a privileged
///   instruction (`hlt`) is told as an access violation. A stack overflow is translated, but the frames
///   within the last few kilobytes of the stack must not have destructors to run; it is not when memory was
///   too short to give the thread a stack for its handler, with its first guard.
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
