#include "platform/posix/kernel/profile_load.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/transfer.h"

namespace kor {
namespace {

std::nullopt_t failed(BOOL) { return std::nullopt; }

std::ptrdiff_t readSome(int descriptor, char* data, std::size_t size) {
    const Transfer moved = transferAll(
        [descriptor](char* to, std::size_t count) { return read(descriptor, to, count); }, data, size, true);
    errno = moved.error;
    return moved.error != 0 ? -1 : static_cast<std::ptrdiff_t>(moved.done);
}

std::optional<LoadedProfile> loadOnce(int descriptor, bool& changed) {
    LoadedProfile loaded{};
    const timespec seen = ProfileIdentity::now();
    if (fstat(descriptor, &loaded.status) != 0) return failed(failWithErrno());
    if (!S_ISREG(loaded.status.st_mode)) return failed(failWith(ERROR_ACCESS_DENIED));
    auto text = ProfileText::read(
        [descriptor](char* data, std::size_t size) { return readSome(descriptor, data, size); },
        static_cast<std::size_t>(loaded.status.st_size));
    if (!text) return failed(failWithErrno());
    loaded.text = std::move(*text);
    loaded.identity = ProfileIdentity(loaded.status, seen);
    struct stat now {};
    changed = fstat(descriptor, &now) != 0 || !loaded.identity.isSameState(now);
    // What was read is then of no one state of the file, and not to be kept.
    if (changed) loaded.identity = ProfileIdentity();
    return loaded;
}

}  // namespace

Descriptor openProfile(int folder, const std::string& name, int flags) {
    const int usual = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    return Descriptor(openat(folder, name.c_str(), usual | flags));
}

std::optional<LoadedProfile> loadProfile(int descriptor) {
    constexpr int kMostTries = 4;
    std::optional<LoadedProfile> loaded;
    bool changed = true;
    for (int tries = 0; changed && tries < kMostTries; ++tries) {
        loaded.reset();
        if (tries > 0) lseek(descriptor, 0, SEEK_SET);
        loaded = loadOnce(descriptor, changed);
        if (!loaded) return std::nullopt;
    }
    return loaded;
}

std::optional<LoadedProfile> loadProfile(const ProfilePath& path) {
    const Descriptor file = openProfile(AT_FDCWD, path.native());
    if (!file.isOpen()) return failed(failWithErrnoOf(path.native()));
    if (!path.isFolder()) return loadProfile(file.get());
    struct stat status {};
    const bool isFolder = fstat(file.get(), &status) == 0 && S_ISDIR(status.st_mode);
    return failed(failWith(isFolder ? ERROR_ACCESS_DENIED : ERROR_INVALID_NAME));
}

}  // namespace kor
