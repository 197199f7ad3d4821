#include "platform/posix/user/terminal.h"

#include <unistd.h>

#include <cerrno>

#include "platform/posix/kernel/transfer.h"

namespace kor {

bool canAsk() { return isatty(STDIN_FILENO) && isatty(STDERR_FILENO); }

std::mutex& terminalLock() {
    static constinit std::mutex lock;
    return lock;
}

void print(std::string_view text) {
    transferAll([](const char* data, std::size_t size) { return write(STDERR_FILENO, data, size); },
                text.data(), text.size());
}

bool readLine(std::string& line, std::size_t most) {
    line.clear();
    for (char c = 0;;) {
        const ssize_t count = read(STDIN_FILENO, &c, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return !line.empty();
        if (c == '\n') return true;
        if (line.size() < most) line += c;
    }
}

}  // namespace kor
