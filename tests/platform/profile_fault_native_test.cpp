// Writers of an initialisation file that are killed, or fail, at every call that changes the disk: what is
// left is the old file or the new one, whole.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/platform/seeded.h"
#include "tests/support/failing_files_native.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

struct Operation {
    std::string section, key, value;
    enum Kind { write, deleteKey, deleteSection, replaceSection } kind;
};

// Mostly new values, in a file that grows to a few dozen kilobytes.
std::vector<Operation> script(std::size_t count) {
    std::mt19937 random(3);
    const auto below = [&random](unsigned end) { return static_cast<unsigned>(random() % end); };
    std::vector<Operation> operations;
    while (operations.size() < count) {
        const unsigned draw = below(20);
        const auto kind = draw == 0   ? Operation::deleteSection
                          : draw < 3  ? Operation::deleteKey
                          : draw == 3 ? Operation::replaceSection
                                      : Operation::write;
        // Each value is another one, so that each write changes the file.
        const std::string value =
            std::to_string(operations.size()) + std::string(below(8) == 0 ? 9000 : below(30), 'v');
        operations.push_back({"s" + std::to_string(below(5)), "k" + std::to_string(below(9)), value, kind});
    }
    return operations;
}

BOOL apply(const Operation& o, const char* file) {
    const char* const section = o.section.c_str();
    switch (o.kind) {
        case Operation::write:
            return WritePrivateProfileStringA(section, o.key.c_str(), o.value.c_str(), file);
        case Operation::deleteKey:
            return WritePrivateProfileStringA(section, o.key.c_str(), nullptr, file);
        case Operation::deleteSection:
            return WritePrivateProfileStringA(section, nullptr, nullptr, file);
        default:
            return WritePrivateProfileSectionA(section, (o.key + "=" + o.value + '\0').c_str(), file);
    }
}

std::string read(const Operation& o, const std::string& file) {
    std::string value(20000, '\0');
    value.resize(GetPrivateProfileStringA(o.section.c_str(), o.key.c_str(), "(none)", value.data(), 20000,
                                          file.c_str()));
    return value;
}

struct Outcome {
    bool killed = false;
    bool reached = false;   // as many calls were made
    bool done = false;      // the function said so
    bool mustFail = false;  // what failed was a write, a flush or a rename before the file was replaced
    bool mayBeNew = false;  // what failed may have come after that
    bool right = false;     // the process reads on what is in the file; a failure has its error
};

// Applies one operation in a process of its own.
Outcome applyInChild(const Operation& operation, const std::string& file, int nth, FileFault fault) {
    const pid_t child = fork();
    if (child == 0) {
        read(operation, file);  // so that the file is kept in memory
        SetLastError(kSeed);
        setFileFault(nth, fault);
        const bool done = apply(operation, file.c_str());
        const DWORD error = GetLastError();
        const FileCalls calls = takeFileCalls();
        const std::string kept = read(operation, file);
        WritePrivateProfileStringA(nullptr, nullptr, nullptr, nullptr);
        const bool named = calls.full ? error == ERROR_DISK_FULL : error != 0 && error != kSeed;
        const bool right = kept == read(operation, file) && (done || named);
        const bool mustFail = calls.reported && !calls.afterReplace;
        _exit(32 | (calls.made >= nth ? 1 : 0) | (done ? 2 : 0) | (mustFail ? 4 : 0) |
              (calls.afterReplace ? 8 : 0) | (right ? 16 : 0));
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) return {WTERMSIG(status) == SIGKILL, true, false, false, true, true};
    const int code = WEXITSTATUS(status);
    EXPECT_TRUE(code & 32) << "exit code " << code;
    return {false, (code & 1) != 0, (code & 2) != 0, (code & 4) != 0, (code & 8) != 0, (code & 16) != 0};
}

class ProfileFaults : public testing::Test {
  protected:
    using State = std::optional<std::string>;  // of the file, none when there is none

    State now() const {
        if (GetFileAttributesA(path_.c_str()) == INVALID_FILE_ATTRIBUTES) return std::nullopt;
        return bytesOf(path_);
    }
    void restore(const State& state) const {
        if (state) {
            scratch_.file("f.ini", *state);
        } else {
            DeleteFileA(path_.c_str());
        }
    }
    // What an undisturbed writer makes of the file.
    State after(const Operation& operation) const {
        EXPECT_TRUE(applyInChild(operation, path_, 0, FileFault::fails).done);
        return now();
    }
    // Disturbs an operation at one call. @return whether there are as many
    bool disturb(const Operation& operation, int nth, FileFault fault, const State& old,
                 const State& wanted) {
        restore(old);
        const std::size_t names = namesOf(scratch_.path("*")).size();
        const Outcome outcome = applyInChild(operation, path_, nth, fault);
        const State left = now();
        EXPECT_TRUE(left == old || left == wanted) << (left ? left->size() : 0) << " bytes";
        EXPECT_TRUE(outcome.right);
        EXPECT_TRUE(!outcome.done || left == wanted) << "done, and was not";
        EXPECT_TRUE(outcome.done || outcome.mayBeNew || left == old) << "failed, and did";
        EXPECT_FALSE(outcome.done && outcome.mustFail) << "did not tell";
        EXPECT_TRUE(outcome.done || outcome.reached) << "failed undisturbed";
        EXPECT_TRUE(outcome.killed || namesOf(scratch_.path("*")).size() <= names + (outcome.done ? 1 : 0))
            << "left a file behind";
        kills_ += outcome.killed ? 1 : 0;
        failures_ += outcome.killed || outcome.done ? 0 : 1;
        return outcome.reached && !HasFailure();
    }

    const ScratchFolder scratch_;
    const std::string path_ = scratch_.path("f.ini");
    int kills_ = 0;
    int failures_ = 0;
};

TEST_F(ProfileFaults, EveryWriterLeavesTheOldFileOrTheNewOne) {
    constexpr int kOperations = KOR_TEST_SANITIZED ? 20 : 200;  // a process takes ten times as long then
    int number = 0;
    for (const Operation& operation : script(kOperations)) {
        setBareDisk(number % 4 == 3);
        const State old = now();
        const State wanted = after(operation);
        for (const FileFault fault :
             {FileFault::fails, FileFault::kills, FileFault::writesAndFails, FileFault::writesAndKills}) {
            int nth = 1;
            while (disturb(operation, nth, fault, old, wanted))
                ++nth;
            ASSERT_FALSE(HasFailure())
                << "operation " << number << ", call " << nth << ", fault " << static_cast<int>(fault);
        }
        restore(old);
        EXPECT_TRUE(after(operation) == wanted);
        ++number;
    }
    setBareDisk(false);
    std::printf("%d writers killed, %d made to fail\n", kills_, failures_);
    EXPECT_GT(kills_, 2 * kOperations);
    EXPECT_GT(failures_, 2 * kOperations);
    EXPECT_EQ(namesOf(scratch_.path("*")).size(), 3u) << "., .., f.ini and nothing that a killed writer left";
}

}  // namespace
