// Paths as the system has them: full, and spelled as on the disk.
#include <new>
#include <string>
#include <string_view>

#include "files/text_buffer.h"
#include "korutil/file_system.h"
#include "korutil/path.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

// Takes the text of a system function that tells the size it needs.
// @param ask  called with a buffer and its size
template <typename Ask>
int takeText(char* buffer, DWORD size, Ask ask) {
    try {
        std::string text;
        DWORD length = kPathRoom - 1;
        // A longer text is asked for a second time, with the room that it needs.
        for (int tries = 0; tries < 2 && length >= text.size(); ++tries) {
            text.resize(std::size_t{length} + 1);
            length = ask(text.data(), static_cast<DWORD>(text.size()));
        }
        if (length == 0) return 0;
        const bool told = length < text.size();
        if (told && copyWhole(std::string_view(text).substr(0, length), buffer, size)) return 1;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return 0;
}

// The systems have no one code for an empty name.
bool isThere(const char* path) {
    if (path && *path) return true;
    SetLastError(ERROR_INVALID_NAME);
    return false;
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysFullPath(char* buffer, const char* path, DWORD size) {
    if (!kor::isThere(path)) return 0;
    return kor::takeText(
        buffer, size, [path](char* text, DWORD room) { return GetFullPathNameA(path, room, text, nullptr); });
}

int KORUTIL_CALL sysCvtToLongFileName(char* path, DWORD size) {
    if (!kor::isThere(path)) return 0;
    const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
    return kor::takeText(path, size,
                         [path](char* text, DWORD room) { return GetLongPathNameA(path, text, room); });
}
