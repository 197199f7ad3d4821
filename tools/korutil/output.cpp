#include "tools/korutil/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/korutil/failure.h"

namespace kor::command {
namespace {

constexpr std::size_t kPieceSize = 64 * 1024;

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }

}  // namespace

std::string systemReason(int errorNumber) { return std::strerror(errorNumber); }

void Output::write(std::string_view text) {
    pending_ += text;
    if (pending_.size() >= kPieceSize) flush();
}

void Output::flush() {
    std::string text;
    text.swap(pending_);
    if (!writeAll(STDOUT_FILENO, text)) throw Failure("standard output", systemReason(errno));
}

std::string oneLine(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string line;
    bool isSecond = false;  // of the two bytes that a control character from U+0080 to U+009F has
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isFirst =
            byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        // A backslash that would read as such a byte becomes one itself, so that the text can be told.
        const bool isEscapeLike = byte == '\\' && i + 3 < text.size() && text[i + 1] == 'x' &&
                                  isHexDigit(text[i + 2]) && isHexDigit(text[i + 3]);
        if (!isEscapeLike && byte >= 0x20 && byte != 0x7F && !isFirst && !isSecond) {
            line += text[i];
        } else {
            line += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        }
        isSecond = isFirst;
    }
    return line;
}

void reportLine(std::string_view text) { writeAll(STDERR_FILENO, "korutil: " + oneLine(text) + '\n'); }

}  // namespace kor::command
