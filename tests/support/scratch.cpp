#include "tests/support/scratch.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdio>

#include "platform/win32.h"

namespace kor::test {
namespace {

class OpenedFile {
  public:
    OpenedFile(const std::string& path, DWORD access, DWORD disposition)
        : handle_(CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                              0, nullptr)) {}
    ~OpenedFile() {
        if (opened()) CloseHandle(handle_);
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    bool opened() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE handle() const { return handle_; }

  private:
    HANDLE handle_;
};

void removeTree(const std::string& folder) {
    for (const std::string& name : namesOf(folder + "\\*")) {
        if (name == "." || name == "..") continue;
        const std::string path = folder + "\\" + name;
        const DWORD attributes = GetFileAttributesA(path.c_str());
        if (attributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
            removeTree(path);
        } else {
            DeleteFileA(path.c_str());
        }
    }
    RemoveDirectoryA(folder.c_str());
}

}  // namespace

ScratchFolder::ScratchFolder() {
    static std::atomic<unsigned> count{0};
    std::array<char, MAX_PATH + 1> temporary{};
    GetTempPathA(MAX_PATH, temporary.data());
    for (int tries = 0; tries < 1000 && path_.empty(); ++tries) {
        std::array<char, 40> name{};
        std::snprintf(name.data(), name.size(), "kor%x-%u", static_cast<unsigned>(GetCurrentProcessId()),
                      count++);
        const std::string candidate = std::string(temporary.data()) + name.data();
        if (CreateDirectoryA(candidate.c_str(), nullptr)) path_ = candidate;
    }
    EXPECT_FALSE(path_.empty()) << "no scratch folder in " << temporary.data() << ", error "
                                << GetLastError();
}

ScratchFolder::~ScratchFolder() {
    if (!path_.empty()) removeTree(path_);
}

std::string ScratchFolder::path(std::string_view name) const { return path_ + "\\" + std::string(name); }

std::string ScratchFolder::file(std::string_view name, std::string_view bytes) const {
    const std::string result = path(name);
    const OpenedFile file(result, GENERIC_WRITE, CREATE_ALWAYS);
    DWORD written = 0;
    EXPECT_TRUE(file.opened() &&
                WriteFile(file.handle(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        << result << ", error " << GetLastError();
    return result;
}

std::string ScratchFolder::folder(std::string_view name) const {
    const std::string result = path(name);
    EXPECT_TRUE(CreateDirectoryA(result.c_str(), nullptr)) << result << ", error " << GetLastError();
    return result;
}

std::string bytesOf(const std::string& path) {
    const OpenedFile file(path, GENERIC_READ, OPEN_EXISTING);
    EXPECT_TRUE(file.opened()) << path << ", error " << GetLastError();
    if (!file.opened()) return {};
    std::string bytes(GetFileSize(file.handle(), nullptr), '\0');
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file.handle(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr));
    EXPECT_EQ(read, bytes.size()) << path;
    return bytes;
}

std::vector<std::string> namesOf(const std::string& pattern) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA(pattern.c_str(), &data);
    if (find == INVALID_HANDLE_VALUE) return names;
    do {
        names.emplace_back(data.cFileName);
    } while (FindNextFileA(find, &data));
    FindClose(find);
    return names;
}

}  // namespace kor::test
