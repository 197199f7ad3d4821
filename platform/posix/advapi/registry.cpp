// The registry's functions.
#include "korutil/platform/registry.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "korutil/platform/last_error.h"
#include "platform/posix/advapi/registry_file.h"
#include "platform/posix/advapi/registry_text.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/handle_table.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/utf.h"

namespace {

using kor::RegistryFile;
using kor::RegistryTree;

constexpr REGSAM kChangeSecurity = 0x000C0000;  // WRITE_DAC, WRITE_OWNER
constexpr REGSAM kWriting = KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | DELETE | kChangeSecurity |
                            GENERIC_WRITE | GENERIC_ALL;
constexpr REGSAM kQuerying = KEY_QUERY_VALUE | GENERIC_READ | GENERIC_EXECUTE | MAXIMUM_ALLOWED;

// Where a key is: what it holds is looked up whenever it is used.
struct Location final : kor::HandleObject {
    Location(RegistryFile* keyFile, std::string keyPath) : file(keyFile), path(std::move(keyPath)) {}

    RegistryFile* file;
    std::string path;  // folded, below the root
};

kor::Opened<Location> locate(HKEY key) {
    if (RegistryFile* root = kor::registryFile(key)) return {std::make_shared<Location>(root, ""), KEY_READ};
    const kor::HandleTable::Entry entry = kor::HandleTable::instance().find(key);
    return {std::dynamic_pointer_cast<Location>(entry.object), entry.access};
}

RegistryTree::Entry find(const RegistryTree& tree, const std::string& path) {
    RegistryTree::Entry entry = RegistryTree::kRoot;
    for (const std::string_view name : kor::registryKeyNames(path)) {
        entry = tree.key(entry, name);
        if (entry == RegistryTree::kNone) break;
    }
    return entry;
}

// The folded form of a name in the code page; nothing for what is no text there, which no name is.
std::optional<std::string> foldedText(LPCSTR text) {
    const auto utf8 = kor::utf8FromText(text ? text : "");
    if (!utf8) return std::nullopt;
    return kor::foldedName(*utf8);
}

// Does the work of a function whose result is the error.
template <class Work>
LSTATUS statusOf(Work work) try {
    return work();
} catch (const std::bad_alloc&) {
    return ERROR_NOT_ENOUGH_MEMORY;
}

LSTATUS openKey(const Location& above, LPCSTR subKey, REGSAM access, PHKEY result) {
    const auto name = foldedText(subKey);
    if (!name) return ERROR_FILE_NOT_FOUND;
    auto location = std::make_shared<Location>(above.file, above.path + '\\' + *name);
    const RegistryFile::State state = location->file->current();
    if (!state.tree) return state.status;
    if (find(*state.tree, location->path) == RegistryTree::kNone) return ERROR_FILE_NOT_FOUND;
    if (access & kWriting) return ERROR_ACCESS_DENIED;
    *result = static_cast<HKEY>(kor::HandleTable::instance().add({std::move(location), access}));
    return ERROR_SUCCESS;
}

LSTATUS queryValue(const Location& key, LPCSTR name, LPDWORD type, LPBYTE data, LPDWORD size) {
    const RegistryFile::State state = key.file->current();
    if (!state.tree) return state.status;
    const RegistryTree::Entry entry = find(*state.tree, key.path);
    if (entry == RegistryTree::kNone) return ERROR_KEY_DELETED;
    const auto folded = foldedText(name);
    kor::RegistryValue value;
    if (!folded || !state.tree->value(entry, *folded, value)) return ERROR_FILE_NOT_FOUND;
    if (type) *type = value.type;
    if (!size) return ERROR_SUCCESS;
    const DWORD room = *size;
    *size = static_cast<DWORD>(value.bytes.size());
    if (!data) return ERROR_SUCCESS;
    if (room < value.bytes.size()) return ERROR_MORE_DATA;
    std::copy(value.bytes.begin(), value.bytes.end(), data);
    return ERROR_SUCCESS;
}

}  // namespace

KORPLATFORM_API LSTATUS WINAPI RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD, REGSAM access, PHKEY result) {
    if (!result) return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    return statusOf([&]() -> LSTATUS {
        const auto above = locate(key);
        if (!above) return ERROR_INVALID_HANDLE;
        if (subKey && *subKey == '\\') return ERROR_BAD_PATHNAME;
        const bool isRoot = kor::registryFile(key) && (!subKey || !*subKey);
        if (!isRoot) return openKey(*above.object, subKey, access, result);
        *result = key;
        return ERROR_SUCCESS;
    });
}

KORPLATFORM_API LSTATUS WINAPI RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type,
                                                LPBYTE data, LPDWORD size) {
    if (reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
    return statusOf([&]() -> LSTATUS {
        const auto location = locate(key);
        if (!location) return ERROR_INVALID_HANDLE;
        if (!(location.access & kQuerying)) return ERROR_ACCESS_DENIED;
        return queryValue(*location.object, name, type, data, size);
    });
}

KORPLATFORM_API LSTATUS WINAPI RegCloseKey(HKEY key) {
    return statusOf([&]() -> LSTATUS {
        if (kor::registryFile(key)) return ERROR_SUCCESS;
        if (!locate(key)) return ERROR_INVALID_HANDLE;
        kor::HandleTable::instance().remove(key);
        return ERROR_SUCCESS;
    });
}
