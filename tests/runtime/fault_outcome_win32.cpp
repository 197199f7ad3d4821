#include "tests/runtime/fault_outcome.h"

namespace kor::test {

const DWORD kSseDivisionCode = 0xC00002B5;  // STATUS_FLOAT_MULTIPLE_TRAPS

bool DiedFrom::operator()(int status) const { return static_cast<DWORD>(status) == code_; }

}  // namespace kor::test
