#include "platform/posix/kernel/drive_map.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <new>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/posix/kernel/native_text.h"

namespace kor {
namespace {

constexpr int kLetters = 26;
constexpr std::string_view kBlanks = " \t\r";

using DriveFolders = std::array<std::optional<std::string>, kLetters>;

constexpr int letterIndex(char letter) {
    const char small = static_cast<char>(letter | 0x20);
    return small >= 'a' && small <= 'z' ? small - 'a' : -1;
}

// What is found out once must not be found out wrongly for ever.
void failWithoutMemory(const std::error_code& failed) {
    if (failed == std::errc::not_enough_memory) throw std::bad_alloc();
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string withoutSeparator(std::string path) {
    while (!path.empty() && path.back() == '/')
        path.pop_back();
    return path;
}

// The user's own folder; nothing for a user without one.
std::optional<std::string> userFolder() {
    if (std::string given = environment("HOME"); given.starts_with('/')) return withoutSeparator(given);
    constexpr std::size_t kMost = 1 << 20;
    passwd entry{};
    passwd* found = nullptr;
    int failed = ERANGE;
    for (std::vector<char> texts(1024); failed == ERANGE && texts.size() <= kMost;
         texts.resize(texts.size() * 2)) {
        failed = getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
        if (failed == ENOMEM) throw std::bad_alloc();
        if (failed == 0 && found && found->pw_dir && *found->pw_dir == '/')
            return withoutSeparator(found->pw_dir);
    }
    return std::nullopt;
}

std::optional<std::string> chosenHome() {
    if (const std::string given = environment("KORUTIL_HOME"); !given.empty()) {
        std::error_code failed;
        const std::filesystem::path home = std::filesystem::absolute(given, failed);
        failWithoutMemory(failed);
        return withoutSeparator(home.lexically_normal().string());
    }
    if (const std::string data = environment("XDG_DATA_HOME"); data.starts_with('/')) {
        return withoutSeparator(data) + "/korutil";
    }
    const auto user = userFolder();
    if (!user) return std::nullopt;
    return *user + "/.local/share/korutil";
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Lines `D: /data`; others, and those for C and Z, are passed over.
DriveFolders readDrives() {
    DriveFolders folders;
    folders[letterIndex('Z')] = "";
    if (!homeFolder()) return folders;
    const std::string lines = nativeText((*homeFolder() + "/drives.conf").c_str());
    for (std::string_view rest = lines; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view text = trimmed(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (text.size() < 3 || text[1] != ':' || letterIndex(text[0]) < 0) continue;
        const std::string_view folder = trimmed(text.substr(2));
        if (folder.starts_with('/')) {
            folders[static_cast<std::size_t>(letterIndex(text[0]))] = withoutSeparator(std::string(folder));
        }
    }
    folders[letterIndex('C')] = *homeFolder() + "/drive_c";
    folders[letterIndex('Z')] = "";
    return folders;
}

const DriveFolders& drives() {
    static const DriveFolders folders = readDrives();
    return folders;
}

void makeSystemDrive(const std::string& folder) {
    // Not std::call_once: what is thrown past it needs memory of the C library's, else the process ends.
    static std::mutex mutex;
    static bool tried = false;
    const std::lock_guard lock(mutex);
    if (tried) return;
    // A drive that cannot be made is found missing by whoever uses it.
    std::error_code failed;
    std::filesystem::create_directories(folder + "/WINDOWS/SYSTEM32", failed);
    failWithoutMemory(failed);
    tried = true;
}

}  // namespace

const std::optional<std::string>& homeFolder() {
    static const std::optional<std::string> folder = chosenHome();
    return folder;
}

std::optional<std::string> driveFolder(char letter) {
    const int index = letterIndex(letter);
    if (index < 0) return std::nullopt;
    const auto& folder = drives()[static_cast<std::size_t>(index)];
    if (folder && index == letterIndex('C')) makeSystemDrive(*folder);
    return folder;
}

DWORD driveMask() {
    DWORD mask = 0;
    for (int index = 0; index < kLetters; ++index) {
        if (drives()[static_cast<std::size_t>(index)]) mask |= 1u << index;
    }
    return mask;
}

}  // namespace kor
