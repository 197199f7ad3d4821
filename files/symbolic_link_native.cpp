#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <memory>

#include "files/symbolic_link.h"
#include "korutil/platform/name.h"
#include "platform/win32.h"

namespace kor {
namespace {

// The result of a function that tells the room it needs; empty on failure.
std::string translated(DWORD(WINAPI* function)(LPCSTR, LPSTR, DWORD), const char* text) {
    std::string result(function(text, nullptr, 0), '\0');
    const DWORD length = function(text, result.data(), static_cast<DWORD>(result.size()));
    result.resize(length < result.size() ? length : 0);
    return result;
}

struct Free {
    void operator()(char* text) const { std::free(text); }
};

// One step, as the link spells it.
std::optional<std::string> nextOf(const std::string& link) {
    char target[PATH_MAX];
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    if (length < 0 || length == sizeof target) return std::nullopt;
    const std::string text(target, static_cast<std::size_t>(length));
    return text.starts_with('/') ? text : link.substr(0, link.rfind('/') + 1) + text;
}

}  // namespace

std::optional<std::string> symbolicLinkTarget(const char* path) {
    const std::string native = translated(korNativePath, path);
    const auto next = nextOf(native);
    if (!next) return std::nullopt;
    const std::unique_ptr<char, Free> end(realpath(native.c_str(), nullptr));
    return translated(korWindowsPath, end ? end.get() : next->c_str());
}

}  // namespace kor
