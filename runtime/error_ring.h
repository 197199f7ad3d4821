#pragma once
// The process-wide ring of the most recent errors.

#include "korutil/error.h"

namespace kor {

/// The process's one memory error.
CMemError& memoryError();

/// Places an error that the ring takes over, also when placing it fails.
void placeOwnedError(CKorError* error);

/// A new error as appPlaceError describes it, not placed yet; its owner ends it with Delete.
CGeneralError* makeError(UINT code, UINT number, const char* errorText, void* errorArguments,
                         const char* debugText, void* debugArguments, UINT helpContext, HINSTANCE instance);

}  // namespace kor
