#include "platform/posix/advapi/registry_string.h"

#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/utf.h"

namespace kor {
namespace {

void appendAnsi(std::string& text, char32_t character) {
    char bytes[4] = {'?'};
    const std::size_t length = ansiPage().encode(character, bytes);
    text.append(bytes, length == 0 ? 1 : length);
}

}  // namespace

const char* takeRegistryString(std::string_view& line, std::string& text) {
    constexpr std::string_view kEscaped = "\\\"nr";
    constexpr std::string_view kMeant = "\\\"\n\r";
    text.clear();
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (line[at] == '"') {
            line.remove_prefix(at + 1);
            return nullptr;
        }
        if (line[at] != '\\') {
            text += line[at];
            continue;
        }
        const std::size_t known = ++at < line.size() ? kEscaped.find(line[at]) : kEscaped.npos;
        if (known == kEscaped.npos) return "a backslash stands in front of something other than \\ \" n r";
        text += kMeant[known];
    }
    return "the closing quote is missing";
}

std::string ansiFromUtf8(std::string_view utf8) {
    std::string text;
    while (!utf8.empty()) {
        const Decoded next = decodeUtf8(utf8);
        appendAnsi(text, next.character);
        utf8.remove_prefix(next.length);
    }
    return text;
}

std::string ansiFromUtf16Bytes(std::string_view bytes) {
    std::u16string units;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        units += static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) |
                                       static_cast<unsigned char>(bytes[at + 1]) << 8);
    }
    std::string text;
    for (std::u16string_view rest = units; !rest.empty();) {
        const Decoded next = decodeUtf16(rest);
        appendAnsi(text, next.character);
        rest.remove_prefix(next.length);
    }
    return text;
}

}  // namespace kor
