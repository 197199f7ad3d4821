#include "platform/posix/kernel/profile_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <set>
#include <string_view>
#include <thread>
#include <vector>

namespace kor {
namespace {

// The folders that threads of this process are writing in: they take turns also where the file system has no
// locks, and wait for nobody who writes elsewhere.
template <typename Key>
struct Turns {
    std::mutex mutex;
    std::condition_variable ended;
    std::set<Key> taken;

    static Turns& instance() {
        static Turns turns;
        return turns;
    }
};

// Not every file system has locks; a file on one without them is written all the same.
bool isWithoutLocks(int error) {
    return error == EOPNOTSUPP || error == ENOLCK || error == ENOSYS || error == EINVAL || error == EBADF;
}

// The kernel's own wait has no end, and whoever may read the folder can hold its lock.
bool lockUntil(int folder, ProfileFolder::Deadline deadline) {
    using namespace std::chrono_literals;
    std::chrono::microseconds pause = 100us;
    while (flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if (isWithoutLocks(errno)) return true;
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return false;
        if (std::chrono::steady_clock::now() >= deadline) {
            errno = EBUSY;
            return false;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min<std::chrono::microseconds>(pause * 2, 2ms);
    }
    return true;
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

// @return null when others had it too long
ProfileFolder::Turn ProfileFolder::takeTurn(const Key& key, Deadline deadline) {
    auto& turns = Turns<Key>::instance();
    auto own = std::make_unique<const Key>(key);
    std::unique_lock lock(turns.mutex);
    if (!turns.ended.wait_until(lock, deadline, [&] { return !turns.taken.contains(key); })) return nullptr;
    turns.taken.insert(key);
    return Turn(own.release());
}

void ProfileFolder::EndTurn::operator()(const Key* key) const {
    auto& turns = Turns<Key>::instance();
    {
        const std::lock_guard lock(turns.mutex);
        turns.taken.erase(*key);
    }
    turns.ended.notify_all();
    delete key;
}

std::optional<ProfileFolder> ProfileFolder::lock(const std::string& folder, Deadline deadline) {
    Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status {};
    if (!opened.isOpen() || fstat(opened.get(), &status) != 0) return std::nullopt;
    // With the process, for a child that was forked during a turn: that turn is not one of its own.
    Turn turn = takeTurn({getpid(), status.st_dev, status.st_ino}, deadline);
    if (!turn) {
        errno = EBUSY;
        return std::nullopt;
    }
    if (!lockUntil(opened.get(), deadline)) return std::nullopt;
    return ProfileFolder(std::move(turn), std::move(opened));
}

// Closing alone would leave the lock with a child that was forked meanwhile and has the descriptor too.
ProfileFolder::~ProfileFolder() {
    if (folder_.isOpen()) flock(folder_.get(), LOCK_UN);
}

}  // namespace kor
