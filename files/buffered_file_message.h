#pragma once
// What the user is told about the current file.

#include "korutil/platform.h"

namespace kor {

/// Shows a text with a name unless the current record's messages are off.
/// @param name  null for the record's name
/// @return what utlFileWarning returns; 0 when the messages are off
int showFileMessage(UINT textId, const char* name = nullptr);

}  // namespace kor
