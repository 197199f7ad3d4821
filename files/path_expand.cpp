// Symbolic folders, which stand in the registry.
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

#include "files/text_buffer.h"
#include "korutil/path.h"
#include "korutil/registry.h"
#include "platform/last_separator.h"
#include "platform/win32.h"

namespace kor {
namespace {

struct KeyCloser {
    void operator()(HKEY key) const { appCloseRegKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

// The folder that a symbolic name stands for; false when there is none.
bool findFolder(const std::string& name, char (&folder)[kPathRoom]) {
    const Key key(appOpenRegKey(kRegKeyDirectories, KEY_READ, nullptr));
    return key && appGetRegString(key.get(), name.c_str(), folder, sizeof folder, nullptr);
}

int expand(char* path, DWORD size) {
    constexpr std::size_t kShortest = 3;  // "<>\"
    const std::string_view text(path);
    const std::size_t separator = lastSeparator(text, "\\/");
    const bool hasFolder = separator != text.npos && separator + 1 >= kShortest;
    if (!hasFolder || (text[0] != '<' && text[0] != '%') || text[1] == ':') return 1;
    const std::size_t end = text.substr(0, separator).find(text[0] == '<' ? '>' : '%', 1);
    if (end == text.npos) return 0;
    char folder[kPathRoom];
    if (!findFolder(std::string(text.substr(1, end - 1)), folder)) return 0;
    return copyWhole(std::string(folder).append(text.substr(end + 1)), path, size);
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysExpandPath(char* path, DWORD size) {
    if (!path) return 0;
    try {
        return kor::expand(path, size);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
