#include "platform/posix/user/cut_text.h"

#include <cstring>

#include "platform/posix/kernel/known_code_page.h"

namespace kor {

std::size_t characterStart(std::string_view text, std::size_t position) {
    if (position >= text.size()) return text.size();
    constexpr UINT kSingleBytes = 1252;
    if (ansiCodePage() == kSingleBytes) return position;
    const CodePage& page = ansiPage();
    std::size_t start = 0;
    while (start < position) {
        const std::size_t next = start + page.decode(text.substr(start)).length;
        if (next > position) return start;
        start = next;
    }
    return start;
}

int copyCut(std::string_view text, char* buffer, std::size_t size) {
    if (!buffer || size == 0) return 0;
    const std::size_t length = characterStart(text, size - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return static_cast<int>(length);
}

}  // namespace kor
