// Writing texts and integers.
#include "services/profile_write.h"

#include <charconv>
#include <cstring>

#include "korutil/profile.h"
#include "platform/profile_limit.h"
#include "services/profile_argument.h"

namespace kor {

BOOL writeProfileText(const char* section, const char* key, const char* value, const char* file) {
    for (const char* text : {section, key, value})
        if (text && std::strlen(text) > kLongestProfileText) return FALSE;
    return WritePrivateProfileStringA(section, key, value, file);
}

}  // namespace kor

BOOL KORUTIL_CALL appWriteProfileString(const char* section, const char* key, const char* value,
                                        UINT_PTR selector, HINSTANCE module) {
    if (!kor::resolveName(section, kor::NameRole::section, module) ||
        !kor::resolveName(key, kor::NameRole::key, module)) {
        return FALSE;
    }
    return kor::writeToProfiles(
        selector, [&](const char* file) { return kor::writeProfileText(section, key, value, file); });
}

BOOL KORUTIL_CALL appWriteProfileInt(const char* section, const char* key, int value, UINT_PTR selector,
                                     HINSTANCE module) {
    char text[16];
    *std::to_chars(text, text + sizeof text - 1, value).ptr = '\0';
    return appWriteProfileString(section, key, text, selector, module);
}
