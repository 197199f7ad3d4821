#pragma once
// The memory file of a record: a block of movable global memory.

#include "korutil/buffered_file.h"

namespace kor {

/// As the public functions of these purposes; the messages are shown.
int openMemoryFileForWriting(FileData& file);
int openMemoryFileForReading(FileData& file, HGLOBAL block);
HGLOBAL closeMemoryFile(FileData& file);
bool readMemoryFile(FileData& file, void* data, DWORD count);
bool writeMemoryFile(FileData& file, const void* data, DWORD count);
bool seekMemoryFile(FileData& file, LONG offset);

}  // namespace kor
