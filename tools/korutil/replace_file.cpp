#include "tools/korutil/replace_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "tools/korutil/failure.h"

namespace kor::command {
namespace {

const std::string kFirstPart = ".korutil-";  // of the new file's name

bool isSameState(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

mode_t usualMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

std::string linkOf(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

// The target's folder, held while a new file takes its place: of two commands that change one file, the
// second one sees what the first has done.
class HeldFolder {
  public:
    explicit HeldFolder(const std::string& folder)
        : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        if (descriptor_ >= 0) ::flock(descriptor_, LOCK_EX);
    }
    HeldFolder(const HeldFolder&) = delete;
    HeldFolder& operator=(const HeldFolder&) = delete;
    ~HeldFolder() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }

    /// The new name is on the disk only when the folder is; not every file system can be asked for that.
    void flush() const {
        if (descriptor_ >= 0) ::fsync(descriptor_);
    }

  private:
    int descriptor_;
};

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
    try {
        if (!openUnnamed()) openNamed();
        path_ = libraryPath(isNamed() ? native_ : linkOf(descriptor_), target_.shown);
        if (target_.found) takeOverRights();
    } catch (...) {
        discard();
        throw;
    }
}

FileReplacement::~FileReplacement() { discard(); }

void FileReplacement::discard() {
    if (isNamed()) ::unlink(native_.c_str());
    if (descriptor_ >= 0) ::close(descriptor_);
}

// A file without a name goes with the process, however that ends. Not every file system has them, and both
// the library and giving it a name need its link in /proc.
bool FileReplacement::openUnnamed() {
    descriptor_ = ::open(folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor_ < 0) return false;
    if (::access(linkOf(descriptor_).c_str(), R_OK | W_OK) == 0) return true;
    ::close(descriptor_);
    descriptor_ = -1;
    return false;
}

void FileReplacement::openNamed() {
    std::string name = folder_ + kFirstPart + "XXXXXX";
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        throw Failure(target_.shown, "no file can be made beside it: " + systemReason(errno));
    native_ = name;
}

// Gives the unnamed file a name of its own, for the moment until it is renamed.
void FileReplacement::giveName() {
    for (int number = 0;; ++number) {
        const std::string name =
            folder_ + kFirstPart + std::to_string(::getpid()) + '-' + std::to_string(number);
        if (::linkat(AT_FDCWD, linkOf(descriptor_).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            native_ = name;
            return;
        }
        if (errno != EEXIST) throw Failure(target_.shown, systemReason(errno));
    }
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
    const HeldFolder folder(folder_);
    struct stat now {};
    const bool isThere = ::lstat(target_.native.c_str(), &now) == 0;
    if (isThere != target_.found.has_value() || (isThere && !isSameState(*target_.found, now))) {
        throw ChangedMeanwhile(target_.shown);
    }
    if (!isNamed()) giveName();
    if (::rename(native_.c_str(), target_.native.c_str()) != 0)
        throw Failure(target_.shown, systemReason(errno));
    native_.clear();
    folder.flush();
}

}  // namespace kor::command
