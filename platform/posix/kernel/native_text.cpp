#include "platform/posix/kernel/native_text.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/posix/kernel/descriptor.h"

namespace kor {

std::string nativeText(const char* path) {
    std::string text;
    const Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) return text;
    char piece[16384];
    for (;;) {
        const ssize_t got = read(file.get(), piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return text;
        text.append(piece, static_cast<std::size_t>(got));
    }
}

}  // namespace kor
