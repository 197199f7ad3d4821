#include "platform/posix/kernel/profile_replace.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/posix/kernel/profile_litter.h"
#include "platform/posix/kernel/profile_rights.h"
#include "platform/posix/kernel/transfer.h"

namespace kor {
namespace {

constexpr std::size_t kPiece = 65536;

}  // namespace

ProfileReplacement::ProfileReplacement(const ProfileFolder& folder, std::string name, int former)
    : folder_(folder), name_(std::move(name)), ownName_(profileOwnName(name_)), former_(former) {}

ProfileReplacement::~ProfileReplacement() {
    if (isNamed_) unlinkat(folder_.descriptor(), ownName_.c_str(), 0);
}

// A file without a name goes with the process, however that ends. Not every file system has them, and giving
// it a name needs its link in /proc.
bool ProfileReplacement::open() {
    removeProfileLitter(folder_.descriptor(), name_);
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
    file_ = Descriptor(openat(folder_.descriptor(), ownName_.c_str(), flags, mode));
    isNamed_ = file_.isOpen();
    return isNamed_;
}

bool ProfileReplacement::write(std::string_view bytes) {
    if (collected_.size() + bytes.size() > kPiece) {
        if (!writeNow(collected_)) return false;
        collected_.clear();
    }
    if (bytes.size() >= kPiece) return writeNow(bytes);
    collected_.append(bytes);
    return true;
}

bool ProfileReplacement::writeNow(std::string_view bytes) {
    const Transfer moved =
        transferAll([this](const char* data, std::size_t size) { return ::write(file_.get(), data, size); },
                    bytes.data(), bytes.size());
    errno = moved.error != 0 ? moved.error : ENOSPC;
    return moved.error == 0 && moved.done == bytes.size();
}

bool ProfileReplacement::giveName(const std::string& name) {
    const std::string link = "/proc/self/fd/" + std::to_string(file_.get());
    return linkat(AT_FDCWD, link.c_str(), folder_.descriptor(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// Whoever cleans the folder may have taken the name away, and another file may have it.
bool ProfileReplacement::hasOwnName() const {
    struct stat own {};
    struct stat named {};
    return fstat(file_.get(), &own) == 0 &&
           fstatat(folder_.descriptor(), ownName_.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

bool ProfileReplacement::finish() {
    if (!writeNow(collected_)) return false;
    if (former_ >= 0 && !takeOverRights(former_, file_.get())) return false;
    return fsync(file_.get()) == 0;
}

// Not over a file that has been made meanwhile, where the file system can tell.
bool ProfileReplacement::renameToFree() {
    const int folder = folder_.descriptor();
    if (renameat2(folder, ownName_.c_str(), folder, name_.c_str(), RENAME_NOREPLACE) == 0) return true;
    return (errno == EINVAL || errno == ENOSYS) &&
           renameat(folder, ownName_.c_str(), folder, name_.c_str()) == 0;
}

bool ProfileReplacement::takePlace() {
    if (!isNamed_ && former_ < 0) return giveName(name_);
    if (!isNamed_ && !(isNamed_ = giveName(ownName_))) return false;
    if (!hasOwnName()) {
        isNamed_ = false;
        errno = EEXIST;
        return false;
    }
    const int folder = folder_.descriptor();
    const bool done =
        former_ < 0 ? renameToFree() : renameat(folder, ownName_.c_str(), folder, name_.c_str()) == 0;
    if (done) isNamed_ = false;
    return done;
}

}  // namespace kor
