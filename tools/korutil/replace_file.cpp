#include "tools/korutil/replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "tools/korutil/failure.h"

namespace kor::command {
namespace {

bool isSameState(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

mode_t usualMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// The new name is on the disk only when the folder is; not every file system can be asked for that.
void flushFolder(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

}  // namespace

SignalBlock::SignalBlock() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before_);
}

SignalBlock::~SignalBlock() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

FileReplacement::FileReplacement(FileArgument target) : target_(std::move(target)) {
    if (target_.found) {
        // No write permission for anyone means read-only, also to root.
        if ((target_.found->st_mode & 0222) == 0) throw Failure(target_.shown, "it is read-only");
        if (::access(target_.native.c_str(), W_OK) != 0) throw Failure(target_.shown, systemReason(errno));
    }
    folder_ = target_.native.substr(0, target_.native.rfind('/') + 1);
    native_ = folder_ + ".korutil-XXXXXX";
    descriptor_ = ::mkostemp(native_.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        throw Failure(target_.shown, "no file can be made beside it: " + systemReason(errno));
    }
    try {
        path_ = libraryPath(native_, target_.shown);
        if (target_.found) takeOverRights();
    } catch (...) {
        ::unlink(native_.c_str());
        ::close(descriptor_);
        throw;
    }
}

FileReplacement::~FileReplacement() {
    if (!native_.empty()) ::unlink(native_.c_str());
    ::close(descriptor_);
}

void FileReplacement::takeOverRights() {
    struct stat own {};
    ::fstat(descriptor_, &own);
    const struct stat& former = *target_.found;
    if (own.st_uid == former.st_uid && own.st_gid == former.st_gid) return;
    if (::fchown(descriptor_, former.st_uid, former.st_gid) != 0) {
        throw Failure(target_.shown, "its owner cannot be kept: " + systemReason(errno));
    }
}

void FileReplacement::commit() {
    const mode_t mode = target_.found ? target_.found->st_mode & 07777 : usualMode();
    if (::fchmod(descriptor_, mode) != 0 || ::fsync(descriptor_) != 0) {
        throw Failure(target_.shown, systemReason(errno));
    }
    struct stat now {};
    const bool isThere = ::lstat(target_.native.c_str(), &now) == 0;
    if (isThere != target_.found.has_value() || (isThere && !isSameState(*target_.found, now))) {
        throw Failure(target_.shown, "another program has changed it meanwhile");
    }
    if (::rename(native_.c_str(), target_.native.c_str()) != 0)
        throw Failure(target_.shown, systemReason(errno));
    native_.clear();
    flushFolder(folder_);
}

}  // namespace kor::command
