// Fonts: without a screen a font is what it was asked to be.

#include <algorithm>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "korutil/platform/drawing_object.h"
#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/with_memory.h"
#include "platform/posix/user/font.h"

namespace kor {
namespace {

constexpr std::size_t kMostFonts = 10'000;

struct Fonts {
    std::mutex lock;
    std::unordered_map<HGDIOBJ, std::unique_ptr<LOGFONTA>> all;
};

Fonts& fonts() {
    static Fonts& made = *new Fonts;
    return made;
}

}  // namespace

bool deleteFont(HGDIOBJ object) {
    const std::lock_guard lock(fonts().lock);
    return fonts().all.erase(object) != 0;
}

}  // namespace kor

HFONT WINAPI CreateFontIndirectA(const LOGFONTA* font) {
    return kor::withMemory(nullptr, [&]() -> HFONT {
        if (!font) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        const std::lock_guard lock(kor::fonts().lock);
        if (kor::fonts().all.size() == kor::kMostFonts) return nullptr;
        auto made = std::make_unique<LOGFONTA>(*font);
        LOGFONTA* const handle = made.get();
        handle->lfFaceName[LF_FACESIZE - 1] = '\0';
        kor::fonts().all.emplace(handle, std::move(made));
        return reinterpret_cast<HFONT>(handle);
    });
}

int WINAPI GetObjectA(HGDIOBJ object, int size, void* buffer) {
    const std::lock_guard lock(kor::fonts().lock);
    const auto found = kor::fonts().all.find(object);
    constexpr int kWhole = sizeof(LOGFONTA);
    if (found == kor::fonts().all.end() || size < 0) return 0;
    if (!buffer) return kWhole;
    const int count = std::min(size, kWhole);
    std::copy_n(reinterpret_cast<const BYTE*>(found->second.get()), count, static_cast<BYTE*>(buffer));
    return count;
}
