#pragma once
/// Buffered files: one set of calls for a file on disk and for a block of movable global memory (a memory
/// file, with which data for the clipboard or for drag and drop is built and read back).
///
///     const int file = fileDoOpen("C:\\IMAGE.RAW", _O_RDONLY | _O_BINARY);
///     if (file != kNoFile && file_hread(file, header, sizeof(header))) ...
///     fileDoClose(file);
///
/// Opening gives a handle: `kNoFile` (-1) for none, `kMemoryFile` (-2) for the memory file of the current
/// record, else a descriptor of the C runtime's low-level files, which is the system's own and may also come
/// from elsewhere. All other calls take the handle; no other negative number is one.
///
/// The state of the current file lives in a record (`FileData`). One record is always there; a caller that
/// needs a second file while one is in use pushes a fresh record and pops it afterwards. All calls but those
/// two act on the current record, the one pushed last.
///
/// A failure is told by the result and, unless the current record's messages are switched off, shown to the
/// user by `utlFileWarning` with a text of its own and the record's name (korutil/warning.h says how warnings
/// are switched off altogether). Nothing is placed in the error ring, and nothing is thrown: memory that
/// cannot be had is a failure like any other.
///
/// Positions and lengths are signed 32-bit numbers. One that does not fit is given as -1; files of more than
/// 2147483647 bytes can be read and written from their beginning to their end all the same. The family is
/// used from one thread at a time.

#include "korutil/framework/string.h"
#include "korutil/platform.h"
#include "korutil/platform/open_flags.h"

inline constexpr int kNoFile = -1;      ///< no file: the open failed, or the file was closed
inline constexpr int kMemoryFile = -2;  ///< the memory file of the current record

/// The state of one file.
class KORUTIL_CLASS FileData {
  public:
    /// A record without a file.
    FileData();
    FileData(const FileData&) = delete;
    FileData& operator=(const FileData&) = delete;
    /// Neither closes a file nor frees a block.
    virtual ~FileData();

    CString m_strName;      ///< the file's name, for messages
    DWORD m_dwPosition;     ///< where a memory file is read and written next
    DWORD m_dwCapacity;     ///< bytes allocated for a memory file
    HGLOBAL m_hBuffer;      ///< a memory file's block, or null
    BOOL m_bMessages;       ///< whether problems are shown to the user; at first they are
    int m_iHandle;          ///< `kNoFile`, `kMemoryFile` or a descriptor
    FileData* m_pPrevious;  ///< the record that was current before this one was pushed, or null
    BOOL m_bReadOnly;       ///< 1 for a memory file opened for reading
    DWORD m_dwLength;       ///< a disk file's length at its opening (0xFFFFFFFF when longer), or how far a
                            ///< memory file was written
};

static_assert(sizeof(void*) != 4 || sizeof(FileData) == 40);

// ---- Opening and closing

/// Opens a file on disk. Makes `name` the current record's name and switches its messages on.
///
/// A new file may be read and written by its owner (mode 0600 natively; on Windows everybody's rights are the
/// folder's). Natively the platform's rules for names hold, and a file that another process has opened
/// without sharing it is refused as on Windows.
///
/// What is shown when it fails:
/// - 2109 when the file is in use and not shared (the runtime's EACCES with the system's error 32),
/// - else 2102 when it was to be read only,
/// - else 2110 when the file is there and marked read-only,
/// - else nothing, which is required: a caller who writes tells the failure in his own words.
/// @param name   file name; null opens nothing and is told by the name of `fileSetName(nullptr)`
/// @param flags  _O_... joined by `|`. Give `_O_BINARY` (or `_O_TEXT`): natively both mean bytes as they are,
///               on Windows text mode translates line ends, and the lengths here count what is on disk
/// @return the descriptor; -1 on failure
KORUTIL_API int KORUTIL_CALL fileDoOpen(const char* name, int flags);

/// Closes a file and resets the current record; its name and whether messages are shown stay. A memory file's
/// block is not freed.
/// @return -1 for the handle -1, and nothing is done; else 1
KORUTIL_API int KORUTIL_CALL fileDoClose(int handle);

/// Begins an empty memory file in the current record, with a new block of 8192 zero bytes, and switches its
/// messages on. What the record held is forgotten, not closed.
/// @return -2; -1 when memory is short (2101)
KORUTIL_API int KORUTIL_CALL fileOpenWriteBuffer();

/// Ends the current record's memory file and hands its block over, shrunk to what was written: to no bytes,
/// which discards it, when nothing was. A block that cannot be shrunk comes as it is, and one that was opened
/// for reading is left alone. A record with a file on disk only forgets it: the file stays open.
/// @return the block, which the caller frees; null when no memory file is open
KORUTIL_API HGLOBAL KORUTIL_CALL fileCloseWriteBuffer();

/// @return the current record's block, which stays the record's; null when there is none
KORUTIL_API HGLOBAL KORUTIL_CALL fileGetWriteBuffer();

/// Opens a block as a memory file for reading, all of its size as the system tells it (a discarded block, and
/// what is no block, has size 0). The block stays the caller's and must live until the file is closed.
/// @param block  null leaves the record without a file
/// @return -2; -1 for null. Nothing is shown
KORUTIL_API int KORUTIL_CALL fileOpenReadBuffer(HGLOBAL block);

// ---- Reading, writing, position and length

/// Reads at the position, which moves on. A memory file can be read up to its capacity, behind what was
/// written too; its block is locked by every read and, which is required, not unlocked: the lock count goes
/// up to 255.
/// @return 1 when all `count` bytes were read; else 0. Shows 2103, or 2101 when the block cannot be locked; a
///         memory file's position is then unchanged, and nothing was copied
KORUTIL_API BOOL KORUTIL_CALL file_hread(int handle, void* data, DWORD count);

/// Writes at the position, which moves on. A memory file without the room grows to position + `count` + 65536
/// bytes, all new ones zero.
/// @return 1 when all `count` bytes were written; else 0. Shows 2104 (also for a memory file opened for
///         reading, which is never changed), or 2101 when a memory file cannot grow or be locked; it is then
///         unchanged
KORUTIL_API BOOL KORUTIL_CALL file_hwrite(int handle, const void* data, DWORD count);

/// Moves the position: in a memory file at most to its capacity, in a file on disk also behind the end.
/// @param offset  from the beginning, not negative
/// @return 1; 0 when there is no such position (2103)
KORUTIL_API BOOL KORUTIL_CALL fileGotoOffset(int handle, LONG offset);

/// @return the position; -1 for no file and when it does not fit
KORUTIL_API LONG KORUTIL_CALL fileGetPosition(int handle);

/// @return the length, for a memory file how far it was written; -1 for no file and when it does not fit
KORUTIL_API LONG KORUTIL_CALL fileGetLength(int handle);

/// @return length minus position, negative behind the end; 0 for the handle -1; -1 when one of the two cannot
///         be told or the difference does not fit
KORUTIL_API LONG KORUTIL_CALL fileGetAvailable(int handle);

// ---- The current record

/// @return the current record's name, valid until it is set anew or the record is popped
KORUTIL_API const char* KORUTIL_CALL fileGetName();

/// Sets the current record's name.
/// @param name  null for the text 2120; a name for which there is no memory counts as empty
KORUTIL_API void KORUTIL_CALL fileSetName(const char* name);

/// Switches the current record's messages on or off. @return the previous value
KORUTIL_API BOOL KORUTIL_CALL fileEnableErrorMsg(BOOL enable);

/// Makes a fresh record the current one. @return 1; 0 when memory is short
KORUTIL_API BOOL KORUTIL_CALL filePushFileData();

/// Makes the record before the current one current again and destroys the other, whose file is not closed and
/// whose block is not freed. @return 1; 0 when the current record was not pushed
KORUTIL_API BOOL KORUTIL_CALL filePopFileData();

// ---- Messages
// Each shows its text with a name unless the current record's messages are off.
// @param name  null for the current record's name

KORUTIL_API void KORUTIL_CALL fileNoMemoryError(const char* name);  ///< 2101: no memory for the file
KORUTIL_API void KORUTIL_CALL fileOpenError(const char* name);      ///< 2102: cannot be opened
KORUTIL_API void KORUTIL_CALL fileReadError(const char* name);      ///< 2103: cannot be read
KORUTIL_API void KORUTIL_CALL fileWriteError(const char* name);     ///< 2104: cannot be written

// The next four are for callers who understand what is in the file.
// @return what utlFileWarning returns; 0 when the messages are off

KORUTIL_API int KORUTIL_CALL fileDecodeError(const char* name);    ///< 2105: its data cannot be decoded
KORUTIL_API int KORUTIL_CALL fileEncodeError(const char* name);    ///< 2106: its data cannot be encoded
KORUTIL_API int KORUTIL_CALL fileFormatError(const char* name);    ///< 2108: its format is wrong
KORUTIL_API int KORUTIL_CALL fileEntryAdjusted(const char* name);  ///< 2107: an entry had to be adjusted

// ---- Arrays of numbers as text
// The texts never follow the locale. The last word is not used.

/// Reads numbers separated by commas: whatever stands between a number and the next comma is passed over.
/// @param text   null counts as a text without numbers
/// @param array  receives the numbers, also those in front of the place where reading failed
/// @param size   of an element: 4 for integers ("%d"), 8 for doubles ("%lf")
/// @return 1 when exactly `count` numbers were read; 0 also for a negative count and another size
KORUTIL_API BOOL KORUTIL_CALL utlReadArray(const char* text, void* array, int count, DWORD size, UINT_PTR);

/// Writes numbers separated by commas: integers as they are, doubles with two decimals.
/// @param text   receives the text; it must have room for 12 characters per integer, 314 per double, and one
///               in all cases
/// @param array  the numbers
/// @param size   of an element: 4 for integers, 8 for doubles
/// @return 1 when all numbers were written; with a count of 0 too, and the text is then empty. 0, and an
/// empty
///         text, for a negative count and another size
KORUTIL_API BOOL KORUTIL_CALL utlWriteArray(char* text, const void* array, int count, DWORD size, UINT_PTR);
