#pragma once
/// A file in memory: bytes in one block that grows as they are written.
///
/// It is a `CFile` in every respect but these: it has no name unless `SetFilePath` gives it one, it is empty
/// and ready after construction and cannot `Open` anything, and `Duplicate`, `LockRange` and `UnlockRange`
/// throw a `CFileException*` with cause `generic` and system error 50 (not supported). Memory that cannot be
/// had throws a `CMemoryException*` and leaves the file as it was. Bytes between the old end and a write
/// beyond it are zero, and so are those that `SetLength` adds.

#include "korutil/framework/file.h"

class KORUTIL_CLASS CMemFile : public CFile {
    DECLARE_DYNAMIC(CMemFile)
  public:
    /// An empty file. @param growBytes  least number of bytes to make room for at a time; 0: it cannot grow
    explicit CMemFile(UINT growBytes = 1024);
    /// A file on the caller's block, see `Attach`.
    CMemFile(BYTE* buffer, UINT bufferSize, UINT growBytes = 0);
    /// Frees the block unless it was attached.
    ~CMemFile() override;

    /// Makes a block of the caller's the file; a block of the file's own is freed first. The position is 0.
    /// The caller frees the block, after `Detach` when it may have grown.
    /// With `growBytes` 0 the block's content is the file's, and the file can never be longer than the block:
    /// a write or a length that would make it so throws a `CMemoryException*`. Otherwise the content is
    /// ignored, the file is empty, and the block must come from `Alloc` (`malloc` unless overridden).
    void Attach(BYTE* buffer, UINT bufferSize, UINT growBytes = 0);
    /// Hands the block to the caller, who frees it (with `free` unless `Free` is overridden), and leaves the
    /// file empty. Ask for `GetLength` before. @return null when the file has no block
    BYTE* Detach();

    ULONGLONG GetPosition() const override;
    /// Always fails: cause `generic`, system error 50.
    BOOL Open(const char* fileName, UINT openFlags, CFileException* error = nullptr) override;
    CFile* Duplicate() const override;
    /// As in `CFile`; a position that no block of memory could have is a `badSeek` with system error 87.
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    /// The position stays, unless it would be behind the new end: then it is the end.
    void SetLength(ULONGLONG newLength) override;
    ULONGLONG GetLength() const override;
    UINT Read(void* buffer, UINT count) override;
    void Write(const void* buffer, UINT count) override;
    void LockRange(ULONGLONG position, ULONGLONG count) override;
    void UnlockRange(ULONGLONG position, ULONGLONG count) override;
    /// As `Close`.
    void Abort() override;
    void Flush() override;
    /// Empties the file: its own block is freed, an attached one is let go. It can be written again.
    void Close() override;
    /// Direct access to the bytes at the position.
    /// - `bufferCheck`: 1, direct access is possible.
    /// - `bufferRead`: gives up to `count` bytes that are there to read; the position moves behind them.
    /// - `bufferWrite`: gives `count` bytes to fill; the file makes room but is not longer yet.
    /// - `bufferCommit`: that many of them were filled; the position moves behind them, and the file grows to
    ///   it if it was shorter. A count beyond the room that was made is cut to it.
    /// The range is valid until the next call of another function.
    /// @param bufferStart, bufferEnd  receive the range (both commands above need them; else 0 is the answer)
    /// @return the size of the range; 0 for other commands
    UINT GetBufferPtr(UINT command, UINT count = 0, void** bufferStart = nullptr,
                      void** bufferEnd = nullptr) override;

  protected:
    /// Where the memory comes from; override all four together to change it, and call `Close` in the
    /// destructor of the class that does. Null means that there is none.
    virtual BYTE* Alloc(SIZE_T bytes);
    virtual BYTE* Realloc(BYTE* block, SIZE_T bytes);
    virtual BYTE* Memcpy(BYTE* target, const BYTE* source, SIZE_T bytes);
    virtual void Free(BYTE* block);
    /// Makes the block at least `newLength` bytes: a multiple of the grow size, and half as much again as it
    /// was, so that writing costs the same however long the file is.
    virtual void GrowFile(SIZE_T newLength);

    UINT m_nGrowBytes;
    SIZE_T m_nPosition;
    SIZE_T m_nBufferSize;
    SIZE_T m_nFileSize;
    BYTE* m_lpBuffer;
    BOOL m_bAutoDelete;

  private:
    void makeRoom(SIZE_T length);
};
