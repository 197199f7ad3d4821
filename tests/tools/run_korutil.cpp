#include "tests/tools/run_korutil.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace kor::test {
namespace {

class MemoryFile {
  public:
    MemoryFile() : descriptor_(::memfd_create("stream", MFD_CLOEXEC)) {}
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    int descriptor() const { return descriptor_; }

    void fill(const std::string& text) {
        EXPECT_EQ(::pwrite(descriptor_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    }

    std::string content() const {
        std::string text(static_cast<std::size_t>(::lseek(descriptor_, 0, SEEK_END)), '\0');
        EXPECT_EQ(::pread(descriptor_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
        return text;
    }

  private:
    int descriptor_;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentOf(const WorkFolder& folder, const Call& call) {
    std::vector<std::string> result = {"KORUTIL_HOME=" + folder.path("home")};
    for (const auto& [name, value] : call.environment)
        result.push_back(name + '=' + value);
    for (char** entry = environ; *entry; ++entry) {
        if (!std::string_view(*entry).starts_with("KORUTIL_")) result.emplace_back(*entry);
    }
    return result;
}

// What standard output is instead of the outcome's text; -1 for nothing else.
int otherOutputOf(const Call& call) {
    if (call.brokenPipe) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        ::close(ends[0]);
        return ends[1];
    }
    if (call.outputFile.empty()) return -1;
    const int file = ::open(call.outputFile.c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_GE(file, 0) << call.outputFile;
    return file;
}

// Between fork and exec only what is safe in a copy of a process with several threads.
[[noreturn]] void becomeCommand(const Call& call, const char* folder, char** arguments, char** environment,
                                int input, int output, int errors) {
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    if (call.closedOutput) ::close(STDOUT_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    if (call.fileSizeLimit > 0) {
        const rlimit limit{call.fileSizeLimit, call.fileSizeLimit};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (call.user > 0 && (::setgid(call.user) != 0 || ::setuid(call.user) != 0)) ::_exit(126);
    if (::chdir(folder) == 0) ::execve(KORUTIL_COMMAND, arguments, environment);
    ::_exit(127);
}

}  // namespace

WorkFolder::WorkFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "korutil-test-XXXXXX").string();
    EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
    path_ = std::filesystem::canonical(pattern).string();
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void WorkFolder::write(const std::string& name, const std::string& bytes) const {
    std::ofstream file(path(name), std::ios::binary);
    file << bytes;
    EXPECT_TRUE(file.flush()) << name;
}

std::string WorkFolder::read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    EXPECT_TRUE(file) << name;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

std::vector<std::string> WorkFolder::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        if (entry.path().filename() != "home") names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

Outcome run(const WorkFolder& folder, const Call& call) {
    std::vector<std::string> words = {"korutil"};
    words.insert(words.end(), call.arguments.begin(), call.arguments.end());
    std::vector<std::string> variables = environmentOf(folder, call);
    const std::vector<char*> arguments = pointersTo(words);
    const std::vector<char*> environment = pointersTo(variables);
    const std::string place = folder.path(".");
    MemoryFile input;
    MemoryFile output;
    MemoryFile errors;
    input.fill(call.input);
    const int outputFile = otherOutputOf(call);
    const pid_t child = ::fork();
    if (child == 0) {
        becomeCommand(call, place.c_str(), const_cast<char**>(arguments.data()),
                      const_cast<char**>(environment.data()), input.descriptor(),
                      outputFile >= 0 ? outputFile : output.descriptor(), errors.descriptor());
    }
    if (outputFile >= 0) ::close(outputFile);
    if (call.signal > 0) {
        ::usleep(call.delay);
        ::kill(child, call.signal);
    }
    int state = 0;
    EXPECT_EQ(::waitpid(child, &state, 0), child);
    const int status = WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
    return {status, output.content(), errors.content()};
}

Outcome run(const WorkFolder& folder, std::vector<std::string> arguments) {
    return run(folder, Call{.arguments = std::move(arguments)});
}

}  // namespace kor::test
