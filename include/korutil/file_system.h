#pragma once
/// What is on the disk: existence tests, making and removing folders, deleting, attributes, the status of a
/// file, long names, shortcuts and free space.
///
/// Paths are as korutil/path.h has them. The functions ask the system with its critical-error message box
/// suppressed (a drive without a medium fails quietly); meanwhile the process's error mode is changed.
/// Results are 1 and 0; on 0 the system's last error tells the cause. A null path gives 0.

#include "korutil/platform.h"

/// @name Existence
/// A path with a reserved name (`sysIsReservedFileName`) is not there: the system is not asked.
/// @{

/// Whether there is a folder of that name.
KORUTIL_API int KORUTIL_CALL sysExistsDir(const char* path);

/// Whether there is a file or a folder of that name.
KORUTIL_API int KORUTIL_CALL sysExistsPath(const char* path);

/// Whether there is something of that name which is no folder.
KORUTIL_API int KORUTIL_CALL sysExistsFile(const char* path);

/// Whether the file can be opened for reading and its first byte, if it has one, can be read. A device or a
/// pipe, which might keep the caller waiting, is no such file: ERROR_NOT_SUPPORTED.
KORUTIL_API int KORUTIL_CALL sysReadableFile(const char* path);

/// Whether the file can be opened for reading; nothing is read. A pipe is not opened:
/// ERROR_NOT_SUPPORTED.
KORUTIL_API int KORUTIL_CALL sysReadableFileFast(const char* path);

/// Whether the file is one on a disk (no device, no pipe: ERROR_NOT_SUPPORTED), can be read and is not empty
/// (ERROR_HANDLE_EOF).
KORUTIL_API int KORUTIL_CALL sysIsFileOK(const char* path);
/// @}

// ---- Folders

/// Makes a folder and those above it that are missing. A folder that is there is success. When it fails, the
/// folders made until then stay. A reserved name fails with ERROR_INVALID_NAME.
KORUTIL_API int KORUTIL_CALL sysMakeDir(const char* path);

/// Removes a folder with all that is in it, read-only files too. Links and junctions are removed, what they
/// lead to is not touched. The first entry that cannot be removed ends the work; what was removed until then
/// is gone, and a file that stays has its read-only attribute back. A root is refused with
/// ERROR_ACCESS_DENIED; what is no folder fails with ERROR_DIRECTORY; a folder that cannot be read fails with
/// the system's error. Natively an entry whose name has no place on Windows (a character outside the code
/// page or one of `<>:"|?*\`, a device's name, a dot or a blank at its end) is not seen: it stays, and the
/// folder that it is in fails with ERROR_DIR_NOT_EMPTY after everything else in that folder is gone.
KORUTIL_API int KORUTIL_CALL sysRemoveDir(const char* path);

/// Makes a folder the process's current one, its drive the current drive; a trailing backslash does not
/// matter. Of a drive alone ("X:") it is the folder that is current on it.
KORUTIL_API int KORUTIL_CALL sysChDir(const char* folder);

/// The same, but a drive alone means its root.
KORUTIL_API int KORUTIL_CALL sysChDriveDir(const char* folder);

// ---- Files

inline constexpr DWORD kDeleteReadOnly = 1;  ///< a read-only file too
inline constexpr DWORD kDeleteMissing = 2;   ///< a file that is not there is success

/// Deletes a file; of a link, the link. When it cannot be deleted after all, it stays read-only.
/// @param options  kDelete... combined
KORUTIL_API int KORUTIL_CALL sysDeleteFileEx(const char* path, DWORD options);

inline constexpr int kModeRead = 0x0100;   ///< as the Windows runtime's _S_IREAD
inline constexpr int kModeWrite = 0x0080;  ///< as the Windows runtime's _S_IWRITE
inline constexpr int kModeFolder = 0x4000;
inline constexpr int kModeFile = 0x8000;

/// Sets a file's right to be written: read-only without kModeWrite; other bits do not count.
KORUTIL_API int KORUTIL_CALL sysChmod(const char* path, int mode);

/// What is known of a file or a folder. Times are seconds since 1970, UTC.
struct SysFileStatus {
    LONGLONG size;      ///< in bytes; 0 for a folder
    LONGLONG created;   ///< natively the earliest time that the file system knows
    LONGLONG accessed;  ///< last read, as far as the file system keeps it
    LONGLONG written;   ///< last change of the contents
    DWORD attributes;   ///< FILE_ATTRIBUTE_...
    DWORD mode;         ///< kMode... combined
};
static_assert(sizeof(SysFileStatus) == 40);

/// @param status  unchanged on failure
KORUTIL_API int KORUTIL_CALL sysFileStatus(const char* path, SysFileStatus* status);

/// Changes the short names in a path to the long ones, as the system's GetLongPathNameA; natively, where
/// there are no short names, to the letter case of the disk.
/// @param size  of the buffer
/// @return 1; 0 when a part of the path is missing, or the result does not fit: the buffer is then unchanged
KORUTIL_API int KORUTIL_CALL sysCvtToLongFileName(char* path, DWORD size);

/// Finds where a shortcut leads: a shell link file (".lnk", by Microsoft's published description
/// [MS-SHLLINK]) is read by its local path, or else by its path relative to the link; natively a symbolic
/// link is followed. Its target need not exist. At most 1 MB of the file is looked at; nothing in it is
/// executed.
/// @param target  receives the full path; unchanged on failure. May be the shortcut's own buffer
/// @return 1; 0 for what is no shortcut or is damaged (ERROR_BAD_FORMAT), leads to no path
///         (ERROR_PATH_NOT_FOUND), is a pipe (ERROR_NOT_SUPPORTED), and for a target that does not fit
///         (ERROR_INSUFFICIENT_BUFFER)
KORUTIL_API int KORUTIL_CALL sysResolveShortcut(const char* shortcut, char* target, DWORD size);

// ---- Drives and the system
// The path may be any on the drive that exists, or null for the current folder. Each result may be null.

/// Free space in clusters, as the system's GetDiskFreeSpaceA tells it: multiply in 64 bits.
KORUTIL_API int KORUTIL_CALL sysGetDiskFreeSpace(const char* path, DWORD* sectorsPerCluster,
                                                 DWORD* bytesPerSector, DWORD* freeClusters, DWORD* clusters);

/// Free space in bytes.
/// @param available  what the user may still use
/// @param total      size of the disk
/// @param free       what is free on the disk
KORUTIL_API int KORUTIL_CALL sysGetDiskFreeSpaceEx(const char* path, ULONGLONG* available, ULONGLONG* total,
                                                   ULONGLONG* free);

/// Whether the system has what Windows 2000 brought (property sets in ole32.dll).
/// @return 1: the library runs on no system that has not
KORUTIL_API int KORUTIL_CALL sysIsWin2000();
