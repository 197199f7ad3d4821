#include "platform/posix/kernel/current_folder.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/platform_name.h"
#include "platform/posix/kernel/windows_path.h"

namespace kor {
namespace {

constexpr char kNativeDrive = 'Z';

char capital(char letter) { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter; }

// What the process's working folder is, natively; held in place, so that it needs no memory.
class WorkingFolder {
  public:
    void read() {
        error_ = getcwd(path_.data(), path_.size()) ? 0 : errno;
        if (error_ != 0) path_[0] = '\0';
    }

    const char* path() const { return path_.data(); }
    int error() const { return error_; }
    bool operator==(const WorkingFolder& other) const {
        return error_ == other.error_ && std::strcmp(path(), other.path()) == 0;
    }

  private:
    std::array<char, PATH_MAX> path_{};
    int error_ = -1;  // never read
};

// Only the drive for a folder that no platform path names.
std::string platformFolder(const WorkingFolder& working) {
    std::string result = "Z:";
    if (working.error() != 0) return result;
    std::string names;
    for (std::string_view rest = working.path(); !rest.empty();) {
        const std::size_t end = rest.find('/');
        const std::string_view name = rest.substr(0, end);
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
        if (name.empty()) continue;
        if (!platformName(name)) return result;
        names.append("\\").append(name);
    }
    return result + (names.empty() ? "\\" : names);
}

class ProcessFolders final : public CurrentFolders {
  public:
    ProcessFolders() { follow(); }

    std::string current() const override {
        const std::lock_guard lock(mutex_);
        if (drive_ == kNativeDrive) follow();
        return of(drive_);
    }

    std::string currentOf(char drive) const override {
        const std::lock_guard lock(mutex_);
        const char letter = capital(drive);
        if (letter == kNativeDrive && drive_ == kNativeDrive) follow();
        const bool known = letter >= 'A' && letter <= 'Z' && !of(letter).empty();
        return known ? of(letter) : std::string{drive} + ":\\";
    }

    void set(std::string folder) {
        const std::lock_guard lock(mutex_);
        drive_ = capital(folder[0]);
        of(drive_) = std::move(folder);
        if (drive_ == kNativeDrive) working_.read();
    }

    // Why the native drive's current folder has no name.
    DWORD lack() const {
        const std::lock_guard lock(mutex_);
        if (working_.error() == 0) return ERROR_INVALID_NAME;
        return working_.error() == ENOENT ? ERROR_PATH_NOT_FOUND : errorFromErrno(working_.error());
    }

  private:
    // As long as the process stays where it was set, its folder keeps the name by which that was done, which
    // may lead over a link.
    void follow() const {
        WorkingFolder now;
        now.read();
        if (now.error() == ENOMEM) throw std::bad_alloc();
        if (now == working_) return;
        std::string& folder = folders_[kNativeDrive - 'A'];
        folder = platformFolder(now);
        working_ = now;
    }

    std::string& of(char letter) const { return folders_[static_cast<std::size_t>(letter - 'A')]; }

    mutable std::mutex mutex_;
    char drive_ = kNativeDrive;
    mutable std::array<std::string, 26> folders_;  // empty: never set
    mutable WorkingFolder working_;                // what folders_ has of the native drive
};

ProcessFolders& processFolders() {
    static ProcessFolders folders;
    return folders;
}

std::nullopt_t refused(DWORD code) {
    SetLastError(code);
    return std::nullopt;
}

}  // namespace

std::optional<std::string> currentFolder() {
    std::string folder = processFolders().current();
    if (folder.size() < 3) return refused(processFolders().lack());
    return folder;
}

std::optional<std::string> absolutePath(std::string_view path) {
    if (path.empty()) return refused(ERROR_PATH_NOT_FOUND);
    if (auto full = fullPath(path, processFolders())) return full;
    return refused(processFolders().lack());
}

void setCurrentFolder(std::string folder) { processFolders().set(std::move(folder)); }

}  // namespace kor
