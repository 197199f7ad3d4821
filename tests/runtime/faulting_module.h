#pragma once
extern "C" {
#include "tests/runtime/faulting.h"
}

namespace kor::test {

/// The functions of the module that was built without special flags; loaded at the first call.
const Faulting* faultingModule();

}  // namespace kor::test
