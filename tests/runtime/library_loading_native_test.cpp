// Current folders with longer names than other systems have.
#include <gtest/gtest.h>

#include <string>

#include "korutil/lifecycle.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

std::string currentFolder() {
    char buffer[4096];
    return std::string(buffer, GetCurrentDirectoryA(sizeof buffer, buffer));
}

TEST(NativeLibraryLoading, StartsInTheHostsFolderFromOneWithALongName) {
    const kor::test::ScratchFolder scratch;
    const std::string former = currentFolder();
    const std::string outer = scratch.folder(std::string(200, 'a'));
    const std::string inner = outer + "\\" + std::string(200, 'b');
    ASSERT_TRUE(CreateDirectoryA(inner.c_str(), nullptr));
    char host[4096], found[4096] = "";
    ASSERT_NE(GetModuleFileNameA(nullptr, host, sizeof host), 0u);
    const std::string name = std::string(host).substr(std::string(host).rfind('\\') + 1);
    ASSERT_TRUE(SetCurrentDirectoryA(inner.c_str()));
    EXPECT_NE(appSearchPath(".", name.c_str(), nullptr, sizeof found, found, nullptr), 0u) << GetLastError();
    EXPECT_STREQ(found, host);
    EXPECT_EQ(currentFolder(), inner);
    EXPECT_TRUE(SetCurrentDirectoryA(former.c_str()));
}

}  // namespace
