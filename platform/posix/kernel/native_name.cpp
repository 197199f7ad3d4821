#include "platform/posix/kernel/native_name.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <new>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/current_folder.h"
#include "platform/posix/kernel/drive_map.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/platform_name.h"
#include "platform/posix/kernel/text_result.h"
#include "platform/posix/kernel/utf.h"
#include "platform/posix/kernel/windows_path.h"
#include "platform/posix/kernel/with_memory.h"

namespace kor {
namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

bool exists(const std::string& native) {
    struct stat status {};
    return lstat(native.c_str(), &status) == 0;
}

// The entry of a folder whose name is the same but for its case; of several the first by its bytes, so that
// the answer does not depend on the folder's order.
std::optional<std::string> entryWithoutCase(const std::string& folder, std::string_view name) {
    const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(folder.empty() ? "/" : folder.c_str()));
    if (!directory && errno == ENOMEM) throw std::bad_alloc();
    if (!directory) return std::nullopt;
    const std::string wanted = foldedName(name);
    std::optional<std::string> found;
    while (const dirent* entry = readdir(directory.get())) {
        const std::string_view candidate = entry->d_name;
        if (foldedName(candidate) == wanted && (!found || candidate < *found)) found = candidate;
    }
    return found;
}

std::string spelledAsOnDisk(const std::string& root, const std::vector<std::string_view>& components) {
    std::string wanted = root;
    for (const std::string_view component : components)
        wanted.append("/").append(component);
    if (wanted.empty()) return "/";
    if (exists(wanted)) return wanted;
    std::string native = root;
    bool present = true;
    for (const std::string_view component : components) {
        std::string next = native + "/" + std::string(component);
        if (present && !exists(next)) {
            const auto entry = errno == ENOENT ? entryWithoutCase(native, component) : std::nullopt;
            present = entry.has_value();
            if (entry) next = native + "/" + *entry;
        }
        native = std::move(next);
    }
    return native;
}

std::nullopt_t refused(DWORD code) {
    SetLastError(code);
    return std::nullopt;
}

std::optional<ResolvedPath> devicePath(std::string_view full) {
    if (foldedName(full) != "\\\\.\\NUL") return refused(ERROR_FILE_NOT_FOUND);
    return ResolvedPath{std::string(full), "/dev/null", false};
}

}  // namespace

std::optional<ResolvedPath> resolvePath(const char* path) {
    if (!path || !*path) return refused(ERROR_PATH_NOT_FOUND);
    const auto text = utf8FromText(path);
    return text ? resolveUtf8(*text) : refused(ERROR_INVALID_NAME);
}

std::optional<ResolvedPath> resolveEntry(const char* path) {
    auto resolved = resolvePath(path);
    if (resolved && resolved->full.starts_with("\\\\.\\")) return refused(ERROR_INVALID_PARAMETER);
    return resolved;
}

std::optional<ResolvedPath> resolveUtf8(std::string_view path) {
    const auto made = absolutePath(path);
    if (!made) return std::nullopt;
    std::string_view full = *made;
    if (full.starts_with("\\\\?\\")) full.remove_prefix(4);
    if (full.starts_with("\\\\.\\")) return devicePath(full);
    if (full.starts_with("\\\\")) return refused(ERROR_BAD_NETPATH);
    if (full.size() < 3 || full[1] != ':') return refused(ERROR_INVALID_NAME);
    const auto components = componentsOf(full);
    for (const std::string_view component : components) {
        if (!isValidComponent(component)) return refused(ERROR_INVALID_NAME);
    }
    const auto root = driveFolder(full[0]);
    if (!root) return refused(ERROR_PATH_NOT_FOUND);
    ResolvedPath result{{}, spelledAsOnDisk(*root, components), full.size() > 3 && full.back() == '\\'};
    if (result.native.size() >= PATH_MAX) return refused(ERROR_FILENAME_EXCED_RANGE);
    if (result.trailingSeparator) full.remove_suffix(1);
    result.full = full;
    return result;
}

std::optional<std::string> nativePath(const char* path) {
    auto resolved = resolvePath(path);
    if (!resolved) return std::nullopt;
    return std::move(resolved->native);
}

std::optional<std::string> windowsPath(std::string_view native) {
    if (native.empty()) return refused(ERROR_PATH_NOT_FOUND);
    std::string start;
    if (native[0] != '/') {
        const auto current = currentFolder();
        if (!current) return std::nullopt;
        start = driveFolder(current->front()).value_or("");
        for (const std::string_view component : componentsOf(*current))
            start.append("/").append(component);
    }
    std::vector<std::string> names;
    const std::string whole = start + "/" + std::string(native);
    for (std::size_t at = 0; at < whole.size();) {
        const std::size_t end = std::min(whole.find('/', at), whole.size());
        const std::string_view component = std::string_view(whole).substr(at, end - at);
        at = end + 1;
        if (component.empty() || component == ".") continue;
        if (component == "..") {
            if (!names.empty()) names.pop_back();
            continue;
        }
        auto name = platformName(component);
        if (!name) return refused(ERROR_INVALID_NAME);
        names.push_back(std::move(*name));
    }
    std::string result = "Z:";
    for (const std::string& name : names)
        result += "\\" + name;
    return names.empty() ? "Z:\\" : result;
}

BOOL failWithErrnoOf(const std::string& native) {
    if (errno != ENOENT) return failWithErrno();
    struct stat status {};
    const std::string folder = native.substr(0, native.rfind('/') + 1);
    const bool hasFolder = stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return failWith(hasFolder ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
}

}  // namespace kor

KORPLATFORM_API DWORD WINAPI korNativePath(LPCSTR path, LPSTR buffer, DWORD size) {
    return kor::withMemory(0, [&]() -> DWORD {
        const auto native = kor::nativePath(path);
        return native ? kor::textResult(*native, buffer, size) : 0;
    });
}

KORPLATFORM_API DWORD WINAPI korWindowsPath(LPCSTR native, LPSTR buffer, DWORD size) {
    return kor::withMemory(0, [&]() -> DWORD {
        const auto path = kor::windowsPath(native ? native : "");
        return path ? kor::textResult(*path, buffer, size) : 0;
    });
}

namespace {

// An empty text also gives 0: its last error tells it from a failure.
DWORD convertedResult(const std::optional<std::string>& text, LPSTR buffer, DWORD size) {
    SetLastError(text ? ERROR_SUCCESS : ERROR_NO_UNICODE_TRANSLATION);
    return text ? kor::textResult(*text, buffer, size) : 0;
}

}  // namespace

KORPLATFORM_API DWORD WINAPI korUtf8FromText(LPCSTR text, LPSTR buffer, DWORD size) {
    return kor::withMemory(
        0, [&]() -> DWORD { return convertedResult(kor::utf8FromText(text ? text : ""), buffer, size); });
}

KORPLATFORM_API DWORD WINAPI korTextFromUtf8(LPCSTR utf8, LPSTR buffer, DWORD size) {
    return kor::withMemory(
        0, [&]() -> DWORD { return convertedResult(kor::textFromUtf8(utf8 ? utf8 : ""), buffer, size); });
}
