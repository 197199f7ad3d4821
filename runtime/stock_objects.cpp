#include "runtime/stock_objects.h"

#include <array>
#include <cstring>

#include "framework/bounded_text.h"
#include "korutil/lifecycle.h"
#include "korutil/profile.h"
#include "runtime/integer_text.h"

namespace kor {
namespace {

constexpr WORD kDefaultFont = 0;
constexpr LONG kSmallestFont = 4;
constexpr LONG kLargestFont = 200;
constexpr BYTE kAnyCharacters = 1;  // DEFAULT_CHARSET
constexpr int kContextBrush = 18;   // DC_BRUSH, which the system's headers hide from older targets

constexpr std::array<int, kStockObjectCount> kSystemObjects = {
    DEFAULT_GUI_FONT,    ANSI_VAR_FONT, ANSI_FIXED_FONT, SYSTEM_FONT, SYSTEM_FIXED_FONT, OEM_FIXED_FONT,
    DEVICE_DEFAULT_FONT, WHITE_BRUSH,   LTGRAY_BRUSH,    GRAY_BRUSH,  DKGRAY_BRUSH,      BLACK_BRUSH,
    NULL_BRUSH,          WHITE_PEN,     BLACK_PEN,       NULL_PEN,    DEFAULT_PALETTE,   kContextBrush,
};

std::array<HGDIOBJ, kStockObjectCount>& objects() {
    static std::array<HGDIOBJ, kStockObjectCount> table{};
    return table;
}

// The setting's font: a face name, a comma and the height of its characters in pixels. Null without one.
HGDIOBJ defaultFont() {
    char setting[64];
    if (appGetProfileString("KorUtil", "DftFont", "", setting, sizeof setting, kProfileDefault, nullptr) == 0)
        return nullptr;
    const char* const comma = std::strrchr(setting, ',');
    const LONG height = comma ? integerValue(comma + 1) : 0;
    if (height < kSmallestFont || height > kLargestFont) return nullptr;
    LOGFONTA font{};
    font.lfHeight = -height;
    font.lfCharSet = kAnyCharacters;
    BoundedText(font.lfFaceName, LF_FACESIZE).append({setting, static_cast<std::size_t>(comma - setting)});
    return CreateFontIndirectA(&font);
}

}  // namespace

HGDIOBJ stockObject(WORD index) {
    if (index >= kStockObjectCount) return nullptr;
    HGDIOBJ& object = objects()[index];
    if (!object && index == kDefaultFont) object = defaultFont();
    if (!object) object = GetStockObject(kSystemObjects[index]);
    return object;
}

bool releaseStockObjects() {
    bool all = true;
    for (HGDIOBJ& object : objects()) {
        if (object && !DeleteObject(object)) all = false;
        object = nullptr;
    }
    return all;
}

}  // namespace kor

HGDIOBJ KORUTIL_CALL utlGetStockObject(WORD index) { return kor::stockObject(index); }
