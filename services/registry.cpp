#include "korutil/registry.h"

#include <array>
#include <string_view>

#include "platform/win32.h"
#include "runtime/text_argument.h"

namespace kor {
namespace {

constexpr std::string_view kBaseKey = "software\\Quorvex\\Lumetra\\3.0\\";
constexpr std::array<const char*, 3> kSubkeys = {"UserInfo", "URLInfo", "Directories"};  // numbers 1, 2, 3
constexpr std::size_t kNameRoom = 256;

using KeyPath = std::array<char, kNameRoom>;

// The name of the subkey; null when its text cannot be loaded.
const char* subkeyName(UINT_PTR subkey, HINSTANCE module, KeyPath& buffer) {
    if (subkey >= 1 && subkey <= kSubkeys.size()) return kSubkeys[subkey - 1];
    const auto* name = reinterpret_cast<const char*>(subkey);
    if (!IS_INTRESOURCE(name)) return name;
    if (!module) return "";
    return subkey ? resolveText(name, module, buffer) : nullptr;
}

// @return false when it does not fit
bool makePath(std::string_view name, KeyPath& path) {
    // Without its last backslash the base key is a name of its own.
    const std::string_view base = name.empty() ? kBaseKey.substr(0, kBaseKey.size() - 1) : kBaseKey;
    if (base.size() + name.size() >= path.size()) return false;
    base.copy(path.data(), base.size());
    name.copy(path.data() + base.size(), name.size());
    path[base.size() + name.size()] = '\0';
    return true;
}

// What a value's name stands for; false when it is a number without a text.
bool resolveValueName(const char*& name, HINSTANCE module, KeyPath& buffer) {
    if (!isTextNumber(name)) return true;
    name = resolveText(name, module, buffer);
    return name != nullptr;
}

// A text in the registry may lack its terminator.
bool readString(HKEY key, const char* name, char* buffer, DWORD size) {
    DWORD type = REG_NONE;
    DWORD length = size;
    const LSTATUS status =
        RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &length);
    if (status != ERROR_SUCCESS) return false;
    if (type != REG_SZ) {
        buffer[0] = '\0';
        return false;
    }
    const bool terminated = length > 0 && buffer[length - 1] == '\0';
    if (!terminated) buffer[length < size ? length : 0] = '\0';
    return terminated || length < size;
}

}  // namespace
}  // namespace kor

HKEY KORUTIL_CALL appOpenRegKey(UINT_PTR subkey, DWORD access, HINSTANCE module) {
    kor::KeyPath loaded{};
    kor::KeyPath path{};
    const char* name = kor::subkeyName(subkey, module, loaded);
    HKEY key = nullptr;
    if (!name || !kor::makePath(name, path)) return nullptr;
    return RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.data(), 0, access, &key) == ERROR_SUCCESS ? key : nullptr;
}

BOOL KORUTIL_CALL appCloseRegKey(HKEY key) { return key && RegCloseKey(key) == ERROR_SUCCESS; }

BOOL KORUTIL_CALL appGetRegString(HKEY key, const char* valueName, char* buffer, DWORD size,
                                  HINSTANCE module) {
    kor::KeyPath loaded{};
    if (!buffer || size == 0 || !kor::resolveValueName(valueName, module, loaded)) return FALSE;
    return kor::readString(key, valueName, buffer, size);
}

BOOL KORUTIL_CALL appGetRegDWORD(HKEY key, const char* valueName, DWORD* result, HINSTANCE module) {
    kor::KeyPath loaded{};
    if (!result || !kor::resolveValueName(valueName, module, loaded)) return FALSE;
    DWORD type = REG_NONE;
    DWORD value = 0;
    DWORD length = sizeof value;
    const LSTATUS status =
        RegQueryValueExA(key, valueName, nullptr, &type, reinterpret_cast<BYTE*>(&value), &length);
    if (status != ERROR_SUCCESS || type != REG_DWORD) return FALSE;
    *result = value;
    return TRUE;
}
