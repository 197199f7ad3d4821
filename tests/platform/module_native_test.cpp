#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <iterator>
#include <string>

#include "platform/posix/kernel/native_name.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

std::string libraryBytes() {
    char path[MAX_PATH];
    const DWORD length = SearchPathA(nullptr, "KorTestL.dll", nullptr, MAX_PATH, path, nullptr);
    return kor::test::bytesOf(std::string(path, length));
}

// The 32-bit entry point's field in the header that korrc writes.
constexpr std::size_t kEntryPoint = 0x40 + 24 + 16;

}  // namespace

TEST(NativeModule, FindsASharedObjectUnderItsWindowsName) {
    const HMODULE module = LoadLibraryA("libKorTestModule.so");
    ASSERT_NE(module, nullptr) << GetLastError();
    EXPECT_EQ(LoadLibraryA("KorTestModule.dll"), module);
    EXPECT_EQ(GetModuleHandleA("kortestmodule"), module);
    EXPECT_EQ(GetModuleHandleA("KorPlatform.dll"), GetModuleHandleA("libKorPlatform.so.1"))
        << "whatever follows .so";
    EXPECT_NE(GetModuleHandleA("KorPlatform"), nullptr);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(NativeModule, HandleOfALinkedLibraryOutlivesItsReferences) {
    const HMODULE linked = GetModuleHandleA("KorPlatform");
    ASSERT_NE(linked, nullptr);
    EXPECT_EQ(LoadLibraryA("KorPlatform"), linked);
    EXPECT_TRUE(FreeLibrary(linked));
    EXPECT_TRUE(FreeLibrary(linked)) << "there is no reference any more, and it stays";
    EXPECT_EQ(GetModuleHandleA("KorPlatform"), linked);
    char path[MAX_PATH];
    EXPECT_NE(GetModuleFileNameA(linked, path, MAX_PATH), 0u);
}

TEST(NativeModule, WithCodeOfAnotherSystemIsReadAsDataOnly) {
    const kor::test::ScratchFolder scratch;
    std::string bytes = libraryBytes();
    ASSERT_GT(bytes.size(), kEntryPoint + 4);
    bytes[kEntryPoint + 1] = 0x10;
    const std::string path = scratch.file("code.dll", bytes);
    SetLastError(0);
    EXPECT_EQ(LoadLibraryA(path.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_BAD_EXE_FORMAT);
    for (const DWORD flags : {LOAD_LIBRARY_AS_DATAFILE, DONT_RESOLVE_DLL_REFERENCES}) {
        const HMODULE library = LoadLibraryExA(path.c_str(), nullptr, flags);
        ASSERT_NE(library, nullptr) << GetLastError();
        char text[20];
        EXPECT_EQ(LoadStringA(library, 1, text, sizeof text), 3);
        EXPECT_EQ(LoadLibraryA(path.c_str()), nullptr) << "to load it properly is still refused";
        EXPECT_EQ(GetModuleHandleA("code.dll"), nullptr) << "a data file is not among the modules";
        EXPECT_TRUE(FreeLibrary(library));
    }
}

// The second byte of this character of code page 932 is a backslash.
TEST(NativeModule, AndFilesAreFoundInAFolderWhoseNameEndsLikeASeparator) {
    const auto inNewProcess = [] {
        setenv("KORUTIL_CODEPAGE", "932", 1);
        const std::string bytes = libraryBytes();
        int failed = 0;
        {
            const kor::test::ScratchFolder scratch;
            const std::string folder = scratch.folder("\x83\x5C");
            scratch.file("\x83\x5C\\KorOther.dll", bytes);
            scratch.file("\x83\x5C\\\x83\x5C.dll", bytes);
            char found[MAX_PATH];
            const auto search = [&](const char* name, const char* extension) {
                return std::string(found,
                                   SearchPathA(folder.c_str(), name, extension, MAX_PATH, found, nullptr));
            };
            const bool succeeded[] = {
                search("KorOther.dll", nullptr) == folder + "\\KorOther.dll",
                search("\x83\x5C", ".dll") == folder + "\\\x83\x5C.dll",
                GetTempFileNameA(folder.c_str(), "p", 1, found) == 1 && found == folder + "\\p1.tmp",
                SetCurrentDirectoryA(folder.c_str()) != FALSE,
                LoadLibraryA("KorOther") != nullptr,
                LoadLibraryA("\x83\x5C") != nullptr,
                GetModuleHandleA("\x83\x5C.DLL") != nullptr,
                SetCurrentDirectoryA("Z:\\") != FALSE,
            };
            for (std::size_t at = 0; at < std::size(succeeded) && failed == 0; ++at)
                if (!succeeded[at]) failed = static_cast<int>(at) + 1;
        }
        _exit(failed);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

TEST(NativeModule, ThatTheLoaderRefusesIsNoModule) {
    const kor::test::ScratchFolder scratch;
    const std::string path = scratch.file("broken.dll",
                                          "\x7F"
                                          "ELF and nothing else that a shared object has");
    SetLastError(0);
    EXPECT_EQ(LoadLibraryA(path.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_BAD_EXE_FORMAT);
    EXPECT_EQ(LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
}

TEST(NativeModule, IsLookedForInTheFoldersOfPath) {
    const kor::test::ScratchFolder scratch;
    scratch.file("KorOnPathL.dll", libraryBytes());
    const std::string before = getenv("PATH") ? getenv("PATH") : "";
    EXPECT_EQ(LoadLibraryA("KorOnPathL"), nullptr);
    char folder[1024];
    ASSERT_NE(korNativePath(scratch.path().c_str(), folder, sizeof folder), 0u);
    setenv("PATH", (":relative::" + before + ":" + folder).c_str(), 1);
    const HMODULE library = LoadLibraryA("KorOnPathL");
    setenv("PATH", before.c_str(), 1);
    EXPECT_NE(library, nullptr);
    FreeLibrary(library);
}

TEST(DebuggerOutput, GoesToStandardErrorOnRequestInUtf8) {
    const auto run = [](const char* variable) {
        setenv("KORUTIL_DEBUG", variable, 1);
        OutputDebugStringA("caf\xE9\n");
        _exit(0);
    };
    EXPECT_EXIT(run("1"), testing::ExitedWithCode(0), "^caf\xC3\xA9\n$");
    EXPECT_EXIT(run("0"), testing::ExitedWithCode(0), "^$");
}
