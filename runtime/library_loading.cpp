#include <cstddef>
#include <new>
#include <string>

#include "host/log.h"
#include "korutil/lifecycle.h"
#include "korutil/path.h"
#include "platform/last_separator.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"
#include "runtime/process_state.h"

namespace kor {
namespace {

// The text of a path function that tells the size it needs; empty when it failed.
template <typename Function>
std::string pathText(Function function) {
    std::string text(MAX_PATH, '\0');
    DWORD length = function(text.data(), static_cast<DWORD>(text.size()));
    // A path that grows meanwhile is asked for again, but not for ever.
    for (int tries = 0; tries < 4 && length >= text.size(); ++tries) {
        text.resize(std::size_t{length} + 1);
        length = function(text.data(), static_cast<DWORD>(text.size()));
    }
    text.resize(length < text.size() ? length : 0);
    return text;
}

// This one tells a path that is cut by the size it was given.
std::string hostFileName() {
    constexpr std::size_t kMost = 0x10000;
    for (std::string text(MAX_PATH, '\0'); text.size() <= kMost; text.resize(text.size() * 2)) {
        const DWORD length =
            GetModuleFileNameA(processState().host, text.data(), static_cast<DWORD>(text.size()));
        if (length < text.size()) return text.substr(0, length);
    }
    return {};
}

// What stands before the last backslash.
std::string hostFolder() {
    std::string folder = hostFileName();
    const std::size_t end = lastSeparator(folder, "\\");
    folder.resize(end == std::string::npos ? 0 : end);
    return folder;
}

std::string folderFor(DWORD options) {
    if (options & kLoadFromSystemFolder) return pathText(GetSystemDirectoryA);
    if (options & kLoadFromWindowsFolder) return pathText(GetWindowsDirectoryA);
    return hostFolder();
}

// Makes a folder the current one while it lives. Without boxes: a drive without a medium would ask for one.
class FolderScope {
  public:
    explicit FolderScope(std::string folder) {
        former_ = pathText([](char* buffer, DWORD size) { return GetCurrentDirectoryA(size, buffer); });
        if (folder.empty() || former_.empty()) return;
        folder += '\0';  // room for a root's backslash
        sysMakeCommdlgDir(folder.data());
        if (lstrcmpiA(folder.c_str(), former_.c_str()) != 0) changed_ = change(folder);
    }
    FolderScope(const FolderScope&) = delete;
    FolderScope& operator=(const FolderScope&) = delete;
    ~FolderScope() {
        if (changed_) change(former_);
    }

  private:
    static bool change(const std::string& folder) {
        const ErrorModeScope quiet(kNoErrorBoxes);
        return SetCurrentDirectoryA(folder.c_str()) != FALSE;
    }

    std::string former_;
    bool changed_ = false;
};

struct Loaded {
    HMODULE module;
    DWORD error;
};

Loaded loadIn(const FolderScope&, const char* name, UINT errorMode, DWORD loadFlags, bool silent) {
    const ErrorModeScope mode(errorMode);
    // The framework's loader (option 4) is the plain one.
    HMODULE module = loadFlags ? LoadLibraryExA(name, nullptr, loadFlags) : LoadLibraryA(name);
    const Loaded loaded{module, GetLastError()};
    if (!silent) {
        // The log's %lx takes 32 bits: natively the lower half of the handle.
        const auto handle = static_cast<DWORD>(reinterpret_cast<UINT_PTR>(module));
        printLog(kDebugLogLoader, "ALL '%s'=0x%lx, %u\n", name, handle, loaded.error);
    }
    return loaded;
}

Loaded loadModule(const char* name, UINT errorMode, DWORD loadFlags, DWORD options) {
    const bool silent = (options & kLoadWithoutLog) || loadFlags == LOAD_LIBRARY_AS_DATAFILE;
    if (!silent)
        printLog(kDebugLogLoader, "ALL '%s', 0x%lx, 0x%lx, 0x%lx\n", name, errorMode, loadFlags, options);
    const FolderScope folder(sysIsAbsPath(name) ? std::string() : folderFor(options));
    return loadIn(folder, name, errorMode, loadFlags, silent);
}

}  // namespace
}  // namespace kor

HMODULE KORUTIL_CALL appLoadLibrary(const char* name, UINT errorMode, DWORD loadFlags, DWORD options) {
    kor::Loaded loaded{nullptr, ERROR_INVALID_PARAMETER};
    try {
        if (name) loaded = kor::loadModule(name, errorMode, loadFlags, options);
    } catch (const std::bad_alloc&) {
        loaded.error = ERROR_NOT_ENOUGH_MEMORY;
    }
    SetLastError(loaded.error);
    return loaded.module;
}

DWORD KORUTIL_CALL appSearchPath(const char* path, const char* name, const char* extension, DWORD size,
                                 char* buffer, char** filePart) {
    DWORD length = 0;
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;
    try {
        const kor::FolderScope folder(kor::hostFolder());
        length = SearchPathA(path, name, extension, size, buffer, filePart);
        error = GetLastError();
    } catch (const std::bad_alloc&) {
        length = 0;
    }
    SetLastError(error);
    return length;
}
