#pragma once
// The process-wide ring of the most recent errors.

#include "korutil/error.h"

namespace kor {

/// The process's one memory error.
CMemError& memoryError();

/// An error as appPlaceError describes it, not placed yet; its owner ends it with Delete.
CGeneralError* makeError(UINT code, UINT number, const char* errorText, void* errorArguments,
                         const char* debugText, void* debugArguments, UINT helpContext, HINSTANCE instance);

/// Places an error that makeError made. The ring takes it over, also when placing it fails.
void placeMadeError(CGeneralError* error);

}  // namespace kor
