#include <sys/wait.h>

#include <csignal>

#include "tests/runtime/fault_outcome.h"

namespace kor::test {

const DWORD kSseDivisionCode = EXCEPTION_FLT_DIVIDE_BY_ZERO;

namespace {

int signalOf(DWORD code) {
    switch (code) {
        case EXCEPTION_ACCESS_VIOLATION:
            return SIGSEGV;
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
            return SIGFPE;
        default:
            return SIGABRT;  // raised by RaiseException
    }
}

}  // namespace

// A sanitizer's own handler, which was there before the guard's, reports the fault and exits.
bool DiedFrom::operator()(int status) const {
    if (KOR_TEST_SANITIZED && WIFEXITED(status) && WEXITSTATUS(status) != 0) return true;
    return WIFSIGNALED(status) && WTERMSIG(status) == signalOf(code_);
}

}  // namespace kor::test
