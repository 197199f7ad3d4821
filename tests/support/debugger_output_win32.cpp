// Without a debugger the system raises an exception for each text and goes on when nobody wants it.
#include <windows.h>

#include "tests/support/debugger_output.h"

namespace kor::test {
namespace {

constexpr DWORD kTextForDebugger = 0x40010006;  // DBG_PRINTEXCEPTION_C: length with terminator, address

std::string heard;
void* listener = nullptr;

LONG CALLBACK hear(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == kTextForDebugger && record.ExceptionInformation[0] > 0) {
        heard.append(reinterpret_cast<const char*>(record.ExceptionInformation[1]),
                     record.ExceptionInformation[0] - 1);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

DebuggerOutput::DebuggerOutput() {
    heard.clear();
    listener = AddVectoredExceptionHandler(1, hear);
}

DebuggerOutput::~DebuggerOutput() { take(); }

std::string DebuggerOutput::take() {
    if (!listening_) return {};
    listening_ = false;
    RemoveVectoredExceptionHandler(listener);
    return heard;
}

}  // namespace kor::test
