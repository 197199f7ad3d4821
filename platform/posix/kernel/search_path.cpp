#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/module_search.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

// Not looked for in the list of folders: absolute names, and those that start at the current folder.
bool standsForItself(std::string_view name) {
    return name.starts_with('\\') || name.starts_with('/') || (name.size() > 1 && name[1] == ':') ||
           name.starts_with(".\\") || name.starts_with("./") || name.starts_with("..\\") ||
           name.starts_with("../");
}

std::vector<std::string> splitFolders(std::string_view list) {
    std::vector<std::string> folders;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(';'), list.size());
        if (end > 0) folders.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return folders;
}

bool exists(const std::string& path) {
    if (GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    kor::passShortageOn();
    return false;
}

}  // namespace

DWORD WINAPI SearchPathA(LPCSTR path, LPCSTR file, LPCSTR extension, DWORD size, LPSTR buffer, LPSTR* part) {
    return kor::withMemory(0, [&]() -> DWORD {
        if (!file || !*file) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return 0;
        }
        std::string name(file);
        if (extension && kor::fileNameOf(name).find('.') == std::string_view::npos) name += extension;
        std::string found;
        if (standsForItself(name)) {
            if (exists(name)) found = name;
        } else {
            for (const std::string& folder : path ? splitFolders(path) : kor::libraryFolders()) {
                const std::string candidate = kor::joined(folder, name);
                if (!exists(candidate)) continue;
                found = candidate;
                break;
            }
        }
        if (found.empty()) {
            SetLastError(ERROR_FILE_NOT_FOUND);
            return 0;
        }
        return GetFullPathNameA(found.c_str(), size, buffer, part);
    });
}
