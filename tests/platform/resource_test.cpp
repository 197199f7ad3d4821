#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32.h"
#include "resources/ids.h"
#include "tests/platform/seeded.h"

namespace {

constexpr WORD kEnglish = 1033;
constexpr WORD kSwedish = 1053;

class Resource : public testing::Test {
  protected:
    void SetUp() override {
        library_ = LoadLibraryA("KorTestL.dll");
        ASSERT_NE(library_, nullptr) << GetLastError();
    }
    void TearDown() override { FreeLibrary(library_); }

    std::string bytesOf(LPCSTR type, LPCSTR name, WORD language = 0) const {
        const HRSRC resource = FindResourceExA(library_, type, name, language);
        const void* data = LockResource(LoadResource(library_, resource));
        return data ? std::string(static_cast<const char*>(data), SizeofResource(library_, resource)) : "";
    }

    HMODULE library_ = nullptr;
};

std::string stringOf(HMODULE module, UINT id, int size = 200) {
    std::vector<char> buffer(static_cast<std::size_t>(size) + 4, '#');
    const int length = LoadStringA(module, id, buffer.data(), size);
    EXPECT_EQ(buffer[static_cast<std::size_t>(size)], '#') << "written behind the buffer, string " << id;
    EXPECT_EQ(std::strlen(buffer.data()), static_cast<std::size_t>(length)) << "string " << id;
    return buffer.data();
}

BOOL CALLBACK collectName(HMODULE, LPCSTR, LPSTR name, LONG_PTR names) {
    reinterpret_cast<std::vector<ULONG_PTR>*>(names)->push_back(reinterpret_cast<ULONG_PTR>(name));
    return TRUE;
}

BOOL CALLBACK collectLanguage(HMODULE, LPCSTR, LPCSTR, WORD language, LONG_PTR languages) {
    reinterpret_cast<std::vector<WORD>*>(languages)->push_back(language);
    return TRUE;
}

}  // namespace

TEST_F(Resource, StringsComeFromTheirBlocks) {
    const std::map<UINT, std::string> texts = {{1, "One"},
                                               {2, "Two\r\nlines\tand a \\ backslash"},
                                               {31, "Nine hundred thirty"},
                                               {65535, "The last number"},
                                               {3, ""},
                                               {500, ""}};
    for (int pass = 0; pass < 2; ++pass) {
        for (const auto& [id, text] : texts)
            EXPECT_EQ(stringOf(library_, id), text) << id;
    }
}

TEST_F(Resource, StringsAreConvertedToTheCodePageAndCutToTheBuffer) {
    // The block of 80 exists in Swedish only; what the code page lacks becomes a question mark.
    EXPECT_EQ(stringOf(library_, 80), "D\xE9j\xE0 vu \x96 c\x9Cur, 100 \x80");
    EXPECT_EQ(stringOf(library_, 81), "??");
    for (const int size : {1, 2, 11, 12, 14})
        EXPECT_EQ(stringOf(library_, 32, size),
                  std::string("Block three").substr(0, static_cast<std::size_t>(size) - 1));
    char untouched = '#';
    EXPECT_LE(LoadStringA(library_, 32, &untouched, 0), 0);
    EXPECT_EQ(untouched, '#');
}

TEST_F(Resource, IsFoundByNumberOrNumberText) {
    EXPECT_EQ(bytesOf(MAKEINTRESOURCEA(4794), MAKEINTRESOURCEA(8)), std::string("\xF4\1\0\0", 4));
    EXPECT_EQ(bytesOf("#4794", "#9"), std::string("\x58\2\0\0\xFF\xFF\xFF\xFF", 8));
    EXPECT_EQ(bytesOf(MAKEINTRESOURCEA(4794), MAKEINTRESOURCEA(10)), std::string("\0\1\xFF\x7F\r\n", 6));
    EXPECT_EQ(FindResourceA(library_, MAKEINTRESOURCEA(8), MAKEINTRESOURCEA(4794)),
              FindResourceExA(library_, MAKEINTRESOURCEA(4794), MAKEINTRESOURCEA(8), 0));
}

TEST_F(Resource, IsTakenInTheLanguageAskedFor) {
    const auto textOf = [&](WORD language) { return bytesOf(RT_STRING, MAKEINTRESOURCEA(1), language); };
    EXPECT_EQ(textOf(kEnglish).substr(2, 8), std::string("\3\0O\0n\0e\0", 8));
    EXPECT_EQ(textOf(kSwedish).substr(2, 8), std::string("\3\0E\0t\0t\0", 8));
    EXPECT_EQ(textOf(0), textOf(kEnglish)) << "the user's language, or English";
    // Data without language serves every language.
    EXPECT_EQ(bytesOf(MAKEINTRESOURCEA(4794), MAKEINTRESOURCEA(8), kSwedish).size(), 4u);
    EXPECT_NE(bytesOf(RT_DIALOG, MAKEINTRESOURCEA(200), kSwedish).find(std::string("E\0t\0t\0\0\0", 8)),
              std::string::npos);
}

TEST_F(Resource, IsRefusedWithTheLevelThatIsMissing) {
    struct {
        LPCSTR type, name;
        WORD language;
        DWORD error;
    } const cases[] = {
        {MAKEINTRESOURCEA(99), MAKEINTRESOURCEA(1), 0, ERROR_RESOURCE_TYPE_NOT_FOUND},
        {RT_STRING, MAKEINTRESOURCEA(99), 0, ERROR_RESOURCE_NAME_NOT_FOUND},
        {RT_STRING, "NONAME", 0, ERROR_RESOURCE_NAME_NOT_FOUND},
        {RT_STRING, MAKEINTRESOURCEA(1), 1031, ERROR_RESOURCE_LANG_NOT_FOUND},
    };
    for (const auto& each : cases)
        EXPECT_FAILS(each.error, FindResourceExA(library_, each.type, each.name, each.language));
    EXPECT_EQ(LockResource(nullptr), nullptr);
    EXPECT_EQ(SizeofResource(library_, nullptr), 0u);
}

TEST_F(Resource, NamesAndLanguagesAreListed) {
    std::vector<ULONG_PTR> names;
    EXPECT_TRUE(EnumResourceNamesA(library_, MAKEINTRESOURCEA(4794), collectName,
                                   reinterpret_cast<LONG_PTR>(&names)));
    EXPECT_EQ(names, (std::vector<ULONG_PTR>{8, 9, 10}));
    std::vector<WORD> languages;
    EXPECT_TRUE(EnumResourceLanguagesA(library_, RT_DIALOG, MAKEINTRESOURCEA(200), collectLanguage,
                                       reinterpret_cast<LONG_PTR>(&languages)));
    EXPECT_EQ(languages, (std::vector<WORD>{kEnglish, kSwedish}));
    EXPECT_FAILS(
        ERROR_RESOURCE_TYPE_NOT_FOUND,
        EnumResourceNamesA(library_, MAKEINTRESOURCEA(99), collectName, reinterpret_cast<LONG_PTR>(&names)));
}

TEST_F(Resource, VersionIsReadFromTheLibrarysData) {
    DWORD ignored = 1;
    const DWORD size = GetFileVersionInfoSizeA("KorTestL.dll", &ignored);
    ASSERT_NE(size, 0u) << GetLastError();
    EXPECT_EQ(ignored, 0u);
    std::vector<char> data(size);
    ASSERT_TRUE(GetFileVersionInfoA("KorTestL.dll", 0, size, data.data())) << GetLastError();
    void* value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(data.data(), "\\", &value, &length));
    ASSERT_EQ(length, sizeof(VS_FIXEDFILEINFO));
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(fixed->dwSignature, 0xFEEF04BDu);
    EXPECT_EQ(fixed->dwFileVersionMS, 0x30007u);
    EXPECT_EQ(fixed->dwFileVersionLS, 0x20000u);

    ASSERT_TRUE(VerQueryValueA(data.data(), "\\VarFileInfo\\Translation", &value, &length));
    EXPECT_EQ(std::string(static_cast<const char*>(value), length), "\x09\x04\xB0\x04");

    const std::map<std::string, std::string> texts = {
        {"InternalName", "KorTestL"}, {"OriginalFilename", "KorTestL.dll"}, {"FileVersion", "3.7.2.0"}};
    for (const auto& [key, text] : texts) {
        ASSERT_TRUE(
            VerQueryValueA(data.data(), ("\\StringFileInfo\\040904b0\\" + key).c_str(), &value, &length))
            << key;
        EXPECT_EQ(std::string(static_cast<const char*>(value)), text);
        EXPECT_EQ(length, text.size() + 1) << key;
    }
    EXPECT_FALSE(VerQueryValueA(data.data(), "\\StringFileInfo\\040904b0\\Colour", &value, &length));
    EXPECT_FALSE(VerQueryValueA(data.data(), "\\NoSuchBlock", &value, &length));
    EXPECT_FAILS(ERROR_FILE_NOT_FOUND, GetFileVersionInfoSizeA("KorNoSuchModule.dll", &ignored));
}

TEST_F(Resource, StringsMayBeLoadedByThreadsAtOnce) {
    const HMODULE library = LoadLibraryExA("KorTestL.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(library, nullptr);
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (UINT round = 0; round < 200; ++round) {
                char text[20];
                if (LoadStringA(library, 32, text, sizeof text) != 11) ++wrong;
                LoadStringA(library, round * 16, text, sizeof text);
                const HMODULE module = LoadLibraryA("KorTestModule.dll");
                if (LoadStringA(module, 1, text, sizeof text) != 3) ++wrong;
                FreeLibrary(module);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    FreeLibrary(library);
}

TEST(LibraryResource, HasItsPieces) {
    const HMODULE library = LoadLibraryA("KorUtil.dll");
    ASSERT_NE(library, nullptr) << GetLastError();
    EXPECT_NE(LoadCursorA(library, MAKEINTRESOURCEA(kor::resource::kCursor)), nullptr);
    EXPECT_NE(FindResourceA(library, MAKEINTRESOURCEA(kor::resource::kWarningDialog), RT_DIALOG), nullptr);
    FreeLibrary(library);
}

TEST(LinkedResource, IsTheModulesOwn) {
    const HMODULE module = LoadLibraryA("KorTestModule.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(stringOf(module, 32), "Block three");
    const HRSRC resource = FindResourceA(module, MAKEINTRESOURCEA(8), MAKEINTRESOURCEA(4794));
    EXPECT_EQ(SizeofResource(module, resource), 4u);
    EXPECT_NE(LoadCursorA(module, MAKEINTRESOURCEA(105)), nullptr);
    EXPECT_EQ(LoadCursorA(module, MAKEINTRESOURCEA(106)), nullptr);
    FreeLibrary(module);
    EXPECT_FAILS(ERROR_RESOURCE_DATA_NOT_FOUND,
                 FindResourceA(nullptr, MAKEINTRESOURCEA(8), MAKEINTRESOURCEA(4794)));
}
