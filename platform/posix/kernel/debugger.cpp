#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include "korutil/platform/module.h"
#include "platform/posix/kernel/display_text.h"

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
    const std::string shown = kor::displayText(text);
    // In one piece, so that the texts of several threads do not mix.
    for (std::size_t done = 0; done < shown.size();) {
        const ssize_t part = write(STDERR_FILENO, shown.data() + done, shown.size() - done);
        if (part < 0 && errno != EINTR) break;
        if (part > 0) done += static_cast<std::size_t>(part);
    }
    errno = error;
}
