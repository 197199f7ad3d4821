#include <gtest/gtest.h>

#include "platform/win32.h"
#include "tests/support/registry_contents.h"

void kor::test::setRegistry(const std::vector<RegistryEntry>& entries) {
    for (const auto& [below, name, type, bytes] : entries) {
        const std::string path = std::string(kRegistryBase) + '\\' + below;
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyA(HKEY_LOCAL_MACHINE, path.c_str(), &key), ERROR_SUCCESS) << path;
        const auto* data = reinterpret_cast<const BYTE*>(bytes.data());
        EXPECT_EQ(RegSetValueExA(key, name.c_str(), 0, type, data, static_cast<DWORD>(bytes.size())), 0);
        RegCloseKey(key);
    }
}
