#include "korutil/platform/module.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/loaded_modules.h"
#include "platform/posix/kernel/module_search.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using ModulePointer = std::shared_ptr<kor::Module>;

ModulePointer failed(DWORD error) {
    SetLastError(error);
    return nullptr;
}

// The key of a name in the code page; of one that is no text there the bytes, which no file is called.
std::string keyOf(const char* name) { return kor::moduleKey(kor::utf8FromText(name).value_or(name)); }

// A loaded module by its name or path.
ModulePointer loadedModule(const char* name) {
    if (!kor::hasFolder(name)) return kor::moduleByKey(keyOf(name));
    const auto path = kor::findLibrary(name);
    return path ? kor::moduleByPath(*path) : nullptr;
}

// A data file is missed as files are, a library in one way only: required, as the system does so.
DWORD missingError(const char* name, bool dataFile) {
    if (!dataFile) return ERROR_MOD_NOT_FOUND;
    return kor::namesFolder(name) ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
}

ModulePointer load(const char* name, DWORD flags) {
    const bool dataFile = (flags & LOAD_LIBRARY_AS_DATAFILE) != 0;
    if (!name || !*name) return failed(dataFile ? ERROR_INVALID_PARAMETER : ERROR_MOD_NOT_FOUND);
    if (!kor::hasFolder(name)) {
        if (const auto known = kor::moduleByKey(keyOf(name)); known && kor::addReference(known, false)) {
            return known;
        }
    }
    const auto path = kor::findLibrary(name);
    if (!path) return failed(missingError(name, dataFile));
    return kor::loadModule(*path, dataFile || (flags & DONT_RESOLVE_DLL_REFERENCES));
}

std::atomic<UINT> errorMode{0};

}  // namespace

HMODULE WINAPI LoadLibraryExA(LPCSTR name, HANDLE reserved, DWORD flags) {
    return kor::withMemory(nullptr, [&]() -> HMODULE {
        if (reserved) return kor::handleOf(failed(ERROR_INVALID_PARAMETER));
        return kor::handleOf(load(name, flags));
    });
}

HMODULE WINAPI LoadLibraryA(LPCSTR name) { return LoadLibraryExA(name, nullptr, 0); }

BOOL WINAPI FreeLibrary(HMODULE module) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (module && kor::releaseReference(module)) return TRUE;
        SetLastError(module ? ERROR_MOD_NOT_FOUND : ERROR_INVALID_HANDLE);
        return FALSE;
    });
}

HMODULE WINAPI GetModuleHandleA(LPCSTR name) {
    return kor::withMemory(nullptr, [&]() -> HMODULE {
        const auto module = name ? loadedModule(name) : kor::moduleOf(nullptr);
        if (!module) SetLastError(ERROR_MOD_NOT_FOUND);
        return kor::handleOf(module);
    });
}

BOOL WINAPI GetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module) {
    if (module) *module = nullptr;
    return kor::withMemory(FALSE, [&]() -> BOOL {
        constexpr DWORD kKnown = GET_MODULE_HANDLE_EX_FLAG_PIN |
                                 GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT |
                                 GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
        constexpr DWORD kExclusive =
            GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
        if (!module || (flags & ~kKnown) || (flags & kExclusive) == kExclusive) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return FALSE;
        }
        const bool fromAddress = (flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) != 0;
        auto found = fromAddress ? kor::objectAt(name) : name ? loadedModule(name) : kor::moduleOf(nullptr);
        if (found && !(flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) &&
            !kor::addReference(found, (flags & GET_MODULE_HANDLE_EX_FLAG_PIN) != 0)) {
            found = nullptr;
        }
        *module = kor::handleOf(found);
        if (!found) SetLastError(ERROR_MOD_NOT_FOUND);
        return found ? TRUE : FALSE;
    });
}

DWORD WINAPI GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
    return kor::withMemory(0, [&]() -> DWORD {
        const auto found = kor::moduleOf(module);
        if (!found) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return 0;
        }
        const auto text = kor::windowsPath(found->nativePath);
        if (!text) return 0;
        if (size == 0 || !path) {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        const std::size_t length = std::min<std::size_t>(text->size(), size - 1);
        std::memcpy(path, text->data(), length);
        path[length] = '\0';
        if (length == text->size()) return static_cast<DWORD>(length);
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
    });
}

FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) {
    return kor::withMemory(nullptr, [&]() -> FARPROC {
        const auto found = kor::moduleOf(module);
        if (!found) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return nullptr;
        }
        void* symbol = !IS_INTRESOURCE(name) && *name ? kor::symbolOf(*found, name) : nullptr;
        if (!symbol) SetLastError(ERROR_PROC_NOT_FOUND);
        return reinterpret_cast<FARPROC>(symbol);
    });
}

UINT WINAPI SetErrorMode(UINT mode) { return errorMode.exchange(mode); }

UINT WINAPI GetErrorMode() { return errorMode; }
