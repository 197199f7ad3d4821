#pragma once
// An open file, as its handles share it.

#include <sys/stat.h>

#include <string>
#include <vector>

#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/handle_table.h"

namespace kor {

/// What a handle may do; also what a share mode allows others.
enum FileAccess : unsigned {
    kReads = 1,
    kWrites = 2,
    kDeletes = 4,
    kAppends = 8,
    kWritesAttributes = 16,
};

class OpenFile final : public HandleObject {
  public:
    explicit OpenFile(std::string native) : native_(std::move(native)) {}
    ~OpenFile() override;
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int descriptor() const { return descriptor_.get(); }
    void adopt(Descriptor descriptor) { descriptor_ = std::move(descriptor); }
    const std::string& native() const { return native_; }
    void deleteOnClose() { deleteOnClose_ = true; }

    /// One range of LockFile, both ends included.
    struct Range {
        std::uint64_t first;
        std::uint64_t last;
        bool operator==(const Range&) const = default;
    };
    std::mutex rangesMutex;
    std::vector<Range> ranges;

  private:
    Descriptor descriptor_;
    std::string native_;
    bool deleteOnClose_ = false;
};

/// As CreateFileA, which it is the whole of.
/// @param mode  rights of a new file, less the process's mask
/// @throws std::bad_alloc
HANDLE createFile(LPCSTR name, DWORD access, DWORD share, DWORD disposition, DWORD flags, unsigned mode);

/// The file of an open handle; none, with ERROR_INVALID_HANDLE, for another handle.
Opened<OpenFile> openedFile(HANDLE handle);

/// The same, and none with ERROR_ACCESS_DENIED when the handle may do none of `access`.
Opened<OpenFile> openedFile(HANDLE handle, unsigned access);

/// @param mode  as stat's. @param native  name or path of the file
DWORD attributesOf(unsigned mode, std::string_view native);

/// Whether the file is a regular one that nobody may write: refused even to root, as the system does.
bool isReadOnly(unsigned mode);

/// Brings the changed names of the file's folder to the disk. @return false with errno set
bool flushFolderOf(const std::string& native);

}  // namespace kor
