#include "korutil/profile_value.h"

#include <array>
#include <charconv>
#include <cstring>

#include "framework/bounded_text.h"
#include "platform/profile_limit.h"
#include "platform/win32.h"
#include "runtime/integer_text.h"
#include "runtime/number_text.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"

namespace kor {
namespace {

constexpr std::size_t kNameRoom = 76;             // of a name without its index,
constexpr std::size_t kKeyRoom = kNameRoom + 11;  // and with it
constexpr std::size_t kNumberRoom = 40;           // of a number's text

// A name with its index. @return false when there is no name or it does not fit
bool resolveName(const char* name, int index, HINSTANCE module, std::span<char> out) {
    std::array<char, kNameRoom> loaded;
    const char* const text = resolveText(name, module ? module : processState().library, loaded);
    if (!text) return false;
    std::array<char, kNameRoom> cut;
    BoundedText(cut.data(), kNameRoom).append(text);
    std::array<char, 12> number{};
    if (index > 0) std::to_chars(number.data(), number.data() + number.size() - 1, index);
    const std::size_t length = std::strlen(cut.data());
    const std::size_t digits = std::strlen(number.data());
    if (length + digits >= out.size()) return false;
    std::memcpy(out.data(), cut.data(), length);
    std::memcpy(out.data() + length, number.data(), digits + 1);
    return true;
}

class Key {
  public:
    Key(const ProfileTag* record, const char* key, int index)
        : isThere_(record && record->section[0] && resolveName(key, index, record->module, text_)) {}

    explicit operator bool() const { return isThere_; }
    const char* text() const { return text_.data(); }

  private:
    std::array<char, kKeyRoom> text_;
    bool isThere_;
};

DWORD readText(const ProfileTag* record, const char* key, int index, char* buffer, DWORD size) {
    if (buffer && size > 0) *buffer = '\0';
    const Key name(record, key, index);
    if (!name || !buffer || size == 0) return 0;
    return GetPrivateProfileStringA(record->section, name.text(), "", buffer, size, record->profile);
}

BOOL writeText(const ProfileTag* record, const char* key, int index, const char* text) {
    const Key name(record, key, index);
    if (text && std::strlen(text) > kLongestProfileText) return FALSE;
    return name && WritePrivateProfileStringA(record->section, name.text(), text, record->profile);
}

}  // namespace
}  // namespace kor

BOOL KORUTIL_CALL pt_InitTag(ProfileTag* record, const char* profile, const char* section, int index,
                             HINSTANCE module) {
    if (!record) return FALSE;
    kor::BoundedText(record->profile, sizeof record->profile).append(profile ? profile : "");
    record->section[0] = '\0';
    record->module = module;
    return kor::resolveName(section, index, module, record->section);
}

BOOL KORUTIL_CALL pt_ReadLONG(const ProfileTag* record, const char* key, int index, LONG* value) {
    char text[kor::kNumberRoom];
    if (!value || kor::readText(record, key, index, text, sizeof text) == 0) return FALSE;
    *value = kor::integerValue(text);
    return TRUE;
}

BOOL KORUTIL_CALL pt_ReadDOUBLE(const ProfileTag* record, const char* key, int index, double* value) {
    char text[kor::kNumberRoom];
    if (!value || kor::readText(record, key, index, text, sizeof text) == 0) return FALSE;
    *value = kor::numberValue(text, nullptr);
    return TRUE;
}

DWORD KORUTIL_CALL pt_ReadStr(const ProfileTag* record, const char* key, int index, char* buffer,
                              DWORD size) {
    return kor::readText(record, key, index, buffer, size);
}

BOOL KORUTIL_CALL pt_WriteLONG(const ProfileTag* record, const char* key, int index, LONG value) {
    std::array<char, 12> text{};
    std::to_chars(text.data(), text.data() + text.size() - 1, value);
    return kor::writeText(record, key, index, text.data());
}

BOOL KORUTIL_CALL pt_WriteDOUBLE(const ProfileTag* record, const char* key, int index, double value) {
    char text[kor::kNumberTextRoom];
    kor::numberText(value, kor::kSingleSettingDigits, text);
    return kor::writeText(record, key, index, text);
}

BOOL KORUTIL_CALL pt_WriteStr(const ProfileTag* record, const char* key, int index, const char* text) {
    return kor::writeText(record, key, index, text);
}
