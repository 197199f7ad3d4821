#include "platform/posix/kernel/open_file.h"

#include <fcntl.h>
#include <unistd.h>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"

namespace kor {

OpenFile::~OpenFile() {
    if (!deleteOnClose_) return;
    // The name may belong to another file by now.
    struct stat mine {};
    struct stat named {};
    const bool same = fstat(descriptor(), &mine) == 0 && lstat(native_.c_str(), &named) == 0 &&
                      mine.st_dev == named.st_dev && mine.st_ino == named.st_ino;
    if (same) unlink(native_.c_str());
}

Opened<OpenFile> openedFile(HANDLE handle) {
    const HandleTable::Entry entry = HandleTable::instance().find(handle);
    Opened<OpenFile> file{std::dynamic_pointer_cast<OpenFile>(entry.object), entry.access};
    if (!file) SetLastError(ERROR_INVALID_HANDLE);
    return file;
}

Opened<OpenFile> openedFile(HANDLE handle, unsigned access) {
    Opened<OpenFile> file = openedFile(handle);
    if (!file || (file.access & access)) return file;
    SetLastError(ERROR_ACCESS_DENIED);
    return {};
}

bool isReadOnly(unsigned mode) { return S_ISREG(mode) && (mode & 0222) == 0; }

DWORD attributesOf(unsigned mode, std::string_view native) {
    DWORD attributes = S_ISDIR(mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if (isReadOnly(mode)) attributes |= FILE_ATTRIBUTE_READONLY;
    if (S_ISFIFO(mode) || S_ISSOCK(mode)) attributes = FILE_ATTRIBUTE_DEVICE;
    const std::string_view name = native.substr(native.rfind('/') + 1);
    if (name.starts_with('.') && name != "." && name != "..") attributes |= FILE_ATTRIBUTE_HIDDEN;
    return attributes;
}

bool flushFolderOf(const std::string& native) {
    const std::string name = native.substr(0, native.rfind('/') + 1);
    const Descriptor folder(open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder.isOpen() && fsync(folder.get()) == 0;
}

}  // namespace kor
