#include "korutil/platform/module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

using kor::test::errorAfter;

namespace {

constexpr const char* kModule = "KorTestModule.dll";

using Answer = int(KORUTIL_CALL*)(int);

class LoadedModule {
  public:
    explicit LoadedModule(const char* name) : handle_(LoadLibraryA(name)) {}
    ~LoadedModule() {
        if (handle_) FreeLibrary(handle_);
    }
    HMODULE handle() const { return handle_; }

  private:
    HMODULE handle_;
};

std::string pathOf(HMODULE module) {
    char path[MAX_PATH];
    return {path, GetModuleFileNameA(module, path, MAX_PATH)};
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

TEST(Module, StaysLoadedUntilTheLastReferenceIsGivenBack) {
    ASSERT_EQ(GetModuleHandleA(kModule), nullptr) << "loaded before the test";
    const HMODULE first = LoadLibraryA(kModule);
    ASSERT_NE(first, nullptr) << GetLastError();
    EXPECT_EQ(LoadLibraryA("kortestmodule"), first) << "case and a missing extension do not matter";
    EXPECT_EQ(LoadLibraryA(pathOf(first).c_str()), first) << pathOf(first);
    EXPECT_EQ(GetModuleHandleA("KorTestModule"), first);
    EXPECT_EQ(GetModuleHandleA(pathOf(first).c_str()), first);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(GetModuleHandleA(kModule), first) << "after " << i << " of 3 references";
        EXPECT_TRUE(FreeLibrary(first));
    }
    EXPECT_FAILS(ERROR_MOD_NOT_FOUND, GetModuleHandleA(kModule));
    EXPECT_FAILS(ERROR_MOD_NOT_FOUND, FreeLibrary(first));
}

TEST(Module, FindsItsOwnExportsOnly) {
    const LoadedModule module(kModule);
    const auto answer =
        reinterpret_cast<Answer>(reinterpret_cast<void*>(GetProcAddress(module.handle(), "korTestAnswer")));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(41), 42);
    for (const LPCSTR name : {LPCSTR{"korTestQuestion"}, LPCSTR{"kortestanswer"}, LPCSTR{""},
                              LPCSTR{"GetLastError"}, LPCSTR{MAKEINTRESOURCEA(77)}}) {
        EXPECT_FAILS(ERROR_PROC_NOT_FOUND, GetProcAddress(module.handle(), name))
            << (IS_INTRESOURCE(name) ? "an ordinal" : name);
    }
}

TEST(Module, IsFoundByAnAddressInsideIt) {
    HMODULE module = LoadLibraryA(kModule);
    const auto address = reinterpret_cast<LPCSTR>(GetProcAddress(module, "korTestAnswer"));
    HMODULE found = nullptr;
    constexpr DWORD kByAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    ASSERT_TRUE(
        GetModuleHandleExA(kByAddress | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, address, &found));
    EXPECT_EQ(found, module);
    ASSERT_TRUE(GetModuleHandleExA(kByAddress, address, &found));
    EXPECT_EQ(found, module);
    EXPECT_TRUE(FreeLibrary(module)) << "the reference of LoadLibraryA";
    EXPECT_EQ(GetModuleHandleA(kModule), module) << "the look-up without UNCHANGED_REFCOUNT counted one";
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandleA(kModule), nullptr);

    for (const DWORD flags :
         {kByAddress, DWORD{3}, DWORD{0x80}}) {  // no module there; pinned and not counted; unknown
        found = GetModuleHandleA(nullptr);
        EXPECT_FAILS(flags == kByAddress ? ERROR_MOD_NOT_FOUND : ERROR_INVALID_PARAMETER,
                     GetModuleHandleExA(flags, reinterpret_cast<LPCSTR>(flags == kByAddress ? INT_PTR{8} : 0),
                                        &found));
        EXPECT_EQ(found, nullptr) << flags;
    }
    const auto here = reinterpret_cast<LPCSTR>(&pathOf);
    ASSERT_TRUE(GetModuleHandleExA(kByAddress | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, here, &found));
    EXPECT_EQ(found, GetModuleHandleA(nullptr)) << "this program";
}

TEST(Module, OfTheSystemIsFoundByName) {
    for (const char* name : {"KERNEL32.DLL", "user32", "advapi32.dll", "ole32"}) {
        const HMODULE module = LoadLibraryA(name);
        ASSERT_NE(module, nullptr) << name;
        EXPECT_EQ(GetModuleHandleA(name), module);
        EXPECT_TRUE(FreeLibrary(module));
    }
    EXPECT_NE(GetModuleHandleA("kernel32"), nullptr) << "the process was linked with it";
    EXPECT_NE(GetProcAddress(GetModuleHandleA("user32"), "MessageBoxA"), nullptr);
}

TEST(Module, TellsItsPathCutToTheBuffer) {
    const LoadedModule module(kModule);
    const std::string path = pathOf(module.handle());
    EXPECT_EQ(path[1], ':') << path;
    EXPECT_NE(lowerCase(path).find("kortestmodule"), std::string::npos) << path;
    const auto length = static_cast<DWORD>(path.size());
    std::vector<char> buffer(path.size() + 8, '#');
    EXPECT_EQ(GetModuleFileNameA(module.handle(), buffer.data(), length + 1), length);
    EXPECT_EQ(std::string(buffer.data()), path);
    EXPECT_EQ(buffer[path.size() + 1], '#');
    for (const DWORD size : {length, DWORD{5}, DWORD{1}}) {
        std::fill(buffer.begin(), buffer.end(), '#');
        EXPECT_EQ(
            errorAfter([&] { EXPECT_EQ(GetModuleFileNameA(module.handle(), buffer.data(), size), size); }),
            DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_EQ(std::string(buffer.data(), size - 1), path.substr(0, size - 1));
        EXPECT_EQ(buffer[size], '#') << "written behind a buffer of " << size;
    }
    EXPECT_NE(lowerCase(pathOf(nullptr)).find("platform_tests"), std::string::npos) << pathOf(nullptr);
    char one = '#';
    EXPECT_FAILS(ERROR_MOD_NOT_FOUND, GetModuleFileNameA(reinterpret_cast<HMODULE>(&one), &one, 1));
}

TEST(Module, IsRefusedWhenTheFileIsNoLibrary) {
    const kor::test::ScratchFolder scratch;
    struct {
        std::string name;
        DWORD flags, error;
    } const cases[] = {
        {scratch.path("missing.dll"), 0, ERROR_MOD_NOT_FOUND},
        {"", 0, ERROR_MOD_NOT_FOUND},
        {scratch.file("text.dll", "This is a text, not a library."), 0, ERROR_BAD_EXE_FORMAT},
        {scratch.path("missing.dll"), LOAD_LIBRARY_AS_DATAFILE, ERROR_FILE_NOT_FOUND},
        {"KorNoSuchModule", LOAD_LIBRARY_AS_DATAFILE, ERROR_FILE_NOT_FOUND},
        {scratch.folder("folder"), LOAD_LIBRARY_AS_DATAFILE, ERROR_ACCESS_DENIED},
        {"", LOAD_LIBRARY_AS_DATAFILE, ERROR_INVALID_PARAMETER},
        {scratch.file("empty.dll"), 0, ERROR_BAD_EXE_FORMAT},
    };
    for (const auto& each : cases)
        EXPECT_FAILS(each.error, LoadLibraryExA(each.name.c_str(), nullptr, each.flags)) << each.name;
}

TEST(Module, IsLookedForInTheCurrentFolder) {
    const kor::test::ScratchFolder scratch;
    const LoadedModule library("KorTestL.dll");
    ASSERT_TRUE(CopyFileA(pathOf(library.handle()).c_str(), scratch.path("KorCopyL.dll").c_str(), TRUE));
    EXPECT_EQ(LoadLibraryA("KorCopyL"), nullptr);
    char folder[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryA(MAX_PATH, folder), 0u);
    ASSERT_TRUE(SetCurrentDirectoryA(scratch.path().c_str()));
    const HMODULE copy = LoadLibraryA("KorCopyL");
    EXPECT_TRUE(SetCurrentDirectoryA(folder));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, library.handle());
    EXPECT_TRUE(FreeLibrary(copy));
}

TEST(SearchPath, LooksInEachFolderInOrder) {
    const kor::test::ScratchFolder scratch;
    const std::string a = scratch.folder("a"), b = scratch.folder("b"),
                      list = a + ";" + scratch.path("none") + ";" + b;
    scratch.file("a\\both.txt");
    scratch.file("b\\both.txt");
    scratch.file("b\\only.txt");
    scratch.file("b\\plain");
    char buffer[MAX_PATH] = "#";
    char* part = nullptr;
    const auto found = [&](const std::string& folders, const std::string& file, LPCSTR extension) {
        return std::string(buffer,
                           SearchPathA(folders.c_str(), file.c_str(), extension, MAX_PATH, buffer, &part));
    };
    EXPECT_EQ(found(list, "both.txt", nullptr), a + "\\both.txt");
    EXPECT_EQ(found(list, "only", ".txt"), b + "\\only.txt");
    EXPECT_STREQ(part, "only.txt");
    EXPECT_EQ(found(list, "plain", nullptr), b + "\\plain");
    EXPECT_EQ(found(a, b + "\\only.txt", nullptr), b + "\\only.txt") << "absolute";
    const auto length = static_cast<DWORD>(b.size() + 6);
    EXPECT_EQ(SearchPathA(b.c_str(), "plain", nullptr, length, buffer, &part), length + 1) << "one short";
    EXPECT_FAILS(ERROR_FILE_NOT_FOUND, SearchPathA(list.c_str(), "plain", ".txt", MAX_PATH, buffer, &part));
    EXPECT_NE(SearchPathA(nullptr, "KorTestL", ".dll", MAX_PATH, buffer, nullptr), 0u)
        << "beside the program";
}
