#include "platform/posix/kernel/profile_path.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/current_folder.h"
#include "platform/posix/kernel/drive_map.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/windows_path.h"

namespace kor {
namespace {

constexpr char kPathMark = '\x01';  // in no name that is given

constexpr bool isSeparator(char character) { return character == '\\' || character == '/'; }

// `C:\...`: means the same whatever the current folders are.
bool isAbsolute(std::string_view name) {
    const auto letter = static_cast<char>(name.empty() ? 0 : name[0] | 0x20);
    return name.size() >= 3 && letter >= 'a' && letter <= 'z' && name[1] == ':' && isSeparator(name[2]);
}

bool hasFolder(std::string_view name) { return name.find_first_of("\\/:") != name.npos; }

bool isAscii(std::string_view name) {
    return std::all_of(name.begin(), name.end(),
                       [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

std::nullopt_t refused(DWORD code) {
    SetLastError(code);
    return std::nullopt;
}

}  // namespace

std::optional<ProfileName> ProfileName::of(const char* file) {
    ProfileName name;
    name.given_ = file ? file : "WIN.INI";
    if (isAbsolute(name.given_) || (isAscii(name.given_) && !hasFolder(name.given_))) return name;
    // Only in UTF-8 is every `\` a separator.
    const auto text = utf8FromText(name.given_);
    if (!text) return refused(ERROR_INVALID_NAME);
    if (!hasFolder(*text)) return name;
    const auto full = absolutePath(*text);
    if (!full) return std::nullopt;
    name.held_ = kPathMark + *full;
    return name;
}

std::optional<std::string> ProfileName::path() const {
    if (!held_.empty()) return held_.substr(1);
    auto text = utf8FromText(given_);
    if (!text) return refused(ERROR_INVALID_NAME);
    if (isAbsolute(given_)) return text;
    std::array<char, MAX_PATH> folder;
    if (GetWindowsDirectoryA(folder.data(), static_cast<UINT>(folder.size())) == 0) return std::nullopt;
    return std::string(folder.data()) + '\\' + *text;
}

std::optional<ProfilePath> ProfilePath::find(const ProfileName& name) {
    const timespec seen = ProfileIdentity::now();
    const auto path = name.path();
    if (!path) return std::nullopt;
    auto resolved = resolveUtf8(*path);
    if (!resolved) return std::nullopt;
    ProfilePath result;
    result.native_ = std::move(resolved->native);
    result.isFolder_ = resolved->trailingSeparator;
    const std::string_view full = resolved->full;
    const auto root = full.starts_with("\\\\") ? std::nullopt : driveFolder(full.front());
    if (root) result.watchSearched(*root, componentsOf(full), seen);
    return result;
}

// Which folders were searched follows from the names: where one is spelled otherwise than it was given, and
// where one is not there.
void ProfilePath::watchSearched(std::string_view root, const std::vector<std::string_view>& wanted,
                                const timespec& seen) {
    std::string asGiven(root);
    for (const std::string_view component : wanted)
        asGiven.append("/").append(component);
    struct stat whole {};
    if (asGiven == native_ && lstat(native_.c_str(), &whole) == 0) return;
    std::size_t at = root.size();
    for (const std::string_view component : wanted) {
        const std::string folder = native_.substr(0, at);
        const std::size_t next = std::min(native_.find('/', at + 1), native_.size());
        struct stat status {};
        isMissing_ = lstat(native_.substr(0, next).c_str(), &status) != 0;
        if (isMissing_ && errno != ENOENT) isLasting_ = false;
        const bool isSpelledSo = std::string_view(native_).substr(at, next - at).substr(1) == component;
        if ((isMissing_ || !isSpelledSo) && !watch(folder.empty() ? "/" : folder, seen)) isLasting_ = false;
        if (isMissing_) return;
        at = next;
    }
}

bool ProfilePath::watch(std::string folder, const timespec& seen) {
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) return false;
    watched_.push_back({std::move(folder), ProfileIdentity(status, seen)});
    return true;
}

bool ProfilePath::isStill() const {
    return isLasting_ && std::all_of(watched_.begin(), watched_.end(), [](const Watched& watched) {
               struct stat status {};
               return stat(watched.folder.c_str(), &status) == 0 && watched.identity.isStill(status);
           });
}

}  // namespace kor
