#include "platform/posix/kernel/current_folder.h"

#include <array>
#include <filesystem>
#include <mutex>
#include <new>
#include <utility>

#include "platform/posix/kernel/platform_name.h"

namespace kor {
namespace {

char capital(char letter) { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter; }

std::string workingFolder() {
    std::error_code failed;
    const std::filesystem::path folder = std::filesystem::current_path(failed);
    if (failed == std::errc::not_enough_memory) throw std::bad_alloc();
    std::string result = "Z:\\";
    for (const auto& part : folder.relative_path()) {
        if (!platformName(part.string())) return "Z:\\";
        if (result.back() != '\\') result += '\\';
        result += part.string();
    }
    return result;
}

class ProcessFolders final : public CurrentFolders {
  public:
    ProcessFolders() { of(drive_) = workingFolder(); }

    std::string current() const override {
        const std::lock_guard lock(mutex_);
        return of(drive_);
    }

    std::string currentOf(char drive) const override {
        const std::lock_guard lock(mutex_);
        const char letter = capital(drive);
        const bool known = letter >= 'A' && letter <= 'Z' && !of(letter).empty();
        return known ? of(letter) : std::string{drive} + ":\\";
    }

    void set(std::string folder) {
        const std::lock_guard lock(mutex_);
        drive_ = capital(folder[0]);
        of(drive_) = std::move(folder);
    }

  private:
    const std::string& of(char letter) const { return folders_[static_cast<std::size_t>(letter - 'A')]; }
    std::string& of(char letter) { return folders_[static_cast<std::size_t>(letter - 'A')]; }

    mutable std::mutex mutex_;
    char drive_ = 'Z';
    std::array<std::string, 26> folders_;  // empty: never set
};

ProcessFolders& processFolders() {
    static ProcessFolders folders;
    return folders;
}

}  // namespace

const CurrentFolders& currentFolders() { return processFolders(); }

void setCurrentFolder(std::string folder) { processFolders().set(std::move(folder)); }

}  // namespace kor
