#pragma once
/// The low-level files of the Windows runtime: descriptors over the platform's files.
///
/// A descriptor is the native one of the file, but reading and writing go through the platform, so that
/// access and share modes hold; it is closed with `_close`. A descriptor that was opened elsewhere can be
/// used too, by the kernel's rules. Nothing is ever translated: text mode is binary mode here.
///
/// A failure gives -1, sets `errno` as the Windows runtime does, and leaves the system's last error.

#include "korutil/platform.h"
#include "korutil/platform/open_flags.h"

inline constexpr int _S_IREAD = 0400;
inline constexpr int _S_IWRITE = 0200;

/// Opens a file that others may read and write meanwhile.
/// @param flags  _O_...; access 3 is EINVAL, and so is emptying what is only to be read
/// With _O_CREAT an int follows: the native mode of a new file, of which the process's mask takes its part;
/// without _S_IWRITE the file is read-only.
/// @return the descriptor. EACCES stands for every refused access, a sharing violation (last error 32) among
/// them
KORPLATFORM_API int _open(const char* name, int flags, ...);

KORPLATFORM_API int _close(int descriptor);

/// @return bytes read, which may be fewer than asked for; 0 at the end. EINVAL for more than 2147483647
/// bytes, EBADF for a descriptor that does not read
KORPLATFORM_API int _read(int descriptor, void* data, unsigned count);

/// @return bytes written; EBADF for a descriptor that does not write, ENOSPC when the disk is full
KORPLATFORM_API int _write(int descriptor, const void* data, unsigned count);

/// @param origin  0 the beginning, 1 the position, 2 the end
/// @return the new position, which may be behind the end but not in front of the beginning (EINVAL)
KORPLATFORM_API LONGLONG _lseeki64(int descriptor, LONGLONG offset, int origin);
KORPLATFORM_API LONGLONG _telli64(int descriptor);

/// @return the file's length; 0 for what is no regular file
KORPLATFORM_API LONGLONG _filelengthi64(int descriptor);
