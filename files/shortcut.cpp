// Where shortcuts lead.
#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "files/link_file.h"
#include "files/symbolic_link.h"
#include "files/text_buffer.h"
#include "korutil/file_system.h"
#include "korutil/path.h"
#include "platform/last_separator.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

int failed(DWORD code) {
    SetLastError(code);
    return 0;
}

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using File = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

// The start of a file, at most 1 MB; nothing on failure.
std::optional<std::vector<std::byte>> startOf(const char* path) {
    constexpr DWORD kMost = 1 << 20;
    if (!sysReadableFileFast(path)) return std::nullopt;
    HANDLE handle = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
    const File file(handle);
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(handle, &size)) return std::nullopt;
    std::vector<std::byte> bytes(static_cast<std::size_t>(std::min<LONGLONG>(size.QuadPart, kMost)));
    DWORD count = 0;
    if (!ReadFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr))
        return std::nullopt;
    bytes.resize(count);
    return bytes;
}

// @return 1 when the target is an absolute path and fits
int deliver(const std::string& path, char* target, DWORD size) {
    if (!sysIsAbsPath(path.c_str())) return failed(ERROR_PATH_NOT_FOUND);
    return copyWhole(path, target, size) ? 1 : failed(ERROR_INSUFFICIENT_BUFFER);
}

int deliverRelative(const char* shortcut, const std::string& relative, char* target, DWORD size) {
    char folder[kPathRoom];
    if (!sysFullPath(folder, shortcut, sizeof folder)) return 0;
    std::string path(folder);
    path.resize(std::min(lastSeparator(path, "\\") + 1, path.size()));
    return sysFullPath(target, (path + relative).c_str(), size);
}

int resolve(const char* shortcut, char* target, DWORD size) {
    if (const auto path = symbolicLinkTarget(shortcut)) return deliver(*path, target, size);
    const auto bytes = startOf(shortcut);
    if (!bytes) return 0;
    const auto link = readLink(*bytes);
    if (!link) return failed(ERROR_BAD_FORMAT);
    if (link->path.empty() && !link->relative.empty())
        return deliverRelative(shortcut, link->relative, target, size);
    return deliver(link->path, target, size);
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysResolveShortcut(const char* shortcut, char* target, DWORD size) {
    if (!shortcut || !target) return kor::failed(ERROR_INVALID_PARAMETER);
    try {
        const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
        return kor::resolve(shortcut, target, size);
    } catch (const std::bad_alloc&) {
        return kor::failed(ERROR_NOT_ENOUGH_MEMORY);
    }
}
