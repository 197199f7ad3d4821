// Doubles and rows of doubles.
#include <array>
#include <cstring>
#include <new>
#include <string>

#include "korutil/profile.h"
#include "runtime/number_text.h"

namespace kor {
namespace {

constexpr DWORD kDoubleRoom = 128;
constexpr DWORD kRowRoom = 520;

}  // namespace
}  // namespace kor

double KORUTIL_CALL appGetProfileDouble(const char* section, const char* key, double defaultValue,
                                        UINT_PTR selector, HINSTANCE module) {
    char text[kor::kDoubleRoom];
    const DWORD length = appGetProfileString(section, key, "", text, sizeof text, selector, module);
    return length > 0 && kor::looksLikeNumber(text) ? kor::numberValue(text, nullptr) : defaultValue;
}

int KORUTIL_CALL appGetProfileDblArray(const char* section, const char* key, const double* defaults,
                                       double* values, int count, UINT_PTR selector, HINSTANCE module) {
    if (!values) return 0;
    if (defaults && defaults != values && count > 0) {
        std::memmove(values, defaults, static_cast<std::size_t>(count) * sizeof(double));
    }
    char text[kor::kRowRoom];
    if (appGetProfileString(section, key, "", text, sizeof text, selector, module) == 0) text[0] = '\0';
    int found = 0;
    for (const char* at = text; kor::looksLikeNumber(at); ++at) {
        const double value = kor::numberValue(at, &at);
        if (found < count) values[found] = value;
        ++found;
        if (*at != ',') break;
    }
    return found < count ? found : count;
}

BOOL KORUTIL_CALL appWriteProfileDouble(const char* section, const char* key, double value, UINT_PTR selector,
                                        HINSTANCE module) {
    std::array<char, kor::kNumberTextRoom> text;
    kor::numberText(value, kor::kSettingDigits, text);
    return appWriteProfileString(section, key, text.data(), selector, module);
}

BOOL KORUTIL_CALL appWriteProfileDblArray(const char* section, const char* key, const double* values,
                                          int count, UINT_PTR selector, HINSTANCE module) try {
    std::string row;
    for (int index = 0; values && index < count; ++index) {
        std::array<char, kor::kNumberTextRoom> text;
        const std::size_t length = kor::numberText(values[index], kor::kSettingDigits, text);
        if (index > 0) row += ',';
        row.append(text.data(), length);
    }
    return appWriteProfileString(section, key, row.c_str(), selector, module);
} catch (const std::bad_alloc&) {
    return FALSE;
}
