#include "platform/posix/kernel/exception.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr DWORD kReservedBit = 1u << 28;

// In the thread's static block: the first use in a thread may be in a signal handler, which must not
// allocate.
[[gnu::tls_model("initial-exec")]] thread_local KorExceptionTranslator threadTranslator = nullptr;

}  // namespace

KorExceptionTranslator korSetExceptionTranslator(KorExceptionTranslator translator) {
    const KorExceptionTranslator former = threadTranslator;
    threadTranslator = translator;
    return former;
}

KorExceptionTranslator korExceptionTranslator() { return threadTranslator; }

void WINAPI RaiseException(DWORD code, DWORD flags, DWORD count, const ULONG_PTR* arguments) {
    EXCEPTION_RECORD record{};
    record.ExceptionCode = code & ~kReservedBit;
    record.ExceptionFlags = flags & EXCEPTION_NONCONTINUABLE;
    record.ExceptionAddress = __builtin_return_address(0);
    if (arguments) {
        record.NumberParameters = std::min(count, EXCEPTION_MAXIMUM_PARAMETERS);
        std::copy_n(arguments, record.NumberParameters, record.ExceptionInformation);
    }
    EXCEPTION_POINTERS pointers{&record, nullptr};
    if (threadTranslator) threadTranslator(record.ExceptionCode, &pointers);
    std::fprintf(stderr, "Unhandled exception 0x%08X\n", record.ExceptionCode);
    std::abort();
}
