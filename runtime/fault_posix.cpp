// Faults arrive as signals. The handler of a fault throws: its frame stands on the faulting instruction's,
// and the unwinder walks from the one to the other. So the signal must not stay blocked (SA_NODEFER), and the
// handler has a stack of its own, since the thread's may be what overflowed.
#include <ucontext.h>

#include <array>
#include <csignal>
#include <cstring>
#include <mutex>

#include "platform/posix/kernel/exception.h"
#include "platform/posix/kernel/virtual_memory.h"
#include "runtime/fault.h"
#include "runtime/fault_thread_posix.h"
#include "runtime/fault_unwind.h"

namespace kor {
namespace {

constexpr greg_t kWriteAccess = 2;  // in the processor's page-fault code

// ------------------------------------------------------------------------------------- handlers before ours

struct Handlers {
    int signal;
    struct sigaction first;   // before our first installation
    struct sigaction former;  // before our latest one
};

std::array<Handlers, 4> handlers = {
    {{SIGSEGV, {}, {}}, {SIGFPE, {}, {}}, {SIGILL, {}, {}}, {SIGBUS, {}, {}}}};

Handlers& handlersOf(int signal) {
    for (Handlers& entry : handlers) {
        if (entry.signal == signal) return entry;
    }
    return handlers[0];
}

void resetAndRepeat(int signal, bool sent) {
    struct sigaction byDefault {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(signal, &byDefault, nullptr);
    if (sent) raise(signal);  // a fault happens again by itself when its instruction is repeated
}

void callFormer(const struct sigaction& former, int signal, siginfo_t* info, void* context, bool sent) {
    const bool takesInfo = former.sa_flags & SA_SIGINFO;
    if (!takesInfo && former.sa_handler == SIG_IGN && sent) return;
    if (!takesInfo && (former.sa_handler == SIG_DFL || former.sa_handler == SIG_IGN)) {
        resetAndRepeat(signal, sent);
        return;
    }
    sigset_t blocked = former.sa_mask;
    if (!(former.sa_flags & SA_NODEFER)) sigaddset(&blocked, signal);
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, &blocked, &mask);
    if (takesInfo) {
        former.sa_sigaction(signal, info, context);
    } else {
        former.sa_handler(signal);
    }
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
}

struct Forwarding {
    const void* context;
    const char* frame;
};
[[gnu::tls_model("initial-exec")]] thread_local Forwarding forwarding{};

// A handler that was put over ours may hand on to ours while ours hands on to it: then the turn is that of
// the handler before both. The frame tells such a call from a later signal whose context lies at the same
// place.
void forward(int signal, siginfo_t* info, void* context, bool sent) {
    const auto* frame = static_cast<const char*>(__builtin_frame_address(0));
    const Handlers& entry = handlersOf(signal);
    const Forwarding outer = forwarding;
    const bool handedBack = outer.context == context && frame < outer.frame;
    forwarding = {context, frame};
    callFormer(handedBack ? entry.first : entry.former, signal, info, context, sent);
    forwarding = outer;
}

// ---------------------------------------------------------------------------------------------- the handler

DWORD arithmeticCode(int detail) {
    switch (detail) {
        case FPE_INTDIV:
            return EXCEPTION_INT_DIVIDE_BY_ZERO;
        case FPE_INTOVF:
            return EXCEPTION_INT_OVERFLOW;
        case FPE_FLTDIV:
            return EXCEPTION_FLT_DIVIDE_BY_ZERO;
        case FPE_FLTOVF:
            return EXCEPTION_FLT_OVERFLOW;
        case FPE_FLTUND:
            return EXCEPTION_FLT_UNDERFLOW;
        case FPE_FLTRES:
            return EXCEPTION_FLT_INEXACT_RESULT;
        case FPE_FLTSUB:
            return EXCEPTION_ARRAY_BOUNDS_EXCEEDED;
        default:
            return EXCEPTION_FLT_INVALID_OPERATION;
    }
}

DWORD exceptionCode(int signal, const siginfo_t* info, const ucontext_t* state) {
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    const auto stackPointer = static_cast<std::uintptr_t>(state->uc_mcontext.gregs[REG_RSP]);
    switch (signal) {
        case SIGFPE:
            return arithmeticCode(info->si_code);
        case SIGILL:
            return info->si_code == ILL_PRVOPC ? EXCEPTION_PRIV_INSTRUCTION : EXCEPTION_ILLEGAL_INSTRUCTION;
        case SIGBUS:
            return info->si_code == BUS_ADRALN ? EXCEPTION_DATATYPE_MISALIGNMENT : EXCEPTION_IN_PAGE_ERROR;
        default:
            return hasStackOverflowed(address, stackPointer) ? EXCEPTION_STACK_OVERFLOW
                                                             : EXCEPTION_ACCESS_VIOLATION;
    }
}

EXCEPTION_RECORD recordOf(int signal, const siginfo_t* info, const ucontext_t* state) {
    EXCEPTION_RECORD record{};
    record.ExceptionCode = exceptionCode(signal, info, state);
    record.ExceptionAddress = reinterpret_cast<void*>(state->uc_mcontext.gregs[REG_RIP]);
    if (signal == SIGSEGV || signal == SIGBUS) {
        record.NumberParameters = 2;
        record.ExceptionInformation[0] = (state->uc_mcontext.gregs[REG_ERR] & kWriteAccess) ? 1 : 0;
        record.ExceptionInformation[1] = reinterpret_cast<ULONG_PTR>(info->si_addr);
    }
    return record;
}

// A signal that was sent says nothing about the instruction that it interrupts, nor does a memory error that
// was found in passing.
bool wasSent(int signal, const siginfo_t* info) {
    return info->si_code <= 0 || (signal == SIGBUS && info->si_code == BUS_MCEERR_AO);
}

// Makes the interrupted state one that the unwinder can start from. A call through a bad pointer has left the
// code: it is taken back into the call instruction.
bool prepareUnwinding(ucontext_t* state, const siginfo_t* info) {
    greg_t* registers = state->uc_mcontext.gregs;
    if (canUnwindFrom(static_cast<std::uintptr_t>(registers[REG_RIP]))) return true;
    if (registers[REG_RIP] != reinterpret_cast<greg_t>(info->si_addr)) return false;
    greg_t returnAddress = 0;
    std::memcpy(&returnAddress, reinterpret_cast<const void*>(registers[REG_RSP]), sizeof returnAddress);
    if (!canUnwindFrom(static_cast<std::uintptr_t>(returnAddress - 1))) return false;
    registers[REG_RIP] = returnAddress - 1;
    registers[REG_RSP] += static_cast<greg_t>(sizeof returnAddress);
    return true;
}

// The system gives a handler the floating-point unit in its first state, but who catches the exception goes
// on with the thread's own. After a trap the code that throws may use the unit itself: then all are masked.
void takeFloatingPoint(const ucontext_t* state, bool trapped) {
    constexpr unsigned kX87Masks = 0x3F;
    constexpr unsigned kSseMasks = 0x1F80;
    constexpr unsigned kSsePending = 0x3F;
    const fpregset_t unit = state->uc_mcontext.fpregs;
    if (!unit) return;
    const auto control = static_cast<unsigned short>(unit->cwd | (trapped ? kX87Masks : 0));
    const unsigned mxcsr = trapped ? (unit->mxcsr & ~kSsePending) | kSseMasks : unit->mxcsr;
    asm volatile("fldcw %0\n\tldmxcsr %1" : : "m"(control), "m"(mxcsr));
}

bool isFloatingPoint(DWORD code) {
    return code >= EXCEPTION_FLT_DENORMAL_OPERAND && code <= EXCEPTION_FLT_UNDERFLOW;
}

void onFault(int signal, siginfo_t* info, void* context) {
    auto* state = static_cast<ucontext_t*>(context);
    const bool sent = wasSent(signal, info);
    const FaultTranslator translator = korExceptionTranslator();
    if (translator && !sent) {
        EXCEPTION_RECORD record = recordOf(signal, info, state);
        EXCEPTION_POINTERS pointers{&record, reinterpret_cast<CONTEXT*>(context)};
        if (prepareUnwinding(state, info)) {
            // Only now: whoever takes the guard off must tell of it.
            if (signal == SIGSEGV && korTakeGuardPage(info->si_addr))
                record.ExceptionCode = STATUS_GUARD_PAGE_VIOLATION;
            takeFloatingPoint(state, isFloatingPoint(record.ExceptionCode));
            translator(record.ExceptionCode, &pointers);
        }
    }
    forward(signal, info, context, sent);
}

// --------------------------------------------------------------------------------------------- installation

bool isOurs(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) && action.sa_sigaction == onFault;
}

class Installation {
  public:
    Installation() = default;
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    // The library may be unloaded: its handler must not stay behind.
    ~Installation() {
        const std::lock_guard lock(mutex_);
        for (const Handlers& entry : handlers) {
            struct sigaction current {};
            sigaction(entry.signal, nullptr, &current);
            if (isOurs(current)) sigaction(entry.signal, &entry.former, nullptr);
        }
    }

    // Puts our handler where it is not, or no longer, in place.
    void ensure() {
        const std::lock_guard lock(mutex_);
        for (Handlers& entry : handlers) {
            struct sigaction current {};
            sigaction(entry.signal, nullptr, &current);
            if (isOurs(current)) continue;
            if (!installed_) entry.first = current;
            entry.former = current;
            struct sigaction ours {};
            ours.sa_sigaction = onFault;
            ours.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
            sigemptyset(&ours.sa_mask);
            sigaction(entry.signal, &ours, nullptr);
        }
        installed_ = true;
    }

  private:
    std::mutex mutex_;
    bool installed_ = false;
};
Installation installation;

}  // namespace

FaultTranslator setFaultTranslator(FaultTranslator translator) {
    if (translator) {
        installation.ensure();
        prepareFaultThread();
    }
    return korSetExceptionTranslator(translator);
}

}  // namespace kor
