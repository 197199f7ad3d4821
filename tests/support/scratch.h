#pragma once
// A scratch folder per test.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kor::test {

/// A new, empty folder below the temporary folder, removed with all its contents at the end. Its path is
/// absolute
/// (`Z:\tmp\kor1a2b-0` natively) and has no trailing backslash. A native-only test gets its native path from
/// korNativePath and removes itself what it made under names that the platform cannot express.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return path_; }

    /// The path of a name inside; `name` may hold backslashes.
    std::string path(std::string_view name) const;

    /// Writes a file of these bytes and returns its path; a file that cannot be written fails the test.
    std::string file(std::string_view name, std::string_view bytes = {}) const;

    /// Makes a folder inside and returns its path.
    std::string folder(std::string_view name) const;

  private:
    std::string path_;
};

/// The bytes of a file; one that cannot be read fails the test and gives none.
std::string bytesOf(const std::string& path);

/// The names that a pattern finds, in the order found.
std::vector<std::string> namesOf(const std::string& pattern);

}  // namespace kor::test
