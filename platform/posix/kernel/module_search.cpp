#include "platform/posix/kernel/module_search.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "korutil/platform.h"
#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/last_separator.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/loaded_modules.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/with_memory.h"

namespace kor {
namespace {

constexpr std::string_view kFolderEnds = "\\/:";

// A folder that the platform tells through a buffer.
template <typename Function>
void addTold(std::vector<std::string>& folders, Function function) {
    std::string buffer(MAX_PATH, '\0');
    DWORD length = function(buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length >= buffer.size()) {
        buffer.resize(length);
        length = function(buffer.data(), static_cast<DWORD>(buffer.size()));
    }
    if (length == 0) passShortageOn();
    if (length > 0 && length < buffer.size()) folders.push_back(buffer.substr(0, length));
}

bool isFile(const std::string& nativePath) {
    struct stat status {};
    return stat(nativePath.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// `NAME.dll`, and what a native library of that name is called.
std::vector<std::string> candidates(std::string_view name) {
    std::string full(name);
    const std::string_view file = fileNameOf(name);
    if (file.ends_with('.')) {
        full.pop_back();
    } else if (file.find('.') == std::string_view::npos) {
        full += ".dll";
    }
    std::vector<std::string> names{full};
    constexpr std::string_view kExtension = ".dll";
    const std::string key = moduleKey(fileNameOf(full));
    if (key.ends_with(kExtension) && fileNameOf(full).find(".so") == std::string_view::npos) {
        const std::size_t folder = full.size() - fileNameOf(full).size();
        full.resize(full.size() - kExtension.size());
        names.push_back(full.insert(folder, "lib") + ".so");
    }
    return names;
}

}  // namespace

std::vector<std::string> libraryFolders() {
    std::vector<std::string> folders;
    if (const auto host = moduleOf(nullptr)) {
        const auto folder = windowsPath(host->nativePath.substr(0, host->nativePath.rfind('/') + 1));
        if (folder) folders.push_back(*folder);
    }
    addTold(folders, [](char* buffer, DWORD size) { return GetCurrentDirectoryA(size, buffer); });
    addTold(folders, GetSystemDirectoryA);
    addTold(folders, GetWindowsDirectoryA);
    const char* environment = std::getenv("PATH");
    std::string_view rest = environment ? environment : "";
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const std::string_view folder = rest.substr(0, end);
        // A folder that is not absolute would be the current one under another name.
        if (folder.starts_with('/')) {
            if (const auto path = windowsPath(folder)) folders.push_back(*path);
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return folders;
}

std::string_view fileNameOf(std::string_view path) {
    return path.substr(lastSeparator(path, kFolderEnds) + 1);
}

std::string joined(const std::string& folder, std::string_view name) {
    return folder + (endsInSeparator(folder, "\\/") ? "" : "\\") + std::string(name);
}

bool hasFolder(std::string_view name) { return lastSeparator(name, kFolderEnds) != std::string_view::npos; }

std::optional<std::string> findLibrary(std::string_view name) {
    const std::vector<std::string> names = candidates(name);
    const auto found = [](const std::string& path) -> std::optional<std::string> {
        auto native = nativePath(path.c_str());
        return native && isFile(*native) ? native : std::nullopt;
    };
    if (hasFolder(name)) {
        for (const std::string& path : names) {
            if (auto native = found(path)) return native;
        }
        return std::nullopt;
    }
    for (const std::string& folder : libraryFolders()) {
        for (const std::string& candidate : names) {
            if (auto native = found(joined(folder, candidate))) return native;
        }
    }
    return std::nullopt;
}

bool namesFolder(std::string_view name) {
    for (const std::string& path : {std::string(name), candidates(name).front()}) {
        const auto native = nativePath(path.c_str());
        struct stat status {};
        if (native && stat(native->c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return true;
    }
    return false;
}

}  // namespace kor
