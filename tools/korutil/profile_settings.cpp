#include "tools/korutil/profile_settings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <unordered_set>

#include "korutil/profile.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"

namespace kor::profile {
namespace {

using command::Failure;
using command::FileArgument;
using command::UsageError;

constexpr std::size_t kLongestProfileName = 259;
constexpr std::size_t kFirstRoom = 1024;
constexpr std::size_t kMostRoom = std::size_t{1} << 31;

FileArgument readable(FileArgument file) {
    // To the library a file that may not be read has no settings.
    if (file.found && ::access(file.native.c_str(), R_OK) != 0)
        throw Failure(file.shown, command::systemReason(errno));
    return file;
}

// The whole of a text or of a list of names; a cut one lacks one or two characters of the room that it had.
// @param enough  room that suffices in most cases
template <class Read>
std::string readWhole(std::size_t enough, Read read) {
    std::string text;
    for (std::size_t room = kFirstRoom;; room = std::max(2 * room, enough)) {
        text.resize(room);
        const DWORD length = read(text.data(), static_cast<DWORD>(room));
        if (length + 2 >= room && room < kMostRoom) continue;
        text.resize(length);
        return text;
    }
}

std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names;
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = std::min(list.find('\0', start), list.size());
        names.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return names;
}

bool isBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

std::string_view faultOfName(std::string_view name) {
    if (name.empty()) return "is empty";
    if (name.find_first_of("\r\n") != std::string_view::npos) return "holds a line break";
    if (isBlank(name.front()) || isBlank(name.back())) return "begins or ends with a blank";
    return {};
}

std::string checked(std::string_view utf8, std::string_view what, std::string_view fault) {
    if (!fault.empty())
        throw UsageError(std::string(what) + " '" + std::string(utf8) + "' " + std::string(fault));
    return code_page::fromUtf8(utf8, what);
}

}  // namespace

Settings::Settings(FileArgument file, std::optional<FileArgument> application)
    : file_(std::move(file)), application_(std::move(application)) {
    if (!application_) return;
    for (const FileArgument* each : {&file_, &*application_}) {
        if (each->path.size() > kLongestProfileName)
            throw Failure(each->shown, "the path is too long for the library");
    }
    appSetProfiles(application_->path.c_str(), file_.path.c_str());
}

Settings Settings::ofFile(std::string_view file) {
    return Settings(readable(command::existingFile(file)), std::nullopt);
}

Settings Settings::ofUser(std::string_view userFile, std::string_view applicationFile) {
    return Settings(readable(command::targetFile(userFile)),
                    readable(command::existingFile(applicationFile)));
}

UINT_PTR Settings::selector() const { return application_ ? kProfileBoth : profileFile(file_.path.c_str()); }

std::string Settings::shown() const {
    return application_ ? file_.shown + " and " + application_->shown : file_.shown;
}

// A value is no longer than its file, but for UTF-16, of which some become three bytes.
std::size_t Settings::mostRoom() const {
    std::size_t most = kFirstRoom;
    for (const FileArgument* each : {&file_, application_ ? &*application_ : &file_}) {
        struct stat now {};
        if (::stat(each->native.c_str(), &now) == 0)
            most = std::max(most, static_cast<std::size_t>(now.st_size));
    }
    return std::min(most + 4, kMostRoom);
}

std::string Settings::read(const char* section, const char* key, const char* defaultText,
                           UINT_PTR from) const {
    return readWhole(mostRoom(), [&](char* text, DWORD room) {
        return appGetProfileString(section, key, defaultText, text, room, from, nullptr);
    });
}

std::string Settings::sectionText(const std::string& section, DWORD most) const {
    const auto read = [&](char* text, DWORD room) {
        return GetPrivateProfileSectionA(section.c_str(), text, room, file_.path.c_str());
    };
    if (most == 0) return readWhole(mostRoom(), read);
    std::string text(most, '\0');
    text.resize(read(text.data(), most));
    return text;
}

std::vector<std::string> Settings::sectionLines() const {
    return namesIn(readWhole(mostRoom(), [&](char* text, DWORD room) {
        return GetPrivateProfileSectionNamesA(text, room, file_.path.c_str());
    }));
}

std::optional<Setting> Settings::find(const std::string& section, const std::string& key) const {
    std::string value = read(section.c_str(), key.c_str(), "", selector());
    // An empty value is one that no default takes the place of.
    if (value.empty() && !read(section.c_str(), key.c_str(), "1", selector()).empty()) return std::nullopt;
    const bool isUser = application_ && appFoundInUserProfile();
    return Setting{std::move(value), application_ && !isUser ? &*application_ : &file_, isUser};
}

Setting Settings::require(const std::string& section, const std::string& key) const {
    if (auto found = find(section, key)) return *std::move(found);
    const std::string where = '[' + code_page::toUtf8(section) + ']';
    throw Failure(shown(), hasSection(section)
                               ? "section " + where + " has no key '" + code_page::toUtf8(key) + '\''
                               : "there is no section " + where);
}

std::vector<std::string> Settings::names(const char* section) const {
    std::vector<std::string> result;
    std::unordered_set<std::string> known;
    const auto add = [&](UINT_PTR from) {
        for (std::string& name : namesIn(read(section, nullptr, "", from))) {
            if (known.insert(folded(name)).second) result.push_back(std::move(name));
        }
    };
    add(profileFile(file_.path.c_str()));
    if (application_) add(profileFile(application_->path.c_str()));
    return result;
}

std::vector<std::string> Settings::sections() const { return names(nullptr); }

std::vector<std::string> Settings::keys(const std::string& section) const { return names(section.c_str()); }

bool Settings::hasSection(const std::string& section) const {
    for (const std::string& name : sections()) {
        if (folded(name) == folded(section)) return true;
    }
    return false;
}

std::string folded(std::string name) {
    CharLowerBuffA(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

std::string_view faultOfSection(std::string_view name) {
    return name.find(']') == std::string_view::npos ? faultOfName(name) : "holds ']'";
}

std::string_view faultOfKey(std::string_view name) {
    if (name.find('=') != std::string_view::npos) return "holds '='";
    if (name.starts_with('[')) return "begins like a section";
    if (name.starts_with(';')) return "begins like a comment";
    return faultOfName(name);
}

std::string sectionNamed(std::string_view utf8) { return checked(utf8, "SECTION", faultOfSection(utf8)); }

std::string keyNamed(std::string_view utf8) { return checked(utf8, "KEY", faultOfKey(utf8)); }

std::string entryShown(std::string_view section, std::string_view key) {
    return '[' + code_page::toUtf8(section) + "] " + code_page::toUtf8(key);
}

}  // namespace kor::profile
