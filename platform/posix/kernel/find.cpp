// Finding the entries of a folder.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/file_status.h"
#include "platform/posix/kernel/handle_table.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/platform_name.h"
#include "platform/posix/kernel/utf.h"
#include "platform/posix/kernel/wild_card.h"
#include "platform/posix/kernel/windows_path.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::ResolvedPath;

// The names that matched, told one by one with what the files are at that moment.
class Search final : public kor::HandleObject {
  public:
    Search(kor::Descriptor folder, std::vector<std::string> names)
        : folder_(std::move(folder)), names_(std::move(names)) {}

    // @return false when no entry is left; one that is gone by now is passed over
    bool next(WIN32_FIND_DATAA& data) {
        const std::lock_guard lock(mutex_);
        while (next_ < names_.size()) {
            errno = 0;
            const bool filled = fill(names_[next_], data);
            ++next_;  // not before: without memory the entry is still to be told
            if (filled) return true;
            denied_ = denied_ || errno == EACCES;
        }
        return false;
    }

    // Whether there was an entry that may be seen but not asked about.
    bool isDenied() const { return denied_; }

  private:
    bool fill(const std::string& name, WIN32_FIND_DATAA& data) const;

    kor::Descriptor folder_;
    std::vector<std::string> names_;
    std::size_t next_ = 0;
    bool denied_ = false;
    std::mutex mutex_;
};

bool isOwnName(std::string_view name) { return name == "." || name == ".."; }

bool Search::fill(const std::string& name, WIN32_FIND_DATAA& data) const {
    auto status = kor::statusOf(folder_.get(), name.c_str(), true);
    if (!status) status = kor::statusOf(folder_.get(), name.c_str(), false);
    const auto shown = isOwnName(name) ? name : kor::platformName(name);
    if (!status || !shown || shown->size() >= sizeof data.cFileName) return false;
    data = {};
    data.dwFileAttributes = kor::attributesOf(status->mode, name);
    data.ftCreationTime = status->creation;
    data.ftLastAccessTime = status->access;
    data.ftLastWriteTime = status->write;
    data.nFileSizeHigh = static_cast<DWORD>(status->size >> 32);
    data.nFileSizeLow = static_cast<DWORD>(status->size & 0xFFFFFFFF);
    std::memcpy(data.cFileName, shown->c_str(), shown->size() + 1);
    return true;
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

// At the end errno tells a failure, or is 0.
const dirent* nextEntry(DIR* directory) {
    errno = 0;
    return readdir(directory);
}

// The names of a folder that match, its own two first and then in the order of their capitals; nothing, with
// errno set, when the folder cannot be read to its end.
// @param literal  the names are used in a path that takes no name for a device
std::optional<std::vector<std::string>> matchingNames(DIR* directory, const kor::WildCard& pattern,
                                                      bool isRoot, bool literal) {
    std::vector<std::pair<std::string, std::string>> found;
    while (const dirent* entry = nextEntry(directory)) {
        const std::string_view name = entry->d_name;
        if (isOwnName(name) ? isRoot : !kor::platformName(name)) continue;
        if (!pattern.matches(name) || (!literal && kor::isDeviceName(name))) continue;
        // Nothing comes before a control character, which no other name holds.
        std::string key = isOwnName(name) ? std::string(1, '\x01').append(name) : kor::foldedName(name);
        found.emplace_back(std::move(key), name);
    }
    if (errno != 0) return std::nullopt;
    std::sort(found.begin(), found.end());
    std::vector<std::string> names;
    names.reserve(found.size());
    for (auto& entry : found)
        names.push_back(std::move(entry.second));
    return names;
}

HANDLE failed(DWORD code) {
    SetLastError(code);
    return INVALID_HANDLE_VALUE;
}

HANDLE started(kor::Descriptor folder, std::vector<std::string> names, WIN32_FIND_DATAA* data) {
    auto search = std::make_shared<Search>(std::move(folder), std::move(names));
    if (!search->next(*data)) return failed(search->isDenied() ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
    return kor::HandleTable::instance().add({std::move(search), 0});
}

// Opens the folder of a search; what is no folder is told as a missing path.
kor::Descriptor openFolder(const std::string& native) {
    kor::Descriptor folder(open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) SetLastError(errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND);
    return folder;
}

HANDLE findOne(std::string_view text, WIN32_FIND_DATAA* data) {
    const auto path = kor::resolveUtf8(text);
    if (!path) return INVALID_HANDLE_VALUE;
    const bool isEntry = path->full.size() > 3 && !path->full.starts_with("\\\\.\\");
    if (!isEntry) return failed(ERROR_FILE_NOT_FOUND);
    const std::size_t cut = path->native.rfind('/') + 1;
    kor::Descriptor folder = openFolder(path->native.substr(0, cut));
    if (!folder.isOpen()) return INVALID_HANDLE_VALUE;
    return started(std::move(folder), {path->native.substr(cut)}, data);
}

HANDLE findMatching(std::string_view folderText, std::string_view pattern, WIN32_FIND_DATAA* data) {
    const bool valid = std::all_of(pattern.begin(), pattern.end(), [](char character) {
        return static_cast<unsigned char>(character) >= 0x20 && character != '|' && character != ':';
    });
    if (!valid) return failed(ERROR_INVALID_NAME);
    const auto path = kor::resolveUtf8(std::string(folderText) + ".");
    if (!path) return INVALID_HANDLE_VALUE;
    kor::Descriptor folder = openFolder(path->native);
    if (!folder.isOpen()) return INVALID_HANDLE_VALUE;
    const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(path->native.c_str()));
    if (!directory) return failed(kor::errorFromErrno(errno));
    const bool isRoot = path->full.size() <= 3;
    const bool literal = folderText.starts_with("\\\\?\\");
    auto names = matchingNames(directory.get(), kor::WildCard(pattern), isRoot, literal);
    return names ? started(std::move(folder), std::move(*names), data) : failed(kor::errorFromErrno(errno));
}

}  // namespace

KORPLATFORM_API HANDLE WINAPI FindFirstFileA(LPCSTR name, WIN32_FIND_DATAA* data) {
    return kor::withMemory(INVALID_HANDLE_VALUE, [&]() -> HANDLE {
        if (!name || !*name) return failed(ERROR_PATH_NOT_FOUND);
        if (!data) return failed(ERROR_INVALID_PARAMETER);
        const auto text = kor::utf8FromText(name);
        if (!text) return failed(ERROR_INVALID_NAME);
        const bool plain = text->starts_with("\\\\?\\");
        const std::size_t cut = text->find_last_of(plain ? "\\/" : "\\/:") + 1;
        std::string_view pattern = std::string_view(*text).substr(cut);
        while (pattern.ends_with(' '))
            pattern.remove_suffix(1);
        const std::string_view folder = std::string_view(*text).substr(0, cut);
        if (kor::hasWildCard(pattern)) return findMatching(folder, pattern, data);
        // Nothing has an empty name, but the folder before it is looked for first.
        if (!pattern.empty()) return findOne(*text, data);
        const auto path = kor::resolveUtf8(std::string(folder) + ".");
        if (!path) return INVALID_HANDLE_VALUE;
        kor::Descriptor opened = openFolder(path->native);
        if (!opened.isOpen()) return INVALID_HANDLE_VALUE;
        return started(std::move(opened), {}, data);
    });
}

KORPLATFORM_API BOOL WINAPI FindNextFileA(HANDLE find, WIN32_FIND_DATAA* data) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        const auto search = std::dynamic_pointer_cast<Search>(kor::HandleTable::instance().find(find).object);
        if (!search) return kor::failWith(ERROR_INVALID_HANDLE);
        return search->next(*data) || kor::failWith(ERROR_NO_MORE_FILES);
    });
}

KORPLATFORM_API BOOL WINAPI FindClose(HANDLE find) {
    const auto search = std::dynamic_pointer_cast<Search>(kor::HandleTable::instance().find(find).object);
    if (!search) return kor::failWith(ERROR_INVALID_HANDLE);
    kor::HandleTable::instance().remove(find);
    return TRUE;
}
