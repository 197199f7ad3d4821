#pragma once
// What the lines of a registry file say. docs/format-registry-text.md describes the format.

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/posix/advapi/registry_lines.h"
#include "platform/posix/advapi/registry_tree.h"

namespace kor {

/// Hears of a line that cannot be read, and why.
using RegistryFaultTaker = std::function<void(std::size_t line, const char* reason)>;

inline constexpr std::size_t kDeepestRegistryKey = 512;  // the system's limit

/// Splits a key's path at its backslashes; several in a row count as one, and one at the end as none. Of a
/// path with more names than any key's no more are given than show that.
std::vector<std::string_view> registryKeyNames(std::string_view path);

class RegistryText {
  public:
    /// @param root  the root's name; keys of other roots are refused
    RegistryText(RegistryTree& tree, std::string_view root, RegistryFaultTaker report)
        : tree_(tree), root_(root), report_(std::move(report)) {}

    /// @return false when nothing behind the line can be read either
    bool take(const RegistryLine& line);

    /// The file has ended.
    void finish();

  private:
    // What the values that follow belong to: no key line was there yet; a key; a key that was removed or
    // cannot be read, whose values are passed over.
    enum class Place { none, key, nowhere };
    enum class Bytes { none, go_on, skipped };

    // Each gives the reason why its text cannot be read, or null.
    const char* takeHeader(std::string_view text);
    const char* takeText(std::string_view text);
    const char* takeKey(std::string_view text);
    const char* enterKey(std::string_view path);
    const char* removeKey(std::string_view path);
    const char* takeValue(std::string_view text);
    const char* takeData(std::string_view text);
    const char* takeString(std::string_view text);
    const char* takeNumber(std::string_view text);
    const char* startBytes(std::string_view text);
    const char* takeBytes(std::string_view text);
    const char* addBytes(std::string_view text, bool& more);
    const char* endBytes();
    const char* setValue(DWORD type, std::string_view bytes);
    const char* namesBelowRoot(std::string_view path, std::vector<std::string_view>& names) const;

    RegistryTree& tree_;
    std::string root_;
    RegistryFaultTaker report_;
    bool hasHeader_ = false;
    bool wideTexts_ = false;  // texts given as bytes are UTF-16
    Place place_ = Place::none;
    RegistryTree::Entry key_ = RegistryTree::kNone;
    std::string name_;  // of the value at hand
    Bytes state_ = Bytes::none;
    std::size_t number_ = 0;     // of the line at hand
    std::size_t startLine_ = 0;  // of the value whose bytes go on
    DWORD type_ = 0;
    std::string bytes_;
};

}  // namespace kor
