// CreateFileA and DuplicateHandle.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/share_lock.h"
#include "platform/posix/kernel/time.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::OpenFile;

struct Meaning {
    DWORD bits;
    unsigned access;
};

constexpr Meaning kMeanings[] = {
    {GENERIC_READ | GENERIC_ALL | FILE_READ_DATA, kor::kReads},
    {GENERIC_WRITE | GENERIC_ALL | FILE_WRITE_DATA, kor::kWrites},
    {GENERIC_WRITE | GENERIC_ALL | FILE_APPEND_DATA, kor::kAppends},
    {GENERIC_WRITE | GENERIC_ALL | FILE_WRITE_ATTRIBUTES, kor::kWritesAttributes},
    {GENERIC_ALL | DELETE, kor::kDeletes},
};

unsigned accessOf(DWORD bits) {
    unsigned access = 0;
    for (const Meaning& meaning : kMeanings) {
        if (bits & meaning.bits) access |= meaning.access;
    }
    return access;
}

struct Request {
    const std::string& native;
    unsigned access;
    unsigned share;
    DWORD disposition;
    DWORD flags;
    mode_t mode;  // of a new file

    bool truncates() const { return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING; }
    bool mayCreate() const {
        return disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    }
    // What others must share: emptying a file is writing it.
    unsigned sharedAccess(bool existed) const {
        unsigned shared = access & (kor::kReads | kor::kWrites | kor::kDeletes);
        if ((access & kor::kAppends) || (existed && truncates())) shared |= kor::kWrites;
        return shared;
    }
    int nativeFlags() const {
        const bool writes = (access & (kor::kWrites | kor::kAppends)) || truncates();
        int result = O_CLOEXEC | O_NOCTTY | (writes ? O_RDWR : O_RDONLY);
        if ((access & kor::kAppends) && !(access & kor::kWrites)) result |= O_APPEND;
        if (flags & FILE_FLAG_WRITE_THROUGH) result |= O_DSYNC;
        // Who only asks about a pipe does not wait for its other end.
        if (!writes && !(access & kor::kReads)) result |= O_NONBLOCK;
        return result;
    }
};

struct OpenResult {
    int descriptor;
    bool existed;
};

// A file that may be written but not read, or only asked about, is opened for what is possible.
int openExisting(const Request& request) {
    const int flags = request.nativeFlags();
    int descriptor = open(request.native.c_str(), flags);
    // A socket cannot be opened at all.
    if (descriptor >= 0 || (errno != EACCES && errno != ENXIO)) return descriptor;
    if ((flags & O_ACCMODE) == O_RDWR && !(request.access & kor::kReads)) {
        return open(request.native.c_str(), (flags & ~O_ACCMODE) | O_WRONLY);
    }
    if (request.access == 0) return open(request.native.c_str(), O_PATH | O_CLOEXEC);
    return descriptor;
}

OpenResult openOrCreate(const Request& request) {
    // Another process may make or delete the file between the two calls.
    for (int tries = 0; tries < 100; ++tries) {
        if (request.disposition != CREATE_NEW) {
            const int descriptor = openExisting(request);
            if (descriptor >= 0 || errno != ENOENT || !request.mayCreate()) return {descriptor, true};
        }
        const mode_t mode = request.mode & (request.flags & FILE_ATTRIBUTE_READONLY ? 0444 : 0666);
        const int flags = (request.nativeFlags() & ~O_ACCMODE) | O_RDWR | O_CREAT | O_EXCL;
        const int descriptor = open(request.native.c_str(), flags, mode);
        if (descriptor >= 0 || errno != EEXIST || request.disposition == CREATE_NEW)
            return {descriptor, false};
    }
    return {-1, true};
}

// A folder is only opened by those who say that they mean one.
int openFolder(const Request& request) {
    if (request.disposition == CREATE_NEW) {
        errno = EEXIST;
        return -1;
    }
    if (!(request.flags & FILE_FLAG_BACKUP_SEMANTICS) || request.truncates()) {
        errno = EISDIR;
        return -1;
    }
    return open(request.native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

// Checks of an open file before anything is changed. @return the error code, 0 when all is well
DWORD refusal(const Request& request, const OpenResult& opened, const struct stat& status) {
    const bool changes = (request.access & (kor::kWrites | kor::kAppends)) || request.truncates() ||
                         (request.flags & FILE_FLAG_DELETE_ON_CLOSE);
    if (opened.existed && changes && kor::isReadOnly(status.st_mode)) return ERROR_ACCESS_DENIED;
    const unsigned shared = request.sharedAccess(opened.existed);
    if (shared == 0 || !S_ISREG(status.st_mode)) return 0;
    return kor::claimShare(opened.descriptor, shared, request.share) ? 0 : ERROR_SHARING_VIOLATION;
}

HANDLE failed(DWORD code) {
    SetLastError(code);
    return INVALID_HANDLE_VALUE;
}

HANDLE openFile(const Request& request) {
    // What needs memory comes first: what is made or emptied cannot be undone.
    kor::HandlePlace place;
    auto file = std::make_shared<OpenFile>(request.native);
    struct stat status {};
    const bool folder = stat(request.native.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    const OpenResult opened = folder ? OpenResult{openFolder(request), true} : openOrCreate(request);
    if (opened.descriptor < 0) {
        kor::failWithErrnoOf(request.native);
        return INVALID_HANDLE_VALUE;
    }
    file->adopt(kor::Descriptor(opened.descriptor));
    if (fstat(opened.descriptor, &status) != 0) return failed(kor::errorFromErrno(errno));
    if (!folder && S_ISDIR(status.st_mode)) return failed(ERROR_ACCESS_DENIED);
    if (const DWORD code = refusal(request, opened, status)) return failed(code);
    if (opened.existed && request.truncates() && S_ISREG(status.st_mode) &&
        ftruncate(opened.descriptor, 0) != 0) {
        return failed(kor::errorFromErrno(errno));
    }
    if (request.flags & FILE_FLAG_DELETE_ON_CLOSE) file->deleteOnClose();
    const bool met =
        opened.existed && (request.disposition == CREATE_ALWAYS || request.disposition == OPEN_ALWAYS);
    const HANDLE handle = place.fill({std::move(file), request.access});
    SetLastError(met ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

// What a separator after a file's name means.
DWORD separatorRefusal(const std::string& native, DWORD disposition) {
    struct stat status {};
    if (stat(native.c_str(), &status) == 0) return S_ISDIR(status.st_mode) ? 0 : ERROR_INVALID_NAME;
    return disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING ? 0 : ERROR_INVALID_NAME;
}

}  // namespace

HANDLE kor::createFile(LPCSTR name, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                       unsigned mode) {
    if (!name || !*name) return failed(ERROR_PATH_NOT_FOUND);
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING) return failed(ERROR_INVALID_PARAMETER);
    const unsigned meant = accessOf(access);
    if (disposition == TRUNCATE_EXISTING && !(meant & kor::kWrites)) return failed(ERROR_INVALID_PARAMETER);
    const auto path = kor::resolvePath(name);
    if (!path) return INVALID_HANDLE_VALUE;
    if (path->trailingSeparator) {
        if (const DWORD code = separatorRefusal(path->native, disposition)) return failed(code);
    }
    const unsigned deletes = flags & FILE_FLAG_DELETE_ON_CLOSE ? kor::kDeletes : 0u;
    return openFile({path->native, meant | deletes, share, disposition, flags, mode});
}

KORPLATFORM_API HANDLE WINAPI CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES,
                                          DWORD disposition, DWORD flags, HANDLE) {
    return kor::withMemory(INVALID_HANDLE_VALUE, [&]() -> HANDLE {
        return kor::createFile(name, access, share, disposition, flags, 0666);
    });
}

KORPLATFORM_API BOOL WINAPI DuplicateHandle(HANDLE sourceProcess, HANDLE source, HANDLE targetProcess,
                                            HANDLE* target, DWORD access, BOOL, DWORD options) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (sourceProcess != GetCurrentProcess() || targetProcess != GetCurrentProcess()) {
            return kor::failWith(ERROR_INVALID_HANDLE);
        }
        kor::HandlePlace place;
        kor::HandleTable& table = kor::HandleTable::instance();
        kor::HandleTable::Entry entry =
            options & DUPLICATE_CLOSE_SOURCE ? table.remove(source) : table.find(source);
        if (!entry.object) return kor::failWith(ERROR_INVALID_HANDLE);
        if (!(options & DUPLICATE_SAME_ACCESS)) entry.access &= accessOf(access);
        if (target) *target = place.fill(std::move(entry));
        return TRUE;
    });
}
