#pragma once
/// Files, folders and drives under the system's names, over the native file system.
///
/// Names are in the ANSI code page; on disk they are UTF-8. A name that the code page cannot express, or that
/// holds a reserved character (`< > " | ? *`, `:` after the drive, a control character), is refused with
/// ERROR_INVALID_NAME; look-ups skip such entries of a folder. Drive letters stand for folders: `Z:` is `/`,
/// `C:` is `drive_c` below KORUTIL_HOME, others stand in `drives.conf` there. Both separators are accepted. A
/// name is looked up exactly first, then without regard to case, component by component. Network names
/// (`\\server\...`) end in ERROR_BAD_NETPATH, the device name NUL is the null device, and the other device
/// names are not there: a file on disk that is called like one (`con`, `aux.txt`) can be reached under `\\?\`
/// only, and look-ups without that skip it.
///
/// The process starts on `Z:` in its working folder. In one that no platform path names, every name that
/// starts there, and GetCurrentDirectoryA, ends in ERROR_INVALID_NAME, in one that was deleted in
/// ERROR_PATH_NOT_FOUND, until SetCurrentDirectoryA sets another; absolute names go on working. On `Z:` the
/// host's own chdir() is followed, on another current drive it is not.
///
/// Functions that return a BOOL give FALSE on failure and set the last error; so do the others with the value
/// named at each. All of them may be called from any thread; two threads that use one file handle see its one
/// position.

#include "korutil/platform.h"

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD GENERIC_EXECUTE = 0x20000000;
inline constexpr DWORD GENERIC_ALL = 0x10000000;
inline constexpr DWORD DELETE = 0x00010000;
inline constexpr DWORD FILE_READ_DATA = 0x0001;
inline constexpr DWORD FILE_WRITE_DATA = 0x0002;
inline constexpr DWORD FILE_APPEND_DATA = 0x0004;
inline constexpr DWORD FILE_READ_ATTRIBUTES = 0x0080;
inline constexpr DWORD FILE_WRITE_ATTRIBUTES = 0x0100;

inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;

inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x0001;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x0002;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x0004;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x0010;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x0020;
inline constexpr DWORD FILE_ATTRIBUTE_DEVICE = 0x0040;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x0080;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x0100;
inline constexpr DWORD FILE_ATTRIBUTE_OFFLINE = 0x1000;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

inline constexpr DWORD FILE_FLAG_WRITE_THROUGH = 0x80000000;
inline constexpr DWORD FILE_FLAG_OVERLAPPED = 0x40000000;
inline constexpr DWORD FILE_FLAG_NO_BUFFERING = 0x20000000;
inline constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x04000000;
inline constexpr DWORD FILE_FLAG_BACKUP_SEMANTICS = 0x02000000;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;

inline constexpr DWORD FILE_TYPE_UNKNOWN = 0;
inline constexpr DWORD FILE_TYPE_DISK = 1;
inline constexpr DWORD FILE_TYPE_CHAR = 2;
inline constexpr DWORD FILE_TYPE_PIPE = 3;

inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
inline constexpr DWORD MOVEFILE_COPY_ALLOWED = 2;
inline constexpr DWORD MOVEFILE_DELAY_UNTIL_REBOOT = 4;
inline constexpr DWORD MOVEFILE_WRITE_THROUGH = 8;

inline constexpr DWORD DUPLICATE_CLOSE_SOURCE = 1;
inline constexpr DWORD DUPLICATE_SAME_ACCESS = 2;

inline constexpr UINT DRIVE_UNKNOWN = 0;
inline constexpr UINT DRIVE_NO_ROOT_DIR = 1;
inline constexpr UINT DRIVE_REMOVABLE = 2;
inline constexpr UINT DRIVE_FIXED = 3;
inline constexpr UINT DRIVE_REMOTE = 4;
inline constexpr UINT DRIVE_CDROM = 5;
inline constexpr UINT DRIVE_RAMDISK = 6;

/// Accepted and ignored: a new file gets the process's default rights.
struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};

/// A place in a file; `ReadFile` and `WriteFile` move the position there first. Calls are never asynchronous.
struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    CHAR cFileName[MAX_PATH];
    CHAR cAlternateFileName[14];  ///< always empty: there are no short names
};

struct BY_HANDLE_FILE_INFORMATION {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD dwVolumeSerialNumber;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD nNumberOfLinks;
    DWORD nFileIndexHigh;
    DWORD nFileIndexLow;
};

using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
using LPOVERLAPPED = OVERLAPPED*;
using LPWIN32_FIND_DATAA = WIN32_FIND_DATAA*;

// ---- Opening, reading, writing

/// Opens or creates a file.
///
/// Share modes are kept between all handles of this process and of other processes that use this platform, by
/// kernel locks on bytes far behind any file's end; an access that an open handle does not share, and a share
/// mode that excludes an open handle's access, end in ERROR_SHARING_VIOLATION. Where the file system has no
/// such locks, or the file may be written but not read, every open succeeds. A read-only file (no write
/// permission for anyone) is not opened for writing, not even by root, and a folder only with
/// FILE_FLAG_BACKUP_SEMANTICS: ERROR_ACCESS_DENIED.
/// @param name        file name; a null or empty one is ERROR_PATH_NOT_FOUND
/// @param access      GENERIC_*, DELETE or FILE_* bits; 0 only asks for times, sizes and attributes
/// @param disposition CREATE_NEW (an existing file is ERROR_FILE_EXISTS), CREATE_ALWAYS, OPEN_EXISTING,
///                    OPEN_ALWAYS, TRUNCATE_EXISTING (needs GENERIC_WRITE)
/// @param flags       FILE_ATTRIBUTE_READONLY for a new file, FILE_FLAG_DELETE_ON_CLOSE,
/// FILE_FLAG_WRITE_THROUGH
///                    and FILE_FLAG_BACKUP_SEMANTICS are kept, the others are hints without effect
/// @return the handle, INVALID_HANDLE_VALUE on failure. On success the last error is ERROR_ALREADY_EXISTS
/// when
///         CREATE_ALWAYS or OPEN_ALWAYS met a file, else 0
KORPLATFORM_API HANDLE WINAPI CreateFileA(LPCSTR name, DWORD access, DWORD share,
                                          LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                                          HANDLE pattern);

/// Reads until the count or the end of the file is reached. At the end it succeeds with 0 bytes; with `place`
/// given, it fails there with ERROR_HANDLE_EOF.
/// @param done  receives the number of bytes, also on failure; may be null
KORPLATFORM_API BOOL WINAPI ReadFile(HANDLE file, LPVOID data, DWORD count, LPDWORD done, LPOVERLAPPED place);

/// Writes all of `count` bytes; a full disk is ERROR_DISK_FULL.
/// @param done  receives the number of bytes that were written, also on failure; may be null
KORPLATFORM_API BOOL WINAPI WriteFile(HANDLE file, LPCVOID data, DWORD count, LPDWORD done,
                                      LPOVERLAPPED place);

/// Moves the position; it may stand behind the end of the file.
/// @param high  the distance's upper half, receives the new position's; null for a signed 32-bit distance
/// @return the position's lower half; INVALID_SET_FILE_POINTER with a last error other than 0 on failure
///         (ERROR_NEGATIVE_SEEK before the start, ERROR_INVALID_PARAMETER when it needs a `high` that is
///         null)
KORPLATFORM_API DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);
KORPLATFORM_API BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position,
                                             DWORD method);

/// @return the size's lower half; INVALID_FILE_SIZE with a last error other than 0 on failure
KORPLATFORM_API DWORD WINAPI GetFileSize(HANDLE file, LPDWORD high);
KORPLATFORM_API BOOL WINAPI GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);

/// Cuts or extends the file to the position.
KORPLATFORM_API BOOL WINAPI SetEndOfFile(HANDLE file);

/// Brings written data to the disk; needs write access.
KORPLATFORM_API BOOL WINAPI FlushFileBuffers(HANDLE file);

/// Closes any handle of this platform; one that is not open is ERROR_INVALID_HANDLE.
KORPLATFORM_API BOOL WINAPI CloseHandle(HANDLE handle);

/// Makes a second handle to the same open file: one position, one share mode.
/// @param access   access of the new handle, ignored with DUPLICATE_SAME_ACCESS
/// @param options  DUPLICATE_SAME_ACCESS, DUPLICATE_CLOSE_SOURCE; both processes must be the current one
KORPLATFORM_API BOOL WINAPI DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess,
                                            HANDLE* target, DWORD access, BOOL inherit, DWORD options);

/// Locks a range against other locks of it, also behind the end of the file: ERROR_LOCK_VIOLATION when
/// another lock, of this handle too, overlaps it. Locks hold between processes; reading and writing do not
/// look at them.
KORPLATFORM_API BOOL WINAPI LockFile(HANDLE file, DWORD low, DWORD high, DWORD countLow, DWORD countHigh);

/// Takes back a lock of exactly this range, else ERROR_NOT_LOCKED. Closing takes back all.
KORPLATFORM_API BOOL WINAPI UnlockFile(HANDLE file, DWORD low, DWORD high, DWORD countLow, DWORD countHigh);

/// @return FILE_TYPE_*; FILE_TYPE_UNKNOWN with a last error other than 0 for a wrong handle
KORPLATFORM_API DWORD WINAPI GetFileType(HANDLE file);

/// The creation time is the file system's where it keeps one, else the earliest time it knows.
KORPLATFORM_API BOOL WINAPI GetFileTime(HANDLE file, FILETIME* creation, FILETIME* access, FILETIME* write);

/// Needs write access. A creation time cannot be set here and is ignored; null and all-zero times change
/// nothing.
KORPLATFORM_API BOOL WINAPI SetFileTime(HANDLE file, const FILETIME* creation, const FILETIME* access,
                                        const FILETIME* write);
KORPLATFORM_API BOOL WINAPI GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information);

// ---- Names: deleting, moving, copying, attributes

/// A read-only file and a folder are ERROR_ACCESS_DENIED, an open one that does not share deletion is
/// ERROR_SHARING_VIOLATION; one that does disappears at once and lives on for its handles.
KORPLATFORM_API BOOL WINAPI DeleteFileA(LPCSTR name);

/// Renames a file or a folder; a file moves between disks too. An existing target is ERROR_ALREADY_EXISTS
/// unless only the letter case changes.
KORPLATFORM_API BOOL WINAPI MoveFileA(LPCSTR from, LPCSTR to);

/// @param flags  MOVEFILE_REPLACE_EXISTING replaces a target file in one atomic step; MOVEFILE_WRITE_THROUGH
///               returns when the change is on the disk; MOVEFILE_COPY_ALLOWED lets a file move between disks
KORPLATFORM_API BOOL WINAPI MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags);

/// Copies contents, last write time and the read-only attribute; a copy that fails leaves no target behind.
KORPLATFORM_API BOOL WINAPI CopyFileA(LPCSTR from, LPCSTR to, BOOL failIfExists);
KORPLATFORM_API BOOL WINAPI CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES security);

/// Removes an empty folder: ERROR_DIR_NOT_EMPTY otherwise, ERROR_DIRECTORY when it is a file.
KORPLATFORM_API BOOL WINAPI RemoveDirectoryA(LPCSTR name);

/// READONLY is a lack of write permission for anyone, HIDDEN a leading dot; every file has ARCHIVE, a pipe or
/// a socket DEVICE, which might keep who opens it waiting.
/// @return the attributes; INVALID_FILE_ATTRIBUTES on failure
KORPLATFORM_API DWORD WINAPI GetFileAttributesA(LPCSTR name);

/// Sets or clears READONLY; clearing gives the owner the right to write. The other attributes have no effect.
KORPLATFORM_API BOOL WINAPI SetFileAttributesA(LPCSTR name, DWORD attributes);

// ---- Places
// Text results: the length without the terminator; when the buffer is too small the size needed with it, and
// the buffer's contents are then undefined; 0 on failure.

/// Makes a name absolute and plain: separators, `.` and `..`, trailing dots and spaces; nothing need exist.
/// @param part  receives where the last component stands in `buffer`, null when there is none; may be null
KORPLATFORM_API DWORD WINAPI GetFullPathNameA(LPCSTR name, DWORD size, LPSTR buffer, LPSTR* part);

/// The name as it is spelled on disk; a part that is missing is ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND.
KORPLATFORM_API DWORD WINAPI GetLongPathNameA(LPCSTR name, LPSTR buffer, DWORD size);

/// The same as it is spelled by the caller: there are no short names.
KORPLATFORM_API DWORD WINAPI GetShortPathNameA(LPCSTR name, LPSTR buffer, DWORD size);

/// The folder of TMPDIR, TMP or TEMP, else `/tmp`; ends in a backslash.
KORPLATFORM_API DWORD WINAPI GetTempPathA(DWORD size, LPSTR buffer);

/// @param unique  a number for the name; 0 to find a free one, and the file is then made
/// @return the number used
KORPLATFORM_API UINT WINAPI GetTempFileNameA(LPCSTR folder, LPCSTR prefix, UINT unique, LPSTR buffer);
KORPLATFORM_API DWORD WINAPI GetCurrentDirectoryA(DWORD size, LPSTR buffer);

/// Also changes the process's working folder.
KORPLATFORM_API BOOL WINAPI SetCurrentDirectoryA(LPCSTR name);
KORPLATFORM_API UINT WINAPI GetWindowsDirectoryA(LPSTR buffer, UINT size);
KORPLATFORM_API UINT WINAPI GetSystemDirectoryA(LPSTR buffer, UINT size);

// ---- Drives

/// @param root  root folder with its backslash (`C:\`), null for the current drive's
KORPLATFORM_API UINT WINAPI GetDriveTypeA(LPCSTR root);

/// @return bit 0 for `A:` and so on
KORPLATFORM_API DWORD WINAPI GetLogicalDrives();

/// Larger disks than 32-bit cluster numbers can tell are told with larger clusters.
KORPLATFORM_API BOOL WINAPI GetDiskFreeSpaceA(LPCSTR root, LPDWORD sectorsPerCluster, LPDWORD bytesPerSector,
                                              LPDWORD freeClusters, LPDWORD clusters);

/// @param folder  any folder of the drive, null for the current one; the results may be null
KORPLATFORM_API BOOL WINAPI GetDiskFreeSpaceExA(LPCSTR folder, ULARGE_INTEGER* available,
                                                ULARGE_INTEGER* total, ULARGE_INTEGER* free);

/// The label is empty; the file system's name is the native one.
KORPLATFORM_API BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD labelSize, LPDWORD serial,
                                                  LPDWORD longestComponent, LPDWORD flags, LPSTR system,
                                                  DWORD systemSize);

// ---- Finding

/// Starts a look-up in one folder by the system's wild-card rules: `*.*` matches every name, `*.` names
/// without an extension, `?` one character or, before a dot or the end, none. The entries are those there
/// were at the start,
/// `.` and `..` first (but not in a drive's root), then sorted by name without regard to case.
/// @return a handle for FindNextFileA and FindClose only; INVALID_HANDLE_VALUE on failure,
/// ERROR_FILE_NOT_FOUND
///         when nothing matches, ERROR_PATH_NOT_FOUND when there is no such folder
KORPLATFORM_API HANDLE WINAPI FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA* data);

/// @return FALSE with ERROR_NO_MORE_FILES after the last entry
KORPLATFORM_API BOOL WINAPI FindNextFileA(HANDLE find, WIN32_FIND_DATAA* data);
KORPLATFORM_API BOOL WINAPI FindClose(HANDLE find);
