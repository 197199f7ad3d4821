#include "korutil/fault_guard.h"

#include "korutil/error.h"
#include "runtime/fault.h"
#include "runtime/process_state.h"

namespace {

constexpr unsigned int kFaultLocation = 1001152;

// A record with flags is not continuable, or being unwound: the system goes on with its own handling.
void translate(unsigned int code, EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionFlags != 0) return;
    appThrowException(code, kFaultLocation, nullptr, nullptr, nullptr, nullptr, 0, kor::resourceModule());
}

}  // namespace

CKorWinToCException::CKorWinToCException() : previous_(kor::setFaultTranslator(translate)) {}

CKorWinToCException::~CKorWinToCException() { kor::setFaultTranslator(previous_); }

CKorWinToCException& CKorWinToCException::operator=(const CKorWinToCException& other) {
    previous_ = other.previous_;
    return *this;
}
