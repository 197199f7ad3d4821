#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include "korutil/platform/module.h"
#include "platform/posix/kernel/display_text.h"
#include "platform/posix/kernel/transfer.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

bool isDebugging() {
    static const bool value = [] {
        const char* variable = std::getenv("KORUTIL_DEBUG");
        return variable && std::strcmp(variable, "1") == 0;
    }();
    return value;
}

}  // namespace

void WINAPI OutputDebugStringA(LPCSTR text) {
    if (!text || !isDebugging()) return;
    const int error = errno;
    kor::withMemory([text] {
        const std::string shown = kor::displayText(text);
        // In one piece, so that the texts of several threads do not mix.
        kor::transferAll([](const char* data, std::size_t size) { return write(STDERR_FILENO, data, size); },
                         shown.data(), shown.size());
    });
    errno = error;
}
