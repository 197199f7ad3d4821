#pragma once
// The part of fault translation that depends on the target: catching a fault of the processor and calling the
// thread's translator as if the faulting instruction had called it.

#include "platform/win32.h"

namespace kor {

/// Called with the exception's code and record; throws a C++ exception, or returns to decline.
using FaultTranslator = void (*)(unsigned int code, EXCEPTION_POINTERS* exception);

/// Sets the calling thread's translator and, when it is not null, makes sure that faults reach it.
/// @return the translator set before, null for none
FaultTranslator setFaultTranslator(FaultTranslator translator);

}  // namespace kor
