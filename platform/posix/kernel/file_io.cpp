// Reading and writing open files.
#include <unistd.h>

#include <cerrno>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/transfer.h"

namespace {

using kor::failWith;

bool isRegular(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool moveTo(int descriptor, const OVERLAPPED& place) {
    const std::uint64_t offset = std::uint64_t{place.OffsetHigh} << 32 | place.Offset;
    if (offset > static_cast<std::uint64_t>(INT64_MAX)) return failWith(ERROR_INVALID_PARAMETER);
    // A pipe has no places; the system does not look at the offset there either.
    return lseek(descriptor, static_cast<off_t>(offset), SEEK_SET) >= 0 || errno == ESPIPE ||
           kor::failWithErrno();
}

BOOL finished(const kor::Transfer& transfer, LPDWORD done, LPOVERLAPPED place) {
    if (done) *done = static_cast<DWORD>(transfer.done);
    if (place) place->InternalHigh = transfer.done;
    return transfer.error == 0 || failWith(kor::errorFromErrno(transfer.error));
}

}  // namespace

KORPLATFORM_API BOOL WINAPI ReadFile(HANDLE handle, LPVOID data, DWORD count, LPDWORD done,
                                     LPOVERLAPPED place) {
    if (done) *done = 0;
    const auto file = kor::openedFile(handle, kor::kReads);
    if (!file) return FALSE;
    if (!data && count != 0) return failWith(ERROR_NOACCESS);
    const int descriptor = file->descriptor();
    if (place && !moveTo(descriptor, *place)) return FALSE;
    const auto raw = [descriptor](void* to, std::size_t size) { return read(descriptor, to, size); };
    // Only a short answer needs to know whether more may come.
    kor::Transfer transfer = kor::transferAll(raw, static_cast<char*>(data), count, true);
    if (transfer.error == 0 && transfer.done != 0 && transfer.done < count && isRegular(descriptor)) {
        const kor::Transfer rest =
            kor::transferAll(raw, static_cast<char*>(data) + transfer.done, count - transfer.done);
        transfer = {transfer.done + rest.done, rest.error};
    }
    if (!finished(transfer, done, place)) return FALSE;
    return !place || transfer.done != 0 || count == 0 || failWith(ERROR_HANDLE_EOF);
}

KORPLATFORM_API BOOL WINAPI WriteFile(HANDLE handle, LPCVOID data, DWORD count, LPDWORD done,
                                      LPOVERLAPPED place) {
    if (done) *done = 0;
    const auto file = kor::openedFile(handle, kor::kWrites | kor::kAppends);
    if (!file) return FALSE;
    if (!data && count != 0) return failWith(ERROR_INVALID_USER_BUFFER);
    const int descriptor = file->descriptor();
    if (place && !moveTo(descriptor, *place)) return FALSE;
    const auto raw = [descriptor](const void* from, std::size_t size) {
        return write(descriptor, from, size);
    };
    const kor::Transfer transfer = kor::transferAll(raw, static_cast<const char*>(data), count);
    if (!finished(transfer, done, place)) return FALSE;
    // A device that takes nothing more without saying why.
    return transfer.done == count || failWith(ERROR_DISK_FULL);
}

KORPLATFORM_API BOOL WINAPI FlushFileBuffers(HANDLE handle) {
    const auto file = kor::openedFile(handle, kor::kWrites | kor::kAppends);
    if (!file) return FALSE;
    // Devices have nothing to flush.
    return fsync(file->descriptor()) == 0 || errno == EINVAL || kor::failWithErrno();
}
