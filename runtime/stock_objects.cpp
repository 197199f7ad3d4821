#include "runtime/stock_objects.h"

#include <array>

#include "korutil/lifecycle.h"

namespace kor {
namespace {

constexpr int kContextBrush = 18;  // DC_BRUSH, which the system's headers hide from older targets

constexpr std::array<int, kStockObjectCount> kSystemObjects = {
    DEFAULT_GUI_FONT,    ANSI_VAR_FONT, ANSI_FIXED_FONT, SYSTEM_FONT, SYSTEM_FIXED_FONT, OEM_FIXED_FONT,
    DEVICE_DEFAULT_FONT, WHITE_BRUSH,   LTGRAY_BRUSH,    GRAY_BRUSH,  DKGRAY_BRUSH,      BLACK_BRUSH,
    NULL_BRUSH,          WHITE_PEN,     BLACK_PEN,       NULL_PEN,    DEFAULT_PALETTE,   kContextBrush,
};

std::array<HGDIOBJ, kStockObjectCount>& objects() {
    static std::array<HGDIOBJ, kStockObjectCount> table{};
    return table;
}

}  // namespace

HGDIOBJ stockObject(WORD index) {
    if (index >= kStockObjectCount) return nullptr;
    HGDIOBJ& object = objects()[index];
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
