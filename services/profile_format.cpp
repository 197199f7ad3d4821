// Formatted values.
#include <array>

#include "host/bql.h"
#include "korutil/profile.h"
#include "services/profile_argument.h"
#include "services/profile_state.h"

namespace {

constexpr UINT kRoom = kor::kProfileNameRoom;

using WorkText = std::array<char, kRoom>;

}  // namespace

int KORUTIL_CALL appVScanProfileString(const char* section, const char* key, UINT_PTR selector,
                                       const char* format, void* arguments, HINSTANCE module) {
    WorkText text{};
    WorkText loaded;
    if (!format || !kor::resolveInto(format, module, loaded)) return 0;
    appGetProfileString(section, key, "", text.data(), kRoom, selector, module);
    return kor::Bql_vszscanf(text.data(), kRoom, format, arguments);
}

int appScanProfileString(const char* section, const char* key, UINT_PTR selector, const char* format, ...) {
    va_list list;
    va_start(list, format);
    const int count = appVScanProfileString(section, key, selector, format, KORUTIL_ARGUMENTS(list), nullptr);
    va_end(list);
    return count;
}

int KORUTIL_CALL appVPrintProfileString(const char* section, const char* key, UINT_PTR selector,
                                        const char* format, void* arguments, HINSTANCE module) {
    WorkText text{};
    WorkText loaded;
    if (!format) return -1;
    if (!kor::resolveInto(format, module, loaded)) return 0;
    const int length = kor::Bql_vszprintf(text.data(), kRoom, format, arguments);
    if (length != -1) appWriteProfileString(section, key, text.data(), selector, module);
    return length;
}

int appPrintProfileString(const char* section, const char* key, UINT_PTR selector, const char* format, ...) {
    va_list list;
    va_start(list, format);
    const int length =
        appVPrintProfileString(section, key, selector, format, KORUTIL_ARGUMENTS(list), nullptr);
    va_end(list);
    return length;
}
