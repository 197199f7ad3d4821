#pragma once
// The thread's exception translator, to which RaiseException and the fault handler offer an exception.

#include "korutil/platform/exception.h"

using KorExceptionTranslator = void (*)(unsigned int code, EXCEPTION_POINTERS* exception);

/// Sets the calling thread's translator. @return the one set before, null for none
KORPLATFORM_API KorExceptionTranslator korSetExceptionTranslator(KorExceptionTranslator translator);

/// The calling thread's translator, null for none. May be called in a signal handler.
KORPLATFORM_API KorExceptionTranslator korExceptionTranslator();
