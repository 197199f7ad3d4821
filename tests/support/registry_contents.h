#pragma once
// What the registry holds during a test.
#include <string>
#include <string_view>
#include <vector>

#include "korutil/platform/registry.h"

namespace kor::test {

struct RegistryEntry {
    std::string key;  // below kRegistryBase
    std::string name;
    DWORD type;
    std::string bytes;
};

inline constexpr const char* kRegistryBase = "software\\Quorvex\\Lumetra\\3.0";

inline RegistryEntry registryText(std::string key, std::string name, const std::string& text) {
    return {std::move(key), std::move(name), REG_SZ, {text.c_str(), text.size() + 1}};
}

/// Puts these values into HKEY_LOCAL_MACHINE; natively into a registry of the process's own, in place of all
/// that was there.
void setRegistry(const std::vector<RegistryEntry>& entries);

/// Natively only: the bytes of a root's file; its native path.
std::string setRegistryFile(const char* root, std::string_view bytes);

}  // namespace kor::test
