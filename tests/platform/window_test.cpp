#include <gtest/gtest.h>

#include "platform/win32.h"
#include "tests/platform/seeded.h"

namespace {

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcA(window, message, wParam, lParam);
}

WNDCLASSA classNamed(const char* name, HINSTANCE module) {
    WNDCLASSA record{};
    record.lpfnWndProc = procedure;
    record.lpszClassName = name;
    record.hInstance = module;
    return record;
}

}  // namespace

TEST(WindowClass, IsRegisteredOncePerModule) {
    const HINSTANCE host = GetModuleHandleA(nullptr), other = GetModuleHandleA("kernel32");
    const WNDCLASSA record = classNamed("KorTestClass", host), foreign = classNamed("KorTestClass", other);
    const ATOM atom = RegisterClassA(&record);
    ASSERT_GE(atom, 0xC000);
    const WNDCLASSA again = classNamed("KORTESTCLASS", host);
    EXPECT_FAILS(ERROR_CLASS_ALREADY_EXISTS, RegisterClassA(&again)) << "case does not matter";
    EXPECT_EQ(RegisterClassA(&foreign), atom) << "one name has one atom";
    EXPECT_TRUE(UnregisterClassA("kortestclass", host));
    WNDCLASSA found{};
    EXPECT_FALSE(GetClassInfoA(host, "KorTestClass", &found)) << "only the other module's is left";
    EXPECT_TRUE(GetClassInfoA(other, "KorTestClass", &found));
    EXPECT_TRUE(UnregisterClassA("KorTestClass", other));
    EXPECT_FAILS(ERROR_CLASS_DOES_NOT_EXIST, UnregisterClassA("KorTestClass", other));
}

TEST(WindowClass, IsFoundByNameAndAtom) {
    const HINSTANCE host = GetModuleHandleA(nullptr);
    WNDCLASSA record = classNamed("KorTestFound", host);
    record.lpszMenuName = "KorMenu";
    const ATOM atom = RegisterClassA(&record);
    ASSERT_NE(atom, 0);
    for (const LPCSTR name : {LPCSTR{"kortestfound"}, LPCSTR{MAKEINTRESOURCEA(atom)}}) {
        WNDCLASSA found{};
        EXPECT_EQ(GetClassInfoA(host, name, &found), atom);
        EXPECT_EQ(found.lpszClassName, name);
        EXPECT_EQ(found.lpfnWndProc, procedure);
        EXPECT_EQ(found.hInstance, host);
        EXPECT_STREQ(found.lpszMenuName, "KorMenu");
    }
    EXPECT_TRUE(UnregisterClassA(MAKEINTRESOURCEA(atom), host));
    WNDCLASSA found{};
    EXPECT_FAILS(ERROR_CLASS_DOES_NOT_EXIST, GetClassInfoA(host, "KorTestFound", &found));
}

TEST(WindowClass, WithAGlobalStyleIsEveryModules) {
    const HINSTANCE host = GetModuleHandleA(nullptr), other = GetModuleHandleA("kernel32");
    WNDCLASSA record = classNamed("KorTestGlobal", other);
    record.style = CS_GLOBALCLASS;
    const ATOM atom = RegisterClassA(&record);
    WNDCLASSA found{};
    EXPECT_EQ(GetClassInfoA(host, "KorTestGlobal", &found), atom);
    EXPECT_TRUE(UnregisterClassA("KorTestGlobal", other));
}

TEST(Cursor, OfTheSystemIsShared) {
    const HCURSOR arrow = LoadCursorA(nullptr, IDC_ARROW);
    EXPECT_NE(arrow, nullptr);
    EXPECT_EQ(LoadCursorA(nullptr, IDC_ARROW), arrow);
    EXPECT_NE(LoadCursorA(nullptr, IDC_WAIT), arrow);
    EXPECT_EQ(LoadCursorA(nullptr, MAKEINTRESOURCEA(106)), nullptr);
}
