#include "platform/posix/advapi/registry_file.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "korutil/platform/module.h"
#include "platform/posix/advapi/registry_text.h"
#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/drive_map.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/known_code_page.h"

namespace kor {
namespace {

constexpr std::uint64_t kMostFile = std::uint64_t{1} << 31;
constexpr std::uint64_t kLeastBudget = 10 << 20;  // reading takes another 6 MB at most
constexpr std::int64_t kYoung = 20'000'000;       // ns: within the grain of file times
constexpr int kMostReported = 100;

std::optional<std::string> chosenFolder() {
    const char* given = std::getenv("KORUTIL_REGISTRY");
    if (given && *given) {
        std::error_code failed;
        const std::filesystem::path folder = std::filesystem::absolute(given, failed);
        if (failed == std::errc::not_enough_memory) throw std::bad_alloc();
        return folder.string();
    }
    if (!homeFolder()) return std::nullopt;
    return *homeFolder() + "/registry";
}

const std::optional<std::string>& registryFolder() {
    static const std::optional<std::string> folder = chosenFolder();
    return folder;
}

bool sameTime(const timespec& first, const timespec& second) {
    return first.tv_sec == second.tv_sec && first.tv_nsec == second.tv_nsec;
}

bool sameState(const struct stat& first, const struct stat& second) {
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino &&
           first.st_size == second.st_size && sameTime(first.st_mtim, second.st_mtim) &&
           sameTime(first.st_ctim, second.st_ctim);
}

// Whether the file may change again without a sign of it.
bool isYoung(const struct stat& status) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t seconds = now.tv_sec - status.st_ctim.tv_sec;
    return seconds <= 1 && seconds * 1'000'000'000 + now.tv_nsec - status.st_ctim.tv_nsec < kYoung;
}

// What is sent to the debugger of a file's faults: the first ones, then their number.
class Faults {
  public:
    explicit Faults(const std::string& path) {
        const auto text = textFromUtf8(path);
        name_ = text ? *text : std::filesystem::path(path).filename().string();
    }
    void add(std::size_t line, const char* reason) {
        if (++count_ <= kMostReported) text_ += name_ + ":" + std::to_string(line) + ": " + reason + "\n";
    }
    void add(const char* reason) { text_ += name_ + ": " + reason + "\n"; }
    std::string text() const {
        if (count_ <= kMostReported) return text_;
        return text_ + name_ + ": and " + std::to_string(count_ - kMostReported) + " more\n";
    }

  private:
    std::string name_;
    std::string text_;
    int count_ = 0;
};

}  // namespace

RegistryFile::State RegistryFile::current() {
    const std::lock_guard lock(mutex_);
    if (!registryFolder()) return {ERROR_SUCCESS, std::make_shared<RegistryTree>(0)};
    const std::string path = *registryFolder() + "/" + root_ + ".reg";
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) status = {};
    if (isCurrent_ && sameState(status, status_)) return state_;
    isCurrent_ = false;
    state_ = {};  // not two of them at a time
    state_ = read(path);
    return state_;
}

RegistryFile::State RegistryFile::read(const std::string& path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    status_ = {};
    if (!file.isOpen() && errno != ENOENT && errno != ENOTDIR) {
        return {static_cast<LSTATUS>(errorFromErrno(errno)), nullptr};
    }
    if (!file.isOpen() || fstat(file.get(), &status_) != 0) {
        isCurrent_ = true;
        return {ERROR_SUCCESS, std::make_shared<RegistryTree>(0)};
    }
    const bool settled = !isYoung(status_);
    State state = parse(file.get(), status_, path);
    isCurrent_ = settled && state.tree;
    return state;
}

RegistryFile::State RegistryFile::parse(int file, const struct stat& status, const std::string& path) {
    const auto size = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
    if (size > kMostFile) return {ERROR_NOT_ENOUGH_MEMORY, nullptr};
    const auto tree = std::make_shared<RegistryTree>(2 * size + kLeastBudget);
    Faults faults(path);
    RegistryText text(*tree, root_,
                      [&faults](std::size_t line, const char* reason) { faults.add(line, reason); });
    RegistryLines lines([&text](const RegistryLine& line) { return text.take(line); });
    if (!S_ISREG(status.st_mode)) faults.add("this is no file");
    std::vector<char> piece(64 * 1024);
    std::uint64_t left =
        size;  // what another process appends meanwhile is read when the file is seen changed
    bool wanted = true;
    while (wanted && left > 0) {
        const ssize_t got = ::read(file, piece.data(), piece.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return {static_cast<LSTATUS>(errorFromErrno(errno)), nullptr};
        if (got == 0) break;
        const std::size_t taken = std::min<std::uint64_t>(static_cast<std::uint64_t>(got), left);
        wanted = lines.feed({piece.data(), taken});
        left -= taken;
    }
    if (wanted) lines.finish();
    if (wanted) text.finish();
    report(faults.text());
    return {ERROR_SUCCESS, tree};
}

void RegistryFile::report(std::string faults) {
    if (faults == reported_ && sameState(status_, reportedStatus_)) return;
    reported_ = std::move(faults);
    reportedStatus_ = status_;
    OutputDebugStringA(reported_.c_str());
}

RegistryFile* registryFile(HKEY root) {
    static std::array<RegistryFile, 4> files{RegistryFile("HKEY_CLASSES_ROOT"),
                                             RegistryFile("HKEY_CURRENT_USER"),
                                             RegistryFile("HKEY_LOCAL_MACHINE"), RegistryFile("HKEY_USERS")};
    for (const HKEY known : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS}) {
        const auto index = reinterpret_cast<ULONG_PTR>(known) & 0xFF;
        if (known == root) return &files[index];
    }
    return nullptr;
}

}  // namespace kor
