#include "runtime/regional_settings.h"

#include "platform/win32.h"

namespace kor {
namespace {

char decimalOfProfile() {
    char text[2] = {};
    GetProfileStringA("intl", "sDecimal", ".", text, sizeof text);
    const bool partOfCharacter = IsDBCSLeadByte(static_cast<BYTE>(text[0])) ||
                                 (GetACP() == CP_UTF8 && static_cast<unsigned char>(text[0]) >= 0x80);
    return text[0] == '\0' || partOfCharacter ? '.' : text[0];
}

}  // namespace

const RegionalSettings& regionalSettings() {
    static const RegionalSettings settings{decimalOfProfile()};
    return settings;
}

}  // namespace kor
