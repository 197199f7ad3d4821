#include "tools/korutil/profile_content.h"

#include <algorithm>

#include "platform/posix/kernel/profile_line.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/utf8.h"

namespace kor::profile {
namespace {

constexpr std::size_t kMostShown = 60;
constexpr char32_t kReplacement = 0xFFFD;

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return isAscii(c); });
}

std::string byteName(unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return {'0', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
}

}  // namespace

Content::Content(std::string bytes) : text_(std::move(bytes)) {
    if (text_.starts_with("\xEF\xBB\xBF")) {
        text_.erase(0, 3);
        isUnicode_ = true;
    } else if (text_.starts_with("\xFF\xFE") || text_.starts_with("\xFE\xFF")) {
        takeUtf16(text_[0] == '\xFE');
    }
}

void Content::takeUtf16(bool bigEndian) {
    const std::string bytes = std::move(text_);
    text_.clear();
    isUnicode_ = true;
    const auto unitAt = [&](std::size_t at) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        return static_cast<char32_t>(bigEndian ? first << 8 | second : second << 8 | first);
    };
    for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
        char32_t code = unitAt(at);
        if (code >= 0xD800 && code < 0xE000) {
            const char32_t low = at + 3 < bytes.size() ? unitAt(at + 2) : 0;
            const bool isPair = code < 0xDC00 && low >= 0xDC00 && low < 0xE000;
            code = isPair ? 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00) : kReplacement;
            if (isPair) at += 2;
        }
        utf8::append(text_, code);
    }
}

bool Content::looksLikeUtf8() const {
    return !isUnicode_ && GetACP() != 65001 && !isAscii(text_) && utf8::isValid(text_);
}

std::optional<std::string> Content::inPage(std::string_view part) const {
    if (!isUnicode_ || isAscii(part)) return std::string(part);
    if (!utf8::isValid(part)) return std::nullopt;
    char32_t unmappable = 0;
    return code_page::encode(code_page::unitsOf(part, {}), unmappable);
}

std::string Content::faultIn(std::string_view part) const {
    const std::string page = "code page " + std::to_string(GetACP());
    while (!part.empty()) {
        if (isAscii(part[0])) {
            part.remove_prefix(1);
        } else if (isUnicode_) {
            const utf8::Character character = utf8::at(part, 0);
            if (character.length == 0) return byteName(static_cast<unsigned char>(part[0])) + " is not UTF-8";
            char32_t unmappable = 0;
            if (!code_page::encode({{character.code, false}}, unmappable))
                return page + " cannot express " + code_page::nameOf(character.code);
            part.remove_prefix(character.length);
        } else {
            const code_page::First first = code_page::firstOf(part);
            if (first.unit.isByte)
                return byteName(static_cast<unsigned char>(part[0])) + " is no character of " + page;
            part.remove_prefix(first.length);
        }
    }
    return {};
}

std::string Content::faultInSettings() const {
    for (std::size_t at = 0; isUnicode_ && at < text_.size();) {
        const ProfileLineSpan span = profileLineAt(text_, at);
        const ProfileLine line =
            readProfileLine(std::string_view(text_).substr(span.begin, span.end - span.begin));
        at = span.next;
        if (line.kind != ProfileLineKind::section && line.kind != ProfileLineKind::key) continue;
        std::string fault = faultIn(line.name);
        if (fault.empty()) fault = faultIn(line.value);
        if (!fault.empty()) return fault;
    }
    return {};
}

std::string Content::shown(std::string_view part) const {
    const std::string_view start = part.substr(0, kMostShown);
    std::string text;
    if (isUnicode_) {
        for (std::size_t at = 0; at < start.size();) {
            const utf8::Character character = utf8::at(start, at);
            utf8::append(text, character.length ? character.code : kReplacement);
            at += std::max<std::size_t>(character.length, 1);
        }
    } else {
        text = code_page::toUtf8(start);
    }
    return start.size() < part.size() ? text + " ..." : text;
}

}  // namespace kor::profile
