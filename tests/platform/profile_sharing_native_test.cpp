// Initialisation files between processes: what others change is seen, what two write is kept, and a file
// stays what it is but for the line that changes.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "korutil/platform/name.h"
#include "tests/platform/in_child.h"
#include "tests/platform/seeded.h"
#include "tests/support/failing_files_native.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

std::string value(const std::string& file, const char* key = "k", DWORD* error = nullptr) {
    char buffer[100];
    SetLastError(kSeed);
    const DWORD length = GetPrivateProfileStringA("s", key, "none", buffer, sizeof buffer, file.c_str());
    if (error) *error = GetLastError();
    return std::string(buffer, length);
}

BOOL set(const std::string& file, const std::string& key, const std::string& to) {
    return WritePrivateProfileStringA("s", key.c_str(), to.c_str(), file.c_str());
}

// As an editor writes it: in place, with no regard for anybody.
bool overwrite(const std::string& native, const std::string& bytes) {
    const int file = open(native.c_str(), O_WRONLY | O_CREAT, 0600);
    const bool done = write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    EXPECT_TRUE(done);
    return close(file) == 0 && done;
}

class ProfileSharing : public testing::Test {
  protected:
    // In this case of letters, whatever is there.
    std::string native(const char* name) const {
        char folder[1000];
        EXPECT_NE(korNativePath(scratch_.path().c_str(), folder, sizeof folder), 0u);
        return folder + std::string("/") + name;
    }
    const ScratchFolder scratch_;
    const std::string file_ = scratch_.path("f.ini");
};

TEST_F(ProfileSharing, TwoProcessesOfAThousandKeysEachLeaveTwoThousand) {
    constexpr int kKeys = 1000;
    const auto writer = [&](const char* prefix) {
        const pid_t child = fork();
        if (child != 0) return child;
        int failed = 0;
        for (int i = 0; i < kKeys; ++i)
            failed += set(file_, prefix + std::to_string(i), std::to_string(i)) ? 0 : 1;
        _exit(failed != 0 ? 1 : 0);
    };
    for (const pid_t child : {writer("a"), writer("b")}) {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    int right = 0;
    for (int i = 0; i < kKeys; ++i) {
        for (const char* prefix : {"a", "b"})
            right += value(file_, (prefix + std::to_string(i)).c_str()) == std::to_string(i) ? 1 : 0;
    }
    EXPECT_EQ(right, 2 * kKeys);
    std::vector<char> list(100000);
    const DWORD size = GetPrivateProfileStringA("s", nullptr, "", list.data(), 100000, file_.c_str());
    EXPECT_EQ(std::count(list.begin(), list.begin() + size, '\0'), 2 * kKeys);
    EXPECT_EQ(namesOf(scratch_.path("*")).size(), 3u) << "., .. and f.ini, no lock files";
}

TEST_F(ProfileSharing, OneChangedKeyIsOneChangedLine) {
    std::vector<std::string> lines;
    for (int i = 0; i < 2000; ++i) {
        const std::string number = std::to_string(i);
        lines.push_back(i % 50 == 0   ? " [Section " + number + "] ; kept"
                        : i % 7 == 0  ? "; comment = " + number
                        : i % 9 == 0  ? "  "
                        : i % 11 == 0 ? "no value " + number
                                      : "  Key" + number + "\t= \"value\" " + number + " ");
    }
    const auto bytes = [](const std::vector<std::string>& of) {
        std::string all;
        for (const std::string& line : of)
            all += line + "\r\n";
        return all;
    };
    scratch_.file("f.ini", bytes(lines));
    for (const int at : {1, 997, 1999}) {
        const std::string section = "section " + std::to_string(at / 50 * 50),
                          key = "key" + std::to_string(at);
        ASSERT_TRUE(WritePrivateProfileStringA(section.c_str(), key.c_str(), "new", file_.c_str()));
        std::vector<std::string> after;
        std::istringstream in(bytesOf(file_));
        for (std::string line; std::getline(in, line);) {
            ASSERT_TRUE(line.ends_with("\r"));
            after.push_back(line.substr(0, line.size() - 1));
        }
        ASSERT_EQ(after.size(), lines.size());
        const std::string changed = after[static_cast<std::size_t>(at)];
        EXPECT_NE(changed, lines[static_cast<std::size_t>(at)]);
        EXPECT_TRUE(changed.find("Key" + std::to_string(at)) != changed.npos && changed.ends_with("new"))
            << changed;
        lines[static_cast<std::size_t>(at)] = changed;
        EXPECT_TRUE(bytesOf(file_) == bytes(lines));
    }
}

TEST_F(ProfileSharing, SeesChangesOfTheSameSizeAtOnce) {
    const std::string path = native("f.ini");
    // On a system whose clock has gone on between two changes, and on one whose clock has not.
    for (const int tick : {1, 10'000'000}) {
        setFileTimeTick(tick);
        for (int i = 100; i < 150; ++i) {
            inChild([&] { return overwrite(path, "[s]\r\nk=" + std::to_string(i) + "\r\n"); });
            EXPECT_EQ(value(file_), std::to_string(i));
            overwrite(path, "[s]\r\nk=" + std::to_string(i + 500) + "\r\n");
            EXPECT_EQ(value(file_), std::to_string(i + 500));
        }
    }
    setFileTimeTick(1);
}

TEST_F(ProfileSharing, SeesThatAFileGoesComesAndIsAnother) {
    DWORD error = 0;
    EXPECT_EQ(value(file_, "k", &error), "none");
    EXPECT_EQ(error, DWORD{ERROR_FILE_NOT_FOUND});
    for (const char* text : {"one", "two"}) {
        overwrite(native("f.ini"), "[s]\nk=" + std::string(text));
        EXPECT_EQ(value(file_), text);
        unlink(native("f.ini").c_str());
        EXPECT_EQ(value(file_, "k", &error), "none");
        EXPECT_EQ(error, DWORD{ERROR_FILE_NOT_FOUND});
    }
    overwrite(native("F.Ini"), "[s]\nk=other case");
    EXPECT_EQ(value(file_), "other case");
    overwrite(native("f.ini"), "[s]\nk=own case");
    EXPECT_EQ(value(file_), "own case") << "the exact name goes first as soon as it is there";
    overwrite(native("g.ini"), "[s]\nk=renamed");
    rename(native("g.ini").c_str(), native("f.ini").c_str());
    EXPECT_EQ(value(file_), "renamed");
}

TEST_F(ProfileSharing, RefusesWhatIsNoFile) {
    overwrite(native("f.ini"), "[s]\nk=v");
    EXPECT_EQ(value(file_), "v");
    const auto expectRefused = [&](const char* what) {
        DWORD error = 0;
        EXPECT_EQ(value(file_, "k", &error), "none") << what;
        EXPECT_EQ(error, DWORD{ERROR_ACCESS_DENIED}) << what;
        EXPECT_EQ(errorAfter([&] { EXPECT_FALSE(set(file_, "k", "w")) << what; }), DWORD{ERROR_ACCESS_DENIED})
            << what;
    };
    const std::string path = native("f.ini");
    unlink(path.c_str());
    mkdir(path.c_str(), 0700);
    expectRefused("a folder");
    rmdir(path.c_str());
    mkfifo(path.c_str(), 0600);
    expectRefused("a pipe, for which nobody waits");
    unlink(path.c_str());
    EXPECT_EQ(symlink("/dev/zero", path.c_str()), 0);
    expectRefused("a device, which never ends");
}

TEST_F(ProfileSharing, KeepsModeOwnerAndSymbolicLink) {
    const std::string real = native("real.ini"), link = native("f.ini");
    overwrite(real, "[s]\nk=v\n");
    chmod(real.c_str(), 0640);
    const bool givesAway = chown(real.c_str(), 12, 34) == 0;
    EXPECT_EQ(symlink("real.ini", link.c_str()), 0);
    EXPECT_TRUE(set(file_, "k", "w"));
    struct stat status {};
    EXPECT_EQ(lstat(link.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    EXPECT_EQ(stat(real.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_TRUE(!givesAway || (status.st_uid == 12 && status.st_gid == 34));
    EXPECT_EQ(bytesOf(file_), "[s]\nk=w\n");
}

TEST_F(ProfileSharing, RelativeNamesFollowTheCurrentFolder) {
    char before[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, before);
    for (const char* folder : {"one", "two", "one"}) {
        const std::string path = scratch_.path(folder);
        CreateDirectoryA(path.c_str(), nullptr);
        SetCurrentDirectoryA(path.c_str());
        EXPECT_TRUE(set(".\\f.ini", "k", folder));
        EXPECT_EQ(value(".\\f.ini"), folder);
        EXPECT_EQ(bytesOf(path + "\\f.ini"), "[s]\r\nk=" + std::string(folder) + "\r\n");
    }
    SetCurrentDirectoryA(before);
}

TEST_F(ProfileSharing, ThreadsReadAndWriteAtTheSameTime) {
    scratch_.file("f.ini", "[s]\r\nk=steady\r\n");
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 50; ++i) {
                const std::string key = "t" + std::to_string(thread);
                if (!set(file_, key, std::to_string(i))) ++wrong;
                if (value(file_, key.c_str()) != std::to_string(i) || value(file_) != "steady") ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

// A child that was forked in the midst of a write has the folder's lock too.
TEST_F(ProfileSharing, ALockGoesWithTheWriteAndIsNotWaitedForWithoutEnd) {
    pid_t child = -1;
    setAtFlush([&child] {
        child = fork();
        while (child == 0)
            pause();
    });
    EXPECT_TRUE(set(file_, "k", "1"));
    EXPECT_TRUE(set(file_, "k", "2"));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const int folder = open(native("").c_str(), O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(flock(folder, LOCK_EX), 0);
    const ScratchFolder other;
    std::atomic<bool> waits{true};
    std::thread elsewhere([&] {
        usleep(50000);
        EXPECT_TRUE(set(other.path("f.ini"), "k", "3"));
        EXPECT_TRUE(waits) << "one waits for a writer in another folder";
    });
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(errorAfter([&] { EXPECT_FALSE(set(file_, "k", "3")); }), DWORD{ERROR_SHARING_VIOLATION});
    waits = false;
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    elsewhere.join();
    close(folder);
    EXPECT_EQ(value(file_), "2");
}

// On such a disk one can undo what another has done, but what is there is always whole.
TEST_F(ProfileSharing, WritersWithoutLocksLeaveAWholeFile) {
    setBareDisk(true);
    const std::string filler(100000, 'v');
    const auto writer = [&](const std::string& key) {
        for (int i = 0; i < 100; ++i) {
            const std::string text = filler + std::to_string(i);
            if (!set(file_, key, text) && GetLastError() != ERROR_SHARING_VIOLATION) return false;
            const std::string bytes = bytesOf(file_);
            if (bytes.size() < filler.size() || !bytes.ends_with("\r\n")) return false;
        }
        return true;
    };
    std::vector<pid_t> children;
    for (const char* key : {"a", "b", "c"}) {
        children.push_back(fork());
        if (children.back() == 0) _exit(writer(key) ? 0 : 1);
    }
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    setBareDisk(false);
    EXPECT_EQ(namesOf(scratch_.path("*")).size(), 3u);
}

TEST_F(ProfileSharing, AnEditorsChangeInTheMidstOfAWriteIsKept) {
    setFileTimeTick(10'000'000);
    for (int i = 0; i < 10; ++i) {
        const std::string digit = std::to_string(i);
        overwrite(native("f.ini"), "[s]\r\nk=1\r\ne=-\r\n");
        setAtFlush([&] { overwrite(native("f.ini"), "[s]\r\nk=1\r\ne=" + digit + "\r\n"); });
        EXPECT_TRUE(set(file_, "k", "2"));
        EXPECT_EQ(bytesOf(file_), "[s]\r\nk=2\r\ne=" + digit + "\r\n");
        unlink(native("f.ini").c_str());
    }
    setFileTimeTick(1);
}

TEST_F(ProfileSharing, WhatIsThereAlreadyIsNotWritten) {
    for (const char* text : {"v", "v  ", " v", "\"v \" \t"}) {
        EXPECT_TRUE(set(file_, "k", text));
        struct stat before {
        }, after{};
        EXPECT_EQ(stat(native("f.ini").c_str(), &before), 0);
        EXPECT_TRUE(set(file_, "k", text));
        EXPECT_EQ(stat(native("f.ini").c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino) << text;
    }
}

TEST_F(ProfileSharing, AGroupThatCannotBeGivenGivesNobodyMore) {
    if (geteuid() != 0) GTEST_SKIP() << "files of others can be made by root only";
    constexpr uid_t kUser = 1234;
    struct Row {
        mode_t former, wanted;
    };
    const std::string path = native("f.ini");
    EXPECT_EQ(chown(native("").c_str(), kUser, kUser), 0);
    for (const Row& row : {Row{0640, 0600}, {0664, 0644}, {0604, 0600}, {0660, 0600}, {06755, 0755}}) {
        overwrite(path, "[s]\nk=v\n");
        EXPECT_TRUE(chown(path.c_str(), kUser, 34) == 0 && chmod(path.c_str(), row.former) == 0);
        inChild([&] {
            return setgroups(0, nullptr) == 0 && setgid(kUser) == 0 && setuid(kUser) == 0 &&
                   set(file_, "k", "w");
        });
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, row.wanted) << std::oct << row.former;
        unlink(path.c_str());
    }
    EXPECT_EQ(chmod(native("").c_str(), 0300), 0);
    inChild(
        [&] { return setuid(kUser) == 0 && !set(file_, "k", "w") && GetLastError() == ERROR_ACCESS_DENIED; });
}

}  // namespace
