// Reading texts and integers, and where they come from.
#include <cstring>

#include "korutil/profile.h"
#include "services/profile_argument.h"
#include "services/profile_state.h"

namespace kor {
namespace {

constexpr char kAbsent[] = "1";  // no key has this value and is empty

// Whether the user profile has the key, given that the caller's buffer received nothing. In a buffer of one
// character even a value that is there leaves nothing.
bool userProfileHas(const char* section, const char* key, DWORD size) {
    const char* user = profileState().user.data();
    char text[4];
    if (GetPrivateProfileStringA(section, key, kAbsent, text, sizeof text, user) == 0) return true;
    return size == 1 && GetPrivateProfileStringA(section, key, "", text, sizeof text, user) != 0;
}

DWORD copyWhole(const char* text, char* buffer) {
    const std::size_t length = std::strlen(text);
    std::memmove(buffer, text, length + 1);
    return static_cast<DWORD>(length);
}

DWORD readText(const char* section, const char* key, const char* defaultText, char* buffer, DWORD size,
               const ProfileSelector& selector) {
    ProfileState& state = profileState();
    const auto readFrom = [&](const char* file, const char* missing) {
        return GetPrivateProfileStringA(section, key, missing, buffer, size, file);
    };
    if (selector.file()) return readFrom(selector.file(), defaultText);
    if (!selector.user()) return readFrom(state.application.data(), defaultText);
    state.foundInUser = true;
    if (const DWORD length = readFrom(state.user.data(), "")) return length;
    if (userProfileHas(section, key, size)) {
        buffer[0] = '\0';
        return 0;
    }
    state.foundInUser = false;
    if (selector.application() && !state.sameFile) return readFrom(state.application.data(), defaultText);
    // The default is copied without regard to the buffer's size: the callers' defaults fit, and that is
    // required.
    return copyWhole(defaultText, buffer);
}

UINT readInteger(const char* section, const char* key, int defaultValue, const ProfileSelector& selector) {
    ProfileState& state = profileState();
    const auto readFrom = [&](const char* file, int missing) {
        return GetPrivateProfileIntA(section, key, missing, file);
    };
    if (selector.file()) return readFrom(selector.file(), defaultValue);
    if (!selector.user()) return readFrom(state.application.data(), defaultValue);
    state.foundInUser = true;
    if (const UINT value = readFrom(state.user.data(), 0)) return value;
    if (readFrom(state.user.data(), 1) == 0) return 0;
    state.foundInUser = false;
    if (selector.application() && !state.sameFile) return readFrom(state.application.data(), defaultValue);
    return static_cast<UINT>(defaultValue);
}

}  // namespace
}  // namespace kor

DWORD KORUTIL_CALL appGetProfileString(const char* section, const char* key, const char* defaultText,
                                       char* buffer, DWORD size, UINT_PTR selector, HINSTANCE module) {
    kor::profileState().foundInUser = false;
    if (!kor::resolveName(section, kor::NameRole::section, module) ||
        !kor::resolveName(key, kor::NameRole::key, module) ||
        !kor::resolveName(defaultText, kor::NameRole::defaultText, module) || !buffer || size == 0) {
        return 0;
    }
    return kor::readText(section, key, defaultText ? defaultText : "", buffer, size,
                         kor::readSelector(selector));
}

int KORUTIL_CALL appGetProfileInt(const char* section, const char* key, int defaultValue, UINT_PTR selector,
                                  HINSTANCE module) {
    kor::profileState().foundInUser = false;
    if (!kor::resolveName(section, kor::NameRole::section, module) ||
        !kor::resolveName(key, kor::NameRole::key, module)) {
        return 0;
    }
    return static_cast<int>(kor::readInteger(section, key, defaultValue, kor::readSelector(selector)));
}
