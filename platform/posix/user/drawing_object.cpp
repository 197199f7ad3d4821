#include "korutil/platform/drawing_object.h"

#include <array>
#include <map>
#include <mutex>
#include <utility>

#include "korutil/platform/last_error.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/with_memory.h"
#include "platform/posix/user/font.h"

namespace {

constexpr int kStockCount = DC_PEN + 1;
constexpr int kNoSuchObject = 9;

// Handles are the addresses of what they stand for; nobody looks inside.
std::array<char, kStockCount> stock;

bool isStock(HGDIOBJ object) {
    for (const char& item : stock) {
        if (object == &item) return true;
    }
    return false;
}

struct Cursor {
    HINSTANCE module;
    UINT_PTR name;
};

using CursorKey = std::pair<HINSTANCE, UINT_PTR>;

struct Cursors {
    std::mutex lock;
    std::map<CursorKey, Cursor> all;  // its nodes stay where they are
};

HCURSOR sharedCursor(HINSTANCE module, UINT_PTR name) {
    static Cursors& cursors = *new Cursors;
    const std::lock_guard lock(cursors.lock);
    return reinterpret_cast<HCURSOR>(
        &cursors.all.try_emplace({module, name}, Cursor{module, name}).first->second);
}

bool isSystemCursor(UINT_PTR number) {
    for (const LPCSTR known : {IDC_ARROW, IDC_IBEAM, IDC_WAIT, IDC_CROSS, IDC_UPARROW, IDC_SIZENWSE,
                               IDC_SIZENESW, IDC_SIZEWE, IDC_SIZENS, IDC_SIZEALL, IDC_NO, IDC_APPSTARTING}) {
        if (number == reinterpret_cast<UINT_PTR>(known)) return true;
    }
    return false;
}

}  // namespace

HCURSOR WINAPI LoadCursorA(HINSTANCE module, LPCSTR name) {
    return kor::withMemory(nullptr, [&]() -> HCURSOR {
        if (!module) {
            const auto number = reinterpret_cast<UINT_PTR>(name);
            if (isSystemCursor(number)) return sharedCursor(nullptr, number);
            SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
            return nullptr;
        }
        const HRSRC group = FindResourceA(module, name, RT_GROUP_CURSOR);
        const auto* header = static_cast<const BYTE*>(LockResource(LoadResource(module, group)));
        // The group must name at least one image, and that image must be there.
        constexpr DWORD kImageNumber = 6 + 12;
        if (!header) return nullptr;
        if (SizeofResource(module, group) < kImageNumber + 2) {
            SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
            return nullptr;
        }
        const WORD image = static_cast<WORD>(header[kImageNumber] | header[kImageNumber + 1] << 8);
        const HRSRC picture = FindResourceA(module, MAKEINTRESOURCEA(image), RT_CURSOR);
        if (!LoadResource(module, picture)) return nullptr;
        return sharedCursor(module, reinterpret_cast<UINT_PTR>(group));
    });
}

HGDIOBJ WINAPI GetStockObject(int index) {
    if (index < 0 || index >= kStockCount || index == kNoSuchObject) return nullptr;
    return &stock[static_cast<std::size_t>(index)];
}

BOOL WINAPI DeleteObject(HGDIOBJ object) { return isStock(object) || kor::deleteFont(object); }
