#include "platform/posix/advapi/registry_lines.h"

#include <optional>

#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/utf.h"

namespace kor {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kAnsiHeader = "REGEDIT4";
constexpr char kInvalid = '\xFF';  // stands for a lone surrogate: no UTF-8 has it

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        if (static_cast<signed char>(text[0]) >= 0) {
            text.remove_prefix(1);
            continue;
        }
        const Decoded next = decodeUtf8(text);
        if (!next.valid) return false;
        text.remove_prefix(next.length);
    }
    return true;
}

}  // namespace

std::string_view RegistryLines::withoutMark(std::string_view piece) {
    started_ = true;
    if (piece.starts_with(kUtf16Mark)) {
        encoding_ = Encoding::utf16;
        return piece.substr(kUtf16Mark.size());
    }
    if (piece.starts_with(kUtf8Mark)) {
        encoding_ = Encoding::utf8;
        return piece.substr(kUtf8Mark.size());
    }
    return piece;
}

std::string RegistryLines::fromUtf16(std::string_view piece) {
    for (const char byte : piece) {
        half_ += byte;
        if (half_.size() < 2) continue;
        units_ += static_cast<char16_t>(static_cast<unsigned char>(half_[0]) |
                                        static_cast<unsigned char>(half_[1]) << 8);
        half_.clear();
    }
    std::string text;
    std::u16string_view rest = units_;
    while (!rest.empty()) {
        const bool mayHaveSecond = rest.size() == 1 && rest[0] >= 0xD800 && rest[0] <= 0xDBFF;
        if (mayHaveSecond) break;
        const Decoded next = decodeUtf16(rest);
        char bytes[4] = {kInvalid};
        text.append(bytes, next.valid ? encodeUtf8(next.character, bytes) : 1);
        rest.remove_prefix(next.length);
    }
    units_ = std::u16string(rest);
    return text;
}

bool RegistryLines::endLine() {
    if (line_.ends_with('\r')) line_.pop_back();
    if (encoding_ == Encoding::unknown) {
        encoding_ = line_.starts_with(kAnsiHeader) ? Encoding::ansi : Encoding::utf8;
    }
    RegistryLine line{number_++, {}, nullptr, line_.starts_with('[')};
    std::optional<std::string> converted;
    if (tooLong_) {
        line.fault = "the line is too long";
    } else if (encoding_ == Encoding::ansi) {
        converted = utf8FromText(line_);
        if (!converted) line.fault = "the line is no text of the code page";
    } else if (!isUtf8(line_)) {
        line.fault = "the line is no valid text";
    }
    if (!line.fault) line.text = converted ? *converted : line_;
    const bool more = take_(line);
    line_.clear();
    tooLong_ = false;
    return more;
}

bool RegistryLines::splitLines(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view part = text.substr(0, end);
        tooLong_ = tooLong_ || line_.size() + part.size() > kLongestRegistryLine;
        if (!tooLong_) line_ += part;
        if (end == text.npos) return true;
        if (!endLine()) return false;
        text.remove_prefix(end + 1);
    }
    return true;
}

bool RegistryLines::feed(std::string_view piece) {
    if (!started_) piece = withoutMark(piece);
    return encoding_ == Encoding::utf16 ? splitLines(fromUtf16(piece)) : splitLines(piece);
}

void RegistryLines::finish() {
    if (!half_.empty() || !units_.empty()) line_ += kInvalid;
    if (!line_.empty() || tooLong_) endLine();
}

}  // namespace kor
