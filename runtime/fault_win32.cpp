// Faults arrive at the process's unhandled-exception filter, after every handler that a frame has installed:
// so a library that expects a fault of its own still sees it. The filter lets the thread go on in a function
// that throws, entered as if the faulting instruction had called it.
#include <array>
#include <mutex>

#include "runtime/fault.h"
#include "runtime/fault_unwind.h"

namespace kor {
namespace {

constexpr DWORD kMultipleFloatFaults = 0xC00002B4;  // how SSE traps are told
constexpr DWORD kMultipleFloatTraps = 0xC00002B5;
constexpr DWORD kDirectionFlag = 0x400;
constexpr DWORD kRaiseExceptionSize = 0x200;  // at most, of the system's function

// --------------------------------------------------------------------------------- the threads' translators

// A slot of the system, not a thread_local: reading it never allocates.
class TranslatorSlot {
  public:
    TranslatorSlot() = default;
    TranslatorSlot(const TranslatorSlot&) = delete;
    TranslatorSlot& operator=(const TranslatorSlot&) = delete;
    ~TranslatorSlot() { TlsFree(index_); }

    // The last error belongs to the caller, and reading a slot clears it.
    FaultTranslator get() const {
        const DWORD error = GetLastError();
        const auto translator = reinterpret_cast<FaultTranslator>(TlsGetValue(index_));
        SetLastError(error);
        return translator;
    }
    void set(FaultTranslator translator) { TlsSetValue(index_, reinterpret_cast<void*>(translator)); }

  private:
    DWORD index_ = TlsAlloc();
};
TranslatorSlot translatorSlot;

}  // namespace

// Entered as if called from the faulting instruction, on a stack that may be aligned to 4 only.
extern "C" __attribute__((fastcall, force_align_arg_pointer, noinline, used)) void korThrowFault(
    DWORD code, void* address) {
    EXCEPTION_RECORD record{};
    record.ExceptionCode = code;
    record.ExceptionAddress = address;
    EXCEPTION_POINTERS pointers{&record, nullptr};
    if (const FaultTranslator translator = translatorSlot.get()) translator(code, &pointers);
    TerminateProcess(GetCurrentProcess(), code);  // a translator that declined what it was promised
}

// Where RaiseException returns to when it is to throw: takes back the removal of its four arguments, so that
// the stack is that of its call again. The first argument is the code, the second now the true return
// address.
extern "C" void korRaiseReturned();
asm(R"(
    .text
    .globl _korRaiseReturned
_korRaiseReturned:
    subl $16, %esp
    movl (%esp), %ecx
    movl 4(%esp), %edx
    pushl %edx
    jmp @korThrowFault@8
)");

namespace {

// ---------------------------------------------------------------------------------------- exceptions raised

// The system's RaiseException has no unwind data, but a continuable exception lets it return: with every
// register restored, to an address of our choice.
class RaiseFrame {
  public:
    RaiseFrame() {
        for (std::size_t i = 0; i < kModules.size(); ++i) {
            const HMODULE module = GetModuleHandleA(kModules[i]);
            if (module) starts_[i] = reinterpret_cast<DWORD>(GetProcAddress(module, "RaiseException"));
        }
    }

    bool holds(DWORD address) const {
        for (const DWORD start : starts_) {
            if (start != 0 && address >= start && address < start + kRaiseExceptionSize) return true;
        }
        return false;
    }

    // Makes RaiseException return into korRaiseReturned; false when its call is not found or cannot be
    // unwound.
    static bool redirect(const EXCEPTION_RECORD& record, const CONTEXT& context) {
        DWORD* call = findCall(record.ExceptionCode, context.Ebp);
        if (!call || !canUnwindFrom(call[0] - 1)) return false;
        call[1] = record.ExceptionCode;
        call[2] = call[0];
        call[0] = reinterpret_cast<DWORD>(&korRaiseReturned);
        return true;
    }

  private:
    static constexpr std::array<const char*, 2> kModules = {"kernel32", "kernelbase"};

    // Where the return address and, above it, the arguments of the call stand. A function that aligns its
    // stack has a copy of the return address beside its frame pointer, a few words below the true one.
    static DWORD* findCall(DWORD code, DWORD framePointer) {
        constexpr DWORD kReservedBit = 1u << 28;  // the system takes it from the code
        constexpr int kAlignmentWords = 32;
        auto* frame = reinterpret_cast<DWORD*>(framePointer);
        if (framePointer % sizeof(DWORD) != 0 || !isOnStack(frame)) return nullptr;
        for (DWORD* slot = frame + 1; slot < frame + kAlignmentWords && isOnStack(slot + 4); ++slot) {
            if (slot[0] == frame[1] && ((slot[1] ^ code) & ~kReservedBit) == 0) return slot;
        }
        return nullptr;
    }

    static bool isOnStack(const void* address) {
        const void* base = nullptr;  // the thread's block holds both ends of its stack
        const void* limit = nullptr;
        asm("movl %%fs:4, %0\n\tmovl %%fs:8, %1" : "=r"(base), "=r"(limit));
        return address >= limit && address < base;
    }

    std::array<DWORD, kModules.size()> starts_{};
};
const RaiseFrame raiseFrame;

// ----------------------------------------------------------------------------------- faults of instructions

bool isFloatingPoint(DWORD code) {
    return (code >= EXCEPTION_FLT_DENORMAL_OPERAND && code <= EXCEPTION_FLT_UNDERFLOW) ||
           code == kMultipleFloatFaults || code == kMultipleFloatTraps;
}

// Drops the pending exception and masks the traps: the code that throws may use the unit itself.
void resetFloatingPoint(CONTEXT& context) {
    constexpr DWORD kX87Masks = 0x3F;
    constexpr DWORD kX87Pending = 0x80FF;
    constexpr DWORD kSseMasks = 0x1F80;
    constexpr DWORD kSsePending = 0x3F;
    context.FloatSave.ControlWord |= kX87Masks;
    context.FloatSave.StatusWord &= ~kX87Pending;
    context.FloatSave.TagWord = ~DWORD{0};
    // The same in the layout of FXSAVE: control and status word, tags at byte 4, MXCSR at byte 24.
    BYTE* extended = context.ExtendedRegisters;
    auto* words = reinterpret_cast<WORD*>(extended);
    words[0] |= static_cast<WORD>(kX87Masks);
    words[1] &= static_cast<WORD>(~kX87Pending);
    extended[4] = 0;
    auto& mxcsr = reinterpret_cast<DWORD*>(extended)[6];
    mxcsr = (mxcsr & ~kSsePending) | kSseMasks;
}

// A call through a bad pointer has left the code; its return address tells the call.
bool isBadCall(const EXCEPTION_RECORD& record, DWORD address) {
    return record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2 &&
           record.ExceptionInformation[1] == address;
}

bool redirectFault(const EXCEPTION_RECORD& record, CONTEXT& context) {
    if (record.ExceptionCode == EXCEPTION_STACK_OVERFLOW) return false;  // no stack left to throw on
    auto* stack = reinterpret_cast<DWORD*>(context.Esp);
    const bool badCall = isBadCall(record, context.Eip);
    const DWORD from = badCall ? *stack - 1 : context.Eip;
    if (!canUnwindFrom(from)) return false;
    // The unwinder takes what is on the stack for a return address and looks one byte before it.
    if (!badCall) *--stack = from + 1;
    if (isFloatingPoint(record.ExceptionCode)) resetFloatingPoint(context);
    context.Ecx = record.ExceptionCode;
    context.Edx = context.Eip;
    context.Esp = reinterpret_cast<DWORD>(stack);
    context.Eip = reinterpret_cast<DWORD>(&korThrowFault);
    context.EFlags &= ~kDirectionFlag;
    return true;
}

// ----------------------------------------------------------------------------------------------- the filter

LONG WINAPI onException(EXCEPTION_POINTERS* exception);

class Installation {
  public:
    Installation() = default;
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    // The library may be unloaded: its filter must not stay behind.
    ~Installation() {
        const std::lock_guard lock(mutex_);
        TlsFree(forwarding_);
        if (!installed_) return;
        const LPTOP_LEVEL_EXCEPTION_FILTER current = SetUnhandledExceptionFilter(former_);
        if (current != onException) SetUnhandledExceptionFilter(current);
    }

    // Puts our filter where it is not, or no longer, in place.
    void ensure() {
        const std::lock_guard lock(mutex_);
        const LPTOP_LEVEL_EXCEPTION_FILTER current = SetUnhandledExceptionFilter(onException);
        if (current == onException) return;
        if (!installed_) first_ = current;
        former_ = current;
        installed_ = true;
    }

    // A filter that was put over ours may hand on to ours while ours hands on to it: then the turn is that of
    // the filter before both.
    LONG forward(EXCEPTION_POINTERS* exception) {
        const bool handedBack = TlsGetValue(forwarding_) == exception;
        const LPTOP_LEVEL_EXCEPTION_FILTER next = handedBack ? first_ : former_;
        if (!next) return EXCEPTION_CONTINUE_SEARCH;
        TlsSetValue(forwarding_, exception);
        const LONG answer = next(exception);
        TlsSetValue(forwarding_, nullptr);
        return answer;
    }

  private:
    std::mutex mutex_;
    bool installed_ = false;
    LPTOP_LEVEL_EXCEPTION_FILTER first_ = nullptr;
    LPTOP_LEVEL_EXCEPTION_FILTER former_ = nullptr;
    DWORD forwarding_ = TlsAlloc();
};
Installation installation;

LONG WINAPI onException(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    CONTEXT& context = *exception->ContextRecord;
    if (translatorSlot.get() && record.ExceptionFlags == 0) {
        const bool raised = raiseFrame.holds(context.Eip);
        if (raised ? RaiseFrame::redirect(record, context) : redirectFault(record, context)) {
            return EXCEPTION_CONTINUE_EXECUTION;
        }
    }
    return installation.forward(exception);
}

}  // namespace

FaultTranslator setFaultTranslator(FaultTranslator translator) {
    if (translator) installation.ensure();
    const FaultTranslator former = translatorSlot.get();
    translatorSlot.set(translator);
    return former;
}

}  // namespace kor
