#include <gtest/gtest.h>

#include "platform/win32.h"

TEST(ResourceLibrary, TellsTheRequiredVersionByItsExport) {
    const HMODULE library = LoadLibraryA("KorTestL.dll");
    ASSERT_NE(library, nullptr) << GetLastError();
    using Version = DWORD(WINAPI*)();
    const auto version = reinterpret_cast<Version>(
        reinterpret_cast<void*>(GetProcAddress(library, "RequiredResourceDllVersion")));
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(version(), 0x30007u);
    EXPECT_TRUE(FreeLibrary(library));
}
