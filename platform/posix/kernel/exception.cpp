#include "platform/posix/kernel/exception.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "platform/posix/kernel/thread_state.h"

namespace {

constexpr DWORD kReservedBit = 1u << 28;

}  // namespace

KorExceptionTranslator korSetExceptionTranslator(KorExceptionTranslator translator) {
    const KorExceptionTranslator former = kor::threadState.translator;
    kor::threadState.translator = translator;
    return former;
}

KorExceptionTranslator korExceptionTranslator() { return kor::threadState.translator; }

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
    if (kor::threadState.translator) kor::threadState.translator(record.ExceptionCode, &pointers);
    std::fprintf(stderr, "Unhandled exception 0x%08X\n", record.ExceptionCode);
    std::abort();
}
