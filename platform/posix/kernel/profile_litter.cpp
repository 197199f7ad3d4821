#include "platform/posix/kernel/profile_litter.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>
#include <set>
#include <tuple>

#include "platform/posix/kernel/descriptor.h"

namespace kor {
namespace {

constexpr std::string_view kEnd = ".new";

std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char character : text)
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    return hash;
}

std::string digitsOf(std::uint64_t number) {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(number));
    return digits;
}

// Among which processes a process number means one: those since this start of this machine, in this
// namespace. Others may share the folder over a network.
std::string readStation() {
    char bytes[100];
    std::string station;
    const Descriptor boot(open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC));
    const ssize_t id = boot.isOpen() ? read(boot.get(), bytes, sizeof bytes) : 0;
    if (id > 0) station.append(bytes, static_cast<std::size_t>(id));
    const ssize_t space = readlink("/proc/self/ns/pid", bytes, sizeof bytes);
    if (space > 0) station.append(bytes, static_cast<std::size_t>(space));
    return digitsOf(hashOf(station));
}

const std::string& station() {
    static const std::string known = readStation();
    return known;
}

std::string startFor(std::string_view name) { return ".korutil-" + digitsOf(hashOf(name)) + "-"; }

// @param rest  of the name, behind its start
bool isOfDeadProcess(std::string_view rest) {
    if (!rest.starts_with(station() + "-")) return false;
    rest.remove_prefix(station().size() + 1);
    pid_t process = 0;
    const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), process);
    return read.ec == std::errc() && process > 0 && kill(process, 0) != 0 && errno == ESRCH;
}

bool isOld(int folder, const char* name) {
    constexpr std::time_t kHour = 3600;
    struct stat status {};
    return fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           std::time(nullptr) - status.st_mtime > kHour;
}

// The folder may be large, and nobody leaves litter often.
bool isFirstTime(int folder, std::string_view name) {
    constexpr std::size_t kMost = 1000;
    static std::mutex mutex;
    static std::set<std::tuple<dev_t, ino_t, std::uint64_t>> known;
    struct stat status {};
    if (fstat(folder, &status) != 0) return false;
    const std::lock_guard lock(mutex);
    if (known.size() >= kMost) known.clear();
    return known.insert({status.st_dev, status.st_ino, hashOf(name)}).second;
}

}  // namespace

std::string profileOwnName(std::string_view name) {
    static std::atomic<unsigned> number{0};
    return startFor(name) + station() + "-" + std::to_string(getpid()) + "-" + std::to_string(++number) +
           std::string(kEnd);
}

void removeProfileLitter(int folder, std::string_view name) {
    if (!isFirstTime(folder, name)) return;
    const int opened = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> list(opened < 0 ? nullptr : fdopendir(opened), closedir);
    if (!list) {
        if (opened >= 0) close(opened);
        return;
    }
    const std::string start = startFor(name);
    while (const dirent* const entry = readdir(list.get())) {
        const std::string_view found = entry->d_name;
        if (!found.starts_with(start) || !found.ends_with(kEnd)) continue;
        if (isOfDeadProcess(found.substr(start.size())) || isOld(folder, entry->d_name))
            unlinkat(folder, entry->d_name, 0);
    }
}

}  // namespace kor
