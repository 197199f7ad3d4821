#pragma once
/// A binary file without a buffer of its own: each call is one call of the system.
///
/// The interface is the framework's, with positions and lengths of 64 bits (`ULONGLONG`, and a `LONGLONG`
/// offset in `Seek`), so that files of any size work on both targets. A failure throws a `CFileException*`
/// with the cause, the system's error code and the file's full path, except where it says otherwise. Names
/// are in the ANSI code page, and forward slashes are as good as backslashes. Derived classes that are not
/// files of the system (`CMemFile`) override the operations and leave `m_hFile` alone.
///
/// Opening without a share flag, or with `shareCompat`, is opening exclusively.

#include "korutil/framework/object.h"
#include "korutil/framework/string.h"

class CFileException;

class KORUTIL_CLASS CFile : public CObject {
    DECLARE_DYNAMIC(CFile)
  public:
    /// How to open: one access mode, one share mode, and what else is wanted, joined by `|`.
    enum OpenFlags {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,     ///< as shareExclusive
        shareExclusive = 0x0010,  ///< nobody else may open it
        shareDenyWrite = 0x0020,  ///< others may only read
        shareDenyRead = 0x0030,   ///< others may only write
        shareDenyNone = 0x0040,   ///< others may do both
        modeNoInherit = 0x0080,   ///< child processes do not inherit the file (they never do here)
        modeCreate = 0x1000,      ///< make the file; an existing one becomes empty
        modeNoTruncate = 0x2000,  ///< with modeCreate: an existing one keeps its content
        typeText = 0x4000,        ///< for derived classes; no meaning here
        typeBinary = 0x8000,      ///< for derived classes; no meaning here
    };
    enum SeekPosition { begin = 0, current = 1, end = 2 };
    enum BufferCommand { bufferRead = 0, bufferWrite = 1, bufferCommit = 2, bufferCheck = 3 };

    /// The value of `m_hFile` when no file is open: INVALID_HANDLE_VALUE.
    static const HANDLE hFileNull;

    /// The system's handle.
    HANDLE m_hFile;

    /// No file; see `Open`.
    CFile();
    /// Uses a handle that is open already. `Close` closes it; the destructor does not.
    explicit CFile(HANDLE file);
    /// Opens a file as `Open` does, but throws on failure.
    CFile(const char* fileName, UINT openFlags);
    /// Closes the file if it was opened by this object; failures are ignored.
    ~CFile() override;

    /// Where the next read or write happens, in bytes from the beginning.
    virtual ULONGLONG GetPosition() const;
    /// The name without folders and extension; empty when the path is not known.
    virtual CString GetFileTitle() const;
    /// The name without folders.
    virtual CString GetFileName() const;
    /// The full path.
    virtual CString GetFilePath() const;
    /// Changes what the three functions above and exceptions tell; the file itself stays where it is.
    virtual void SetFilePath(const char* newName);
    /// Opens a file. The object must not have one open; if it does, that one is left as it is and this fails
    /// with cause `generic` and system error 1247 (already initialised).
    /// @param error  when not null, receives the cause, the system error and the path of a failure
    /// @return TRUE when it is open; nothing is thrown but a `CMemoryException*`
    virtual BOOL Open(const char* fileName, UINT openFlags, CFileException* error = nullptr);
    /// A new object, which the caller deletes, with a duplicate of the handle; both share one position.
    virtual CFile* Duplicate() const;
    /// Moves the position. One past the end is allowed: the file grows when something is written there.
    /// @param offset  bytes from the beginning, the current position or the end, as `from` says
    /// @return the new position from the beginning
    /// Throws with cause `badSeek` when the position would be before the beginning; it is then unchanged.
    virtual ULONGLONG Seek(LONGLONG offset, UINT from);
    /// Makes the file longer (with zero bytes) or shorter; the position is then its new end.
    virtual void SetLength(ULONGLONG newLength);
    virtual ULONGLONG GetLength() const;
    /// Reads up to `count` bytes. @return how many were read: fewer than wanted only at the end, 0 there
    virtual UINT Read(void* buffer, UINT count);
    /// Writes `count` bytes; throws with cause `diskFull` when not all of them could be written.
    virtual void Write(const void* buffer, UINT count);
    /// Locks a range against other users; throws with cause `lockViolation` when a part of it is locked.
    virtual void LockRange(ULONGLONG position, ULONGLONG count);
    /// Unlocks a range that was locked by one call of `LockRange`.
    virtual void UnlockRange(ULONGLONG position, ULONGLONG count);
    /// Closes the file and ignores failures; does nothing when none is open.
    virtual void Abort();
    /// Has the system write what it keeps in memory to the disk; does nothing when no file is open.
    virtual void Flush();
    /// Closes the file; does nothing when none is open. After a failure it is closed all the same.
    virtual void Close();
    /// Direct access to a derived class's own memory, see `CMemFile`. Here every command answers 0: there is
    /// none.
    virtual UINT GetBufferPtr(UINT command, UINT count = 0, void** bufferStart = nullptr,
                              void** bufferEnd = nullptr);

    void SeekToBegin();
    /// @return the file's length
    ULONGLONG SeekToEnd();

    /// Renames or moves a file; the new name must not exist.
    static void Rename(const char* oldName, const char* newName);
    /// Deletes a file.
    static void Remove(const char* fileName);

  protected:
    BOOL m_bCloseOnDelete;
    CString m_strFileName;
};
