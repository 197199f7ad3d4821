#include "platform/posix/kernel/display_text.h"

#include "platform/posix/kernel/text.h"

namespace kor {

std::string displayText(const char* text) {
    const int units = text ? MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0) : 0;
    if (units <= 1) return {};
    std::u16string wide(static_cast<std::size_t>(units), u'\0');
    MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), units);
    wide.pop_back();
    std::u16string shown;
    for (const char16_t unit : wide) {
        if (unit == u'\r') continue;
        const bool control = (unit < 0x20 && unit != u'\n' && unit != u'\t') || (unit >= 0x7F && unit < 0xA0);
        shown += control ? u'?' : unit;
    }
    const int count = static_cast<int>(shown.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, shown.data(), count, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size > 0 ? size : 0), '\0');
    WideCharToMultiByte(CP_UTF8, 0, shown.data(), count, result.data(), size, nullptr, nullptr);
    return result;
}

}  // namespace kor
