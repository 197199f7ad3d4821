#include "platform/posix/kernel/text_result.h"

#include <cstring>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/known_code_page.h"

namespace kor {

DWORD textResult(std::string_view text, char* buffer, DWORD size) {
    if (!buffer || text.size() >= size) return static_cast<DWORD>(text.size() + 1);
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return static_cast<DWORD>(text.size());
}

DWORD utf8Result(std::string_view utf8, char* buffer, DWORD size) {
    const auto text = textFromUtf8(utf8);
    if (!text) {
        SetLastError(ERROR_NO_UNICODE_TRANSLATION);
        return 0;
    }
    return textResult(*text, buffer, size);
}

}  // namespace kor
