#include "platform/posix/kernel/profile_replace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

#include "platform/posix/kernel/transfer.h"

namespace kor {
namespace {

// Hidden, and the same for every writer of a file: of those that follow each other under the lock, the next
// one takes away what one that was killed has left. Short whatever the file's name is.
std::string ownNameFor(std::string_view name) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char character : name)
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return std::string(".korutil-") + digits + ".new";
}

// Those that may not be copied, or not be set here, are left out.
void copyAttributes(int from, int to) {
    std::vector<char> names(65536);
    const ssize_t length = flistxattr(from, names.data(), names.size());
    if (length <= 0) return;
    std::vector<char> value(65536);
    const std::string_view list(names.data(), static_cast<std::size_t>(length));
    for (std::size_t begin = 0; begin < list.size(); begin = list.find('\0', begin) + 1) {
        const char* const name = list.data() + begin;
        const ssize_t size = fgetxattr(from, name, value.data(), value.size());
        if (size >= 0) fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

}  // namespace

std::optional<ProfilePlace> profilePlaceOf(const std::string& native) {
    constexpr int kMostLinks = 40;
    std::string path = native;
    for (int links = 0; links <= kMostLinks; ++links) {
        const std::size_t name = path.rfind('/') + 1;
        std::vector<char> target(4096);
        const ssize_t length = readlink(path.c_str(), target.data(), target.size());
        if (length < 0 && errno != EINVAL && errno != ENOENT) return std::nullopt;
        if (length < 0) return ProfilePlace{path.substr(0, name), path.substr(name)};
        const std::string_view link(target.data(), static_cast<std::size_t>(length));
        path = link.starts_with('/') ? std::string(link) : path.substr(0, name) + std::string(link);
    }
    errno = ELOOP;
    return std::nullopt;
}

std::optional<ProfileFolder> ProfileFolder::lock(const std::string& folder) {
    Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.isOpen()) return std::nullopt;
    while (flock(opened.get(), LOCK_EX) != 0) {
        if (errno == EINTR) continue;
        // Not every file system has locks; a file on one without them is written all the same.
        if (errno == EOPNOTSUPP || errno == ENOLCK || errno == ENOSYS) break;
        return std::nullopt;
    }
    return ProfileFolder(std::move(opened));
}

ProfileReplacement::ProfileReplacement(const ProfileFolder& folder, std::string name, int former)
    : folder_(folder), name_(std::move(name)), ownName_(ownNameFor(name_)), former_(former) {}

ProfileReplacement::~ProfileReplacement() {
    if (isNamed_) unlinkat(folder_.descriptor(), ownName_.c_str(), 0);
}

// A file without a name goes with the process, however that ends. Not every file system has them, and giving
// it a name needs its link in /proc.
bool ProfileReplacement::open() {
    const mode_t mode = former_ < 0 ? 0666 : 0600;
    file_ = Descriptor(openat(folder_.descriptor(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
    if (file_.isOpen()) {
        if (access("/proc/self/fd", X_OK) == 0) return true;
        file_ = Descriptor();
    } else if (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT && errno != EINVAL) {
        return false;
    }
    return openNamed();
}

bool ProfileReplacement::openNamed() {
    const mode_t mode = former_ < 0 ? 0666 : 0600;
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    for (int tries = 0; tries < 2; ++tries) {
        file_ = Descriptor(openat(folder_.descriptor(), ownName_.c_str(), flags, mode));
        isNamed_ = file_.isOpen();
        if (isNamed_ || errno != EEXIST) break;
        if (unlinkat(folder_.descriptor(), ownName_.c_str(), 0) != 0 && errno != ENOENT) break;
    }
    return isNamed_;
}

bool ProfileReplacement::write(std::string_view bytes) {
    const Transfer moved =
        transferAll([this](const char* data, std::size_t size) { return ::write(file_.get(), data, size); },
                    bytes.data(), bytes.size());
    errno = moved.error != 0 ? moved.error : ENOSPC;
    return moved.error == 0 && moved.done == bytes.size();
}

bool ProfileReplacement::takeOverRights() const {
    struct stat own {};
    struct stat former {};
    if (fstat(file_.get(), &own) != 0 || fstat(former_, &former) != 0) return false;
    const bool sameOwner = own.st_uid == former.st_uid && own.st_gid == former.st_gid;
    if (!sameOwner && fchown(file_.get(), former.st_uid, former.st_gid) != 0) return false;
    copyAttributes(former_, file_.get());
    return fchmod(file_.get(), former.st_mode & 07777) == 0;
}

bool ProfileReplacement::giveName(const std::string& name) {
    const std::string link = "/proc/self/fd/" + std::to_string(file_.get());
    return linkat(AT_FDCWD, link.c_str(), folder_.descriptor(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// A name of its own, for the moment until it is renamed.
bool ProfileReplacement::giveOwnName() {
    isNamed_ = giveName(ownName_);
    if (isNamed_ || errno != EEXIST) return isNamed_;
    if (unlinkat(folder_.descriptor(), ownName_.c_str(), 0) != 0 && errno != ENOENT) return false;
    isNamed_ = giveName(ownName_);
    return isNamed_;
}

bool ProfileReplacement::finish() {
    if (former_ >= 0 && !takeOverRights()) return false;
    return fsync(file_.get()) == 0;
}

bool ProfileReplacement::takePlace() {
    if (!isNamed_ && former_ < 0) return giveName(name_);
    if (!isNamed_ && !giveOwnName()) return false;
    if (renameat(folder_.descriptor(), ownName_.c_str(), folder_.descriptor(), name_.c_str()) != 0)
        return false;
    isNamed_ = false;
    return true;
}

}  // namespace kor
