#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "korutil/lifecycle.h"
#include "platform/win32.h"
#include "tests/runtime/recording_log.h"
#include "tests/support/scratch.h"

namespace {

std::string currentFolder() {
    char buffer[MAX_PATH];
    return std::string(buffer, GetCurrentDirectoryA(sizeof buffer, buffer));
}

std::string hostFile() {
    char buffer[MAX_PATH];
    return std::string(buffer, GetModuleFileNameA(nullptr, buffer, sizeof buffer));
}

std::string hostFolder() {
    const std::string file = hostFile();
    return file.substr(0, file.rfind('\\'));
}

std::string systemFolder() {
    char buffer[MAX_PATH];
    return std::string(buffer, GetSystemDirectoryA(buffer, sizeof buffer));
}

std::string windowsFolder() {
    char buffer[MAX_PATH];
    return std::string(buffer, GetWindowsDirectoryA(buffer, sizeof buffer));
}

std::string hexadecimal(const void* handle) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(reinterpret_cast<UINT_PTR>(handle)));
    return text;
}

// Each test stands in a folder of its own, so that the folder switch shows.
class LibraryLoading : public testing::Test {
  protected:
    void SetUp() override {
        former_ = currentFolder();
        ASSERT_TRUE(SetCurrentDirectoryA(scratch_.path().c_str()));
        start_ = currentFolder();
    }
    void TearDown() override { SetCurrentDirectoryA(former_.c_str()); }

    std::string start_;

  private:
    kor::test::ScratchFolder scratch_;
    std::string former_;
};

// With the recording log in the place of the host's.
class LoggedLoading : public LibraryLoading {
  protected:
    void SetUp() override {
        LibraryLoading::SetUp();
        log_ = appLoadLibrary("recording\\KorBase", 0, 0, kLoadWithoutLog);
        ASSERT_NE(log_, nullptr) << GetLastError();
        take_ = reinterpret_cast<TakeRecordedLine>(
            reinterpret_cast<void (*)()>(GetProcAddress(log_, "korTakeRecordedLine")));
        ASSERT_NE(take_, nullptr);
    }
    void TearDown() override {
        if (log_) FreeLibrary(log_);
        LibraryLoading::TearDown();
    }

    std::vector<RecordedLine> lines() const {
        std::vector<RecordedLine> all;
        for (RecordedLine line; take_(&line);)
            all.push_back(line);
        return all;
    }

  private:
    HMODULE log_ = nullptr;
    TakeRecordedLine take_ = nullptr;
};

}  // namespace

TEST_F(LibraryLoading, ANameIsFoundBesideTheHostFromAnyFolder) {
    const HMODULE module = appLoadLibrary("faulting_module", 0, 0, kLoadWithoutLog);
    ASSERT_NE(module, nullptr) << GetLastError();
    EXPECT_NE(GetProcAddress(module, "korFaulting"), nullptr);
    EXPECT_EQ(currentFolder(), start_);
    FreeLibrary(module);
}

TEST_F(LibraryLoading, AFailureKeepsTheLoadersErrorAndRestoresFolderAndMode) {
    const UINT mode = SetErrorMode(SEM_FAILCRITICALERRORS);
    for (const DWORD options : {0u, 1u, 2u, 3u, 4u}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(appLoadLibrary("no_such_module", SEM_NOOPENFILEERRORBOX, 0, options), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND) << options;
        EXPECT_EQ(currentFolder(), start_) << options;
    }
    EXPECT_EQ(appLoadLibrary(nullptr, 0, 0, 0), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetErrorMode(mode), static_cast<UINT>(SEM_FAILCRITICALERRORS));
}

TEST_F(LoggedLoading, BothEndsAreLoggedInTheFolderAndModeOfTheLoad) {
    const struct {
        DWORD options;
        std::string folder;
    } cases[] = {
        {0, hostFolder()}, {1, systemFolder()}, {2, windowsFolder()}, {3, systemFolder()}, {4, hostFolder()}};
    for (const auto& c : cases) {
        appLoadLibrary("no_such_module", SEM_NOOPENFILEERRORBOX, 0, c.options);
        EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND) << "the log sets an error of its own";
        const auto log = lines();
        ASSERT_EQ(log.size(), 2u);
        EXPECT_EQ(log[0].flags, 32u);
        EXPECT_EQ(log[0].text, "ALL 'no_such_module', 0x8000, 0x0, 0x" + std::to_string(c.options) + "\n");
        EXPECT_EQ(log[0].folder, start_);
        EXPECT_STREQ(log[1].text, "ALL 'no_such_module'=0x0, 126\n");
        EXPECT_EQ(lstrcmpiA(log[1].folder, c.folder.c_str()), 0) << log[1].folder << " for " << c.folder;
        EXPECT_EQ(log[1].errorMode, static_cast<UINT>(SEM_NOOPENFILEERRORBOX));
    }
}

TEST_F(LoggedLoading, AnAbsolutePathLeavesTheCurrentFolder) {
    const std::string path = hostFolder() + "\\faulting_module.dll";
    const HMODULE module = appLoadLibrary(path.c_str(), 0, 0, 0);
    ASSERT_NE(module, nullptr) << GetLastError();
    const auto log = lines();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[1].folder, start_);
    EXPECT_EQ(std::string(log[1].text).rfind("ALL '" + path + "'=" + hexadecimal(module) + ", ", 0), 0u)
        << log[1].text;
    FreeLibrary(module);
}

TEST_F(LoggedLoading, ADataFileAndTheQuietOptionAreNotLogged) {
    appLoadLibrary("no_such_module", 0, LOAD_LIBRARY_AS_DATAFILE, 0);
    appLoadLibrary("no_such_module", 0, 0, kLoadWithoutLog);
    EXPECT_EQ(lines().size(), 0u);
    appLoadLibrary("no_such_module", 0, LOAD_WITH_ALTERED_SEARCH_PATH, 0);
    EXPECT_EQ(lines().size(), 2u);
}

TEST_F(LibraryLoading, ASearchStartsInTheHostsFolder) {
    const std::string host = hostFile();
    const std::string name = host.substr(host.rfind('\\') + 1);
    char buffer[MAX_PATH] = "";
    char* part = nullptr;
    const DWORD length = appSearchPath(".", name.c_str(), nullptr, sizeof buffer, buffer, &part);
    EXPECT_EQ(lstrcmpiA(buffer, host.c_str()), 0) << buffer << " for " << host;
    EXPECT_EQ(length, host.size());
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(part, buffer + host.size() - name.size());
    EXPECT_EQ(currentFolder(), start_);
}

TEST_F(LibraryLoading, AFailedSearchKeepsItsError) {
    char buffer[MAX_PATH] = "";
    EXPECT_EQ(appSearchPath(".", "no_such_file", ".txt", sizeof buffer, buffer, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(currentFolder(), start_);
}
