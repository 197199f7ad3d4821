// Paths, stored relative to the profile that holds them.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "korutil/path.h"
#include "korutil/profile.h"
#include "services/profile_argument.h"
#include "services/profile_write.h"

namespace kor {
namespace {

constexpr DWORD kWorkRoom = 32768;

bool isList(const char* text) { return std::strchr(text, ';') != nullptr; }

// The profile that the value read last came from.
const char* sourceOf(const ProfileSelector& selector) {
    const ProfileState& state = profileState();
    if (selector.file()) return selector.file();
    return (state.foundInUser ? state.user : state.application).data();
}

// A single path is converted in a buffer of any path's size, whatever the size of the caller's.
int makeAbsolute(char* path, DWORD length, DWORD size, const char* base) {
    const std::size_t room = std::max<std::size_t>(length + 1, MAX_PATH);
    const std::unique_ptr<char[]> work(new (std::nothrow) char[room]);
    if (!work) return 0;
    std::memcpy(work.get(), path, length + 1);
    const int result = sysCvtToAbsPath(work.get(), base, static_cast<DWORD>(room));
    const std::size_t made = std::strlen(work.get());
    if (!result || made >= size) return 0;
    std::memcpy(path, work.get(), made + 1);
    return result;
}

// A list is converted in the caller's buffer, whose text is put back when no path is left of it.
int makeListAbsolute(char* list, DWORD length, DWORD size, const char* base) {
    const std::unique_ptr<char[]> read(new (std::nothrow) char[std::size_t{length} + 1]);
    if (!read) return 0;
    std::memcpy(read.get(), list, std::size_t{length} + 1);
    const int result = sysCvtToAbsPath(list, base, size);
    if (!result) std::memcpy(list, read.get(), std::size_t{length} + 1);
    return result;
}

BOOL writePaths(const char* section, const char* key, const char* value, const char* file) {
    const std::unique_ptr<char[]> work(new (std::nothrow) char[kWorkRoom]);
    if (!work) return FALSE;
    lstrcpynA(work.get(), value, kWorkRoom);
    if (*value && !sysCvtToRelPath(work.get(), file, kWorkRoom)) return FALSE;
    return writeProfileText(section, key, work.get(), file);
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL appGetProfilePaths(const char* section, const char* key, const char* defaultText,
                                    char* buffer, DWORD size, UINT_PTR selector, HINSTANCE module) {
    const DWORD length = appGetProfileString(section, key, defaultText, buffer, size, selector, module);
    if (length == 0) return 0;
    const char* base = kor::sourceOf(kor::readSelector(selector));
    return kor::isList(buffer) ? kor::makeListAbsolute(buffer, length, size, base)
                               : kor::makeAbsolute(buffer, length, size, base);
}

BOOL KORUTIL_CALL appWriteProfilePaths(const char* section, const char* key, const char* value,
                                       UINT_PTR selector, HINSTANCE module) {
    if (!value) return appWriteProfileString(section, key, nullptr, selector, module);
    if (strnlen(value, kor::kWorkRoom) == kor::kWorkRoom ||
        !kor::resolveName(section, kor::NameRole::section, module) ||
        !kor::resolveName(key, kor::NameRole::key, module)) {
        return FALSE;
    }
    return kor::writeToProfiles(selector,
                                [&](const char* file) { return kor::writePaths(section, key, value, file); });
}
