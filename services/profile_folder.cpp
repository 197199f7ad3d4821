// The folders that settings and help lie in.
#include <array>
#include <string_view>

#include "framework/bounded_text.h"
#include "korutil/path.h"
#include "korutil/profile.h"
#include "platform/last_separator.h"
#include "services/profile_state.h"

namespace {

constexpr char kSection[] = "System";
constexpr char kRootKey[] = "Root";

}  // namespace

const char* KORUTIL_CALL appGetExeDir() {
    static std::array<char, MAX_PATH> folder{};
    if (folder[0] == '\0') {
        const DWORD length = GetModuleFileNameA(nullptr, folder.data(), MAX_PATH);
        const std::string_view path(folder.data(), length < MAX_PATH ? length : 0);
        const std::size_t backslash = kor::lastSeparator(path, "\\");
        folder[backslash == path.npos ? 0 : backslash + 1] = '\0';
    }
    return folder[0] == '\0' ? nullptr : folder.data();
}

BOOL KORUTIL_CALL utlMakeHelpPathName(char* buffer, DWORD size, const char* name) {
    if (!buffer || size == 0) return FALSE;
    const char* known = appGetExeDir();
    const std::string_view folder = known ? known : "";
    const std::string_view file = name ? name : "";
    const bool fits = known && folder.size() + file.size() < size;
    if (fits) {
        folder.copy(buffer, folder.size());
        file.copy(buffer + folder.size(), file.size());
    }
    buffer[fits ? folder.size() + file.size() : 0] = '\0';
    return fits;
}

BOOL KORUTIL_CALL appGetUserRootDir(char* buffer, DWORD size) {
    if (!buffer || size == 0) return FALSE;
    if (appGetProfileString(kSection, kRootKey, "", buffer, size, kProfileBoth, nullptr) == 0) {
        std::array<char, MAX_PATH> folder{};
        utlMakeHelpPathName(folder.data(), MAX_PATH, "");
        kor::BoundedText(buffer, size).append(folder.data());
    }
    sysDeleteBackslash(buffer);
    return TRUE;
}
