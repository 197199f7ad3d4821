// Keys and values as the system gives them.
#include "korutil/platform/registry.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/seeded.h"
#include "tests/support/registry_contents.h"

using kor::test::registryText;

namespace {

using namespace std::string_literals;

const std::string kKey = kor::test::kRegistryBase + "\\Key"s;

class Registry : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        kor::test::setRegistry({registryText("Key", "Text", "abc"),
                                registryText("Key", "", "default"),
                                registryText("Key\\Sub", "Text", "below"),
                                {"Key", "Empty", REG_SZ, ""},
                                {"Key", "Multi", REG_MULTI_SZ, "a\0b\0\0"s},
                                {"Key", "Bytes", REG_BINARY, "\x00\xFF\x0D"s},
                                {"Key", "Number", REG_DWORD, "\x78\x56\x34\x12"s},
                                {"Key", "None", REG_NONE, "x"}});
    }
    void SetUp() override { ASSERT_EQ(open(HKEY_LOCAL_MACHINE, kKey.c_str(), KEY_READ, key_), 0); }
    void TearDown() override { EXPECT_EQ(RegCloseKey(key_), 0); }

    static LSTATUS open(HKEY above, const char* path, REGSAM access, HKEY& key) {
        key = reinterpret_cast<HKEY>(UINT_PTR{4});
        return RegOpenKeyExA(above, path, 0, access, &key);
    }
    // The status, and for a key that was opened its value "Text".
    static std::string textBelow(HKEY above, const char* path) {
        HKEY key = nullptr;
        const LSTATUS status = open(above, path, KEY_READ, key);
        if (status != 0) return std::to_string(status) + (key ? " with a key" : "");
        char text[16] = "none";
        DWORD size = sizeof text;
        RegQueryValueExA(key, "Text", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
        return RegCloseKey(key) == 0 ? text : "not closed";
    }

    HKEY key_ = nullptr;
};

}  // namespace

TEST_F(Registry, AKeyIsFoundByItsPathInAnyCase) {
    EXPECT_EQ(textBelow(HKEY_LOCAL_MACHINE, (kKey + "\\SUB").c_str()), "below");
    EXPECT_EQ(textBelow(HKEY_LOCAL_MACHINE, (kKey + "\\").c_str()), "abc");
    EXPECT_EQ(textBelow(key_, "Sub"), "below");
    EXPECT_EQ(textBelow(key_, nullptr), "abc");
    EXPECT_EQ(textBelow(HKEY_LOCAL_MACHINE, "software\\\\Quorvex"), "none");
    for (const char* path : {"\\software", "\\"})
        EXPECT_EQ(textBelow(HKEY_LOCAL_MACHINE, path), "161") << path;
    for (const char* path : {"software/Quorvex", "Nothing", "Nothing\\Sub"})
        EXPECT_EQ(textBelow(HKEY_LOCAL_MACHINE, path), "2") << path;
    EXPECT_EQ(textBelow(key_, "Text"), "2") << "a value";
    HKEY root = nullptr;
    EXPECT_EQ(open(HKEY_LOCAL_MACHINE, "", KEY_READ, root), 0);
    EXPECT_EQ(root, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(RegCloseKey(root), 0);
    EXPECT_EQ(kor::test::errorAfter([&] { open(key_, "Nothing", KEY_READ, root); }), kor::test::kSeed);
}

TEST_F(Registry, AValueComesWithItsTypeAndSize) {
    const struct {
        const char* name;
        DWORD type;
        std::string bytes;
    } cases[] = {{"text", REG_SZ, "abc\0"s},
                 {nullptr, REG_SZ, "default\0"s},
                 {"", REG_SZ, "default\0"s},
                 {"Empty", REG_SZ, ""},
                 {"Multi", REG_MULTI_SZ, "a\0b\0\0"s},
                 {"Bytes", REG_BINARY, "\x00\xFF\x0D"s},
                 {"Number", REG_DWORD, "\x78\x56\x34\x12"s},
                 {"None", REG_NONE, "x"}};
    for (const auto& c : cases) {
        const std::string label = c.name ? c.name : "null";
        const auto full = static_cast<DWORD>(c.bytes.size());
        for (const DWORD room : {DWORD{0}, full == 0 ? full : full - 1, full, DWORD{64}}) {
            std::string data(64, '#');
            DWORD type = 99;
            DWORD size = room;
            EXPECT_EQ(
                RegQueryValueExA(key_, c.name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size),
                room < full ? ERROR_MORE_DATA : ERROR_SUCCESS)
                << label << " in " << room;
            EXPECT_EQ(type, c.type) << label;
            EXPECT_EQ(size, full) << label;
            EXPECT_EQ(data, (room < full ? "" : c.bytes) + std::string(room < full ? 64 : 64 - full, '#'))
                << label;
        }
        DWORD size = 1;
        EXPECT_EQ(RegQueryValueExA(key_, c.name, nullptr, nullptr, nullptr, &size), 0) << "only the size";
        EXPECT_EQ(size, full) << label;
    }
}

TEST_F(Registry, WhatIsWrongIsTold) {
    BYTE data[8];
    DWORD size = sizeof data;
    HKEY opened = nullptr;
    EXPECT_EQ(RegQueryValueExA(key_, "Nothing", nullptr, nullptr, data, &size), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegQueryValueExA(key_, "Text", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExA(key_, "Text", nullptr, nullptr, data, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExA(key_, "Text", &size, nullptr, data, &size), ERROR_INVALID_PARAMETER);
    ASSERT_EQ(open(HKEY_LOCAL_MACHINE, kKey.c_str(), KEY_ENUMERATE_SUB_KEYS, opened), 0);
    EXPECT_EQ(RegQueryValueExA(opened, "Text", nullptr, nullptr, data, &size), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCloseKey(opened), 0);
    HKEY result = nullptr;
    for (const HKEY key : {opened, static_cast<HKEY>(nullptr), reinterpret_cast<HKEY>(UINT_PTR{0x1234568})}) {
        EXPECT_EQ(RegQueryValueExA(key, "Text", nullptr, nullptr, data, &size), ERROR_INVALID_HANDLE);
        EXPECT_EQ(open(key, "Key", KEY_READ, result), ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
    }
}
