// The library's reads of installation data.
#include "korutil/registry.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"
#include "tests/support/registry_contents.h"

namespace {

UINT_PTR text(const char* name) { return reinterpret_cast<UINT_PTR>(name); }

class AppRegistry : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        using kor::test::registryText;
        kor::test::setRegistry({registryText("", "Base", "here"),
                                registryText("UserInfo", "Name", "Ann"),
                                registryText("URLInfo", "Home", "http://quorvex.example/"),
                                {"URLInfo", "Port", REG_DWORD, {"\xEE\xFF\xC0\0", 4}},
                                registryText("Directories", "Images", "C:\\Images"),
                                registryText("Other\\Deep", "Name", "deep")});
    }

    // A text below a key, or why there is none.
    static std::string read(UINT_PTR subkey, const char* name) {
        const HKEY key = appOpenRegKey(subkey, KEY_READ, nullptr);
        if (!key) return "no key";
        char value[64] = "no value";
        const BOOL result = appGetRegString(key, name, value, sizeof value, nullptr);
        EXPECT_EQ(result, *value && std::string(value) != "no value");
        EXPECT_TRUE(appCloseRegKey(key));
        return value;
    }
};

}  // namespace

TEST_F(AppRegistry, OpensAKeyBySelectorAndReadsItsTexts) {
    EXPECT_EQ(read(kRegKeyUserInfo, "Name"), "Ann");
    EXPECT_EQ(read(2, "Home"), "http://quorvex.example/");
    EXPECT_EQ(read(kRegKeyDirectories, "images"), "C:\\Images");
    EXPECT_EQ(read(text("OTHER\\deep"), "Name"), "deep");
    EXPECT_EQ(read(4, "Base"), "here") << "a number without a module: the fixed key itself";
    EXPECT_EQ(read(text(""), "Base"), "here");
    EXPECT_EQ(read(2, "Port"), "") << "a number";
    EXPECT_EQ(read(2, MAKEINTRESOURCEA(10006)), "no value") << "a number without a module";
    EXPECT_EQ(read(text("none"), ""), "no key");
    EXPECT_EQ(read(text(std::string(300, 'x').c_str()), ""), "no key") << "too long";
    EXPECT_EQ(appOpenRegKey(65000, KEY_READ, GetModuleHandleA("KorUtil")), nullptr) << "no such string";
    EXPECT_FALSE(appCloseRegKey(nullptr));
}

TEST_F(AppRegistry, GivesAValueWholeOrNotAtAll) {
    const HKEY key = appOpenRegKey(kRegKeyUrlInfo, KEY_READ, nullptr);
    DWORD number = 7;
    char value[32] = "untouched";
    EXPECT_FALSE(appGetRegDWORD(key, "Home", &number, nullptr)) << "a text";
    EXPECT_FALSE(appGetRegDWORD(key, "none", &number, nullptr));
    EXPECT_EQ(number, 7u);
    EXPECT_TRUE(appGetRegDWORD(key, "Port", &number, nullptr));
    EXPECT_EQ(number, 0xC0FFEEu);
    EXPECT_FALSE(appGetRegString(key, "Home", value, 23, nullptr)) << "no room for the terminator";
    EXPECT_STREQ(value, "untouched");
    EXPECT_TRUE(appGetRegString(key, "Home", value, 24, nullptr));
    EXPECT_TRUE(appCloseRegKey(key));
}
