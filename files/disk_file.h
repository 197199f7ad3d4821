#pragma once
// A file on disk behind a descriptor of the runtime.

#include "korutil/buffered_file.h"

namespace kor {

/// As fileDoOpen, but the name is set already.
int openDiskFile(FileData& file, const char* name, int flags);
void closeDiskFile(int descriptor);

/// The messages of these three are shown.
bool readDiskFile(int descriptor, void* data, DWORD count);
bool writeDiskFile(int descriptor, const void* data, DWORD count);
bool seekDiskFile(int descriptor, LONG offset);

/// @return -1 on failure
LONGLONG diskFilePosition(int descriptor);
LONGLONG diskFileLength(int descriptor);

}  // namespace kor
