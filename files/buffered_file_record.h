#pragma once
// The chain of file records.

#include "korutil/buffered_file.h"

namespace kor {

/// The top of the chain; there always is one.
extern FileData* currentRecord;

/// The current record.
inline FileData& currentFile() { return *currentRecord; }

/// Sets everything but the name and whether messages are shown to the initial values.
void resetFile(FileData& file);

}  // namespace kor
