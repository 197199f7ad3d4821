#include <array>
#include <new>
#include <string>

#include "host/log.h"
#include "korutil/lifecycle.h"
#include "platform/win32.h"
#include "runtime/folder_form.h"
#include "runtime/process_state.h"

namespace kor {
namespace {

constexpr UINT kNoErrorBoxes = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;

// Sets the error mode while it lives; 0 keeps the current one.
class ErrorModeScope {
  public:
    explicit ErrorModeScope(UINT mode) : set_(mode != 0), former_(set_ ? SetErrorMode(mode) : 0) {}
    ErrorModeScope(const ErrorModeScope&) = delete;
    ErrorModeScope& operator=(const ErrorModeScope&) = delete;
    ~ErrorModeScope() {
        if (set_) SetErrorMode(former_);
    }

  private:
    bool set_;
    UINT former_;
};

using PathBuffer = std::array<char, MAX_PATH>;

// The text of a path function's buffer; empty when the function failed or the path does not fit.
std::string pathText(const PathBuffer& buffer, DWORD length) {
    return length < buffer.size() ? std::string(buffer.data(), length) : std::string();
}

std::string hostFolder() {
    PathBuffer buffer;
    return folderOf(pathText(buffer, GetModuleFileNameA(processState().host, buffer.data(), MAX_PATH)));
}

std::string folderFor(DWORD options) {
    PathBuffer buffer;
    if (options & kLoadFromSystemFolder)
        return pathText(buffer, GetSystemDirectoryA(buffer.data(), MAX_PATH));
    if (options & kLoadFromWindowsFolder)
        return pathText(buffer, GetWindowsDirectoryA(buffer.data(), MAX_PATH));
    return hostFolder();
}

// Makes a folder the current one while it lives. Without boxes: a drive without a medium would ask for one.
class FolderScope {
  public:
    explicit FolderScope(std::string folder) {
        PathBuffer buffer;
        former_ = pathText(buffer, GetCurrentDirectoryA(MAX_PATH, buffer.data()));
        if (folder.empty() || former_.empty()) return;
        normaliseFolder(folder);
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
    const FolderScope folder(isAbsolutePath(name) ? std::string() : folderFor(options));
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
