// Paths relative to a file, and back. Pure text.
#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/path_form.h"
#include "files/text_buffer.h"
#include "framework/multibyte.h"
#include "korutil/path.h"
#include "platform/win32.h"
#include "runtime/process_state.h"

namespace kor {
namespace {

constexpr std::string_view kUp = "..\\";

// Where the backslashes of a text stand.
std::vector<std::size_t> backslashesOf(std::string_view text) {
    std::vector<std::size_t> found;
    for (std::size_t at = 0; at < text.size(); at += characterLength(text.substr(at)))
        if (text[at] == '\\') found.push_back(at);
    return found;
}

// A base: the full name of a file, with the ends of the folders above it.
struct Base {
    explicit Base(std::string_view name) : text(name), backslashes(backslashesOf(name)) {}

    std::string_view text;
    std::vector<std::size_t> backslashes;
};

// The host executable's file name does not change.
const std::string& hostFileName() {
    static const std::string name = [] {
        char text[kPathRoom];
        const DWORD length = GetModuleFileNameA(processState().host, text, sizeof text);
        return std::string(text, length < sizeof text ? length : 0);
    }();
    return name;
}

std::string_view baseText(const char* base) { return base ? std::string_view(base) : hostFileName(); }

bool equalWithoutCase(std::string_view first, std::string_view second) {
    if (first.size() != second.size()) return false;
    if (first == second) return true;
    std::string lowFirst(first), lowSecond(second);
    CharLowerBuffA(lowFirst.data(), static_cast<DWORD>(lowFirst.size()));
    CharLowerBuffA(lowSecond.data(), static_cast<DWORD>(lowSecond.size()));
    return lowFirst == lowSecond;
}

// The components of a path behind its root, one after the other.
class Components {
  public:
    Components(std::string_view path, std::size_t root)
        : rest_(path.substr(root)), ends_(backslashesOf(rest_)) {}

    bool atEnd() const { return start_ > rest_.size(); }
    std::string_view current() const { return rest_.substr(start_, end() - start_); }
    void next() {
        start_ = end() + 1;
        ++index_;
    }

    std::string_view rest() const { return atEnd() ? std::string_view() : rest_.substr(start_); }
    std::size_t backslashesLeft() const { return ends_.size() - std::min(index_, ends_.size()); }

  private:
    std::size_t end() const { return index_ < ends_.size() ? ends_[index_] : rest_.size(); }

    std::string_view rest_;
    std::vector<std::size_t> ends_;
    std::size_t start_ = 0;
    std::size_t index_ = 0;
};

// @return the relative form; the path itself when there is none; nothing on failure
std::optional<std::string> relativeForm(std::string path, std::string_view base) {
    if (base.empty()) return std::nullopt;
    if (path.size() == 2 && hasDrive(path)) path += '\\';
    if (!isAbsolutePath(path)) return path;
    if (!isAbsolutePath(base)) return std::nullopt;
    const bool network = isNetworkPath(path);
    if (network != isNetworkPath(base)) return path;
    if (!network && !equalWithoutCase(path.substr(0, 1), base.substr(0, 1))) return path;

    const std::size_t root = network ? 2 : 3;
    Components ours(path, root), theirs(base, root);
    // Required: the base's last component, its file name, counts too.
    while (!ours.atEnd() && !theirs.atEnd() && equalWithoutCase(ours.current(), theirs.current())) {
        ours.next();
        theirs.next();
    }
    const std::string_view rest = ours.rest();
    const std::size_t levels = theirs.backslashesLeft();
    if (rest.size() + levels * kUp.size() + 1 > kPathRoom) return path;
    std::string relative;
    for (std::size_t level = 0; level < levels; ++level)
        relative += kUp;
    relative += rest;
    if (rest.empty() && levels != 0) relative.pop_back();
    return relative.empty() ? "." : relative;
}

// A path that begins with one backslash.
std::optional<std::string> onDriveOf(std::string_view base, std::string_view path) {
    std::string absolute(isNetworkPath(base) ? "\\" : base.substr(0, 2));
    absolute += path;
    if (absolute.size() >= kPathRoom) return std::nullopt;
    return absolute;
}

// @return the absolute form; nothing on failure
std::optional<std::string> absoluteForm(std::string path, const Base& base) {
    if (path.empty() || base.text.empty()) return std::nullopt;
    if (path.size() == 2 && hasDrive(path)) return path + '\\';
    if (isAbsolutePath(path)) return path;
    if (!isAbsolutePath(base.text)) return std::nullopt;
    if (path[0] == '\\') return onDriveOf(base.text, path);

    std::size_t level = base.backslashes.size() - 1;
    std::size_t kept = 0;
    const bool isFolderItself = path == "." || path == ".\\";
    if (!isFolderItself) {
        if (path.starts_with(".\\")) path.erase(0, 2);
        if (path.ends_with("..")) path += '\\';
        // No byte below 0x40 is ever the second one of a character, so a step is found byte by byte.
        // Required: one counts wherever it stands, at the end of a name too.
        for (std::size_t at = 0; (at = path.find(kUp, at)) != path.npos; kept = at) {
            if (level == 0) return std::nullopt;
            --level;
            at += kUp.size();
        }
    }
    std::string absolute(base.text.substr(0, base.backslashes[level]));
    // Above the root of a network there is nothing.
    if (absolute.empty()) return std::nullopt;
    absolute += '\\';
    if (!isFolderItself) absolute.append(path, kept);
    if (absolute.size() >= kPathRoom) return std::nullopt;
    return absolute;
}

bool isList(std::string_view path) { return path.find(';') != path.npos; }

// The absolute form of one path, tidied; empty on failure.
std::string tidyAbsoluteForm(std::string_view path, const Base& base) {
    std::string absolute = absoluteForm(std::string(path), base).value_or("");
    sysBeautifyPathname(absolute.data(), 0);
    return absolute;
}

// Required: a list is made absolute by both conversions.
int convertList(char* list, const Base& base, DWORD size) {
    if (size == 0) return 0;
    std::string converted;
    int count = 0;
    for (std::string_view rest(list); !rest.empty();) {
        const std::size_t end = std::min(rest.find(';'), rest.size());
        const std::string_view entry = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (entry.empty() || entry.size() >= kPathRoom) continue;
        const std::string absolute = tidyAbsoluteForm(entry, base);
        if (absolute.empty()) continue;
        if (converted.size() + absolute.size() + 1 > size) return 0;
        converted += absolute + ';';
        ++count;
    }
    if (count != 0) converted.pop_back();
    copyWhole(converted, list, size);
    return count;
}

template <typename Conversion>
int convert(char* path, const char* base, Conversion conversion) {
    if (!path) return 0;
    try {
        return conversion(baseText(base));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysCvtToRelPath(char* path, const char* base, DWORD size) {
    return kor::convert(path, base, [&](std::string_view baseName) {
        if (kor::isList(path)) return kor::convertList(path, kor::Base(baseName), size);
        const auto relative = kor::relativeForm(path, baseName);
        if (relative) std::memcpy(path, relative->c_str(), relative->size() + 1);
        return relative ? 1 : 0;
    });
}

int KORUTIL_CALL sysCvtToAbsPath(char* path, const char* base, DWORD size) {
    return kor::convert(path, base, [&](std::string_view baseName) {
        if (kor::isList(path)) return kor::convertList(path, kor::Base(baseName), size);
        const std::string absolute = kor::tidyAbsoluteForm(path, kor::Base(baseName));
        if (!absolute.empty()) std::memcpy(path, absolute.c_str(), absolute.size() + 1);
        return absolute.empty() ? 0 : 1;
    });
}
