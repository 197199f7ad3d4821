#include "platform/posix/kernel/known_code_page.h"

#include <algorithm>
#include <cstdlib>

#include "platform/posix/kernel/double_byte_page.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/utf.h"
#include "platform/posix/kernel/with_memory.h"

namespace kor {
namespace {

constexpr UINT kWestern = 1252;
constexpr UINT kJapanese = 932;
constexpr UINT kChinese = 936;

// The bytes 0x80 to 0x9F; the five that the page does not define are the C1 controls of the same number.
constexpr char16_t kWesternHigh[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                       0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                       0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                       0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

class WesternPage final : public CodePage {
  public:
    Character decode(std::string_view text) const override {
        const auto byte = static_cast<unsigned char>(text[0]);
        return {byte >= 0x80 && byte < 0xA0 ? kWesternHigh[byte - 0x80] : char32_t{byte}, 1, true};
    }

    std::size_t encode(char32_t character, char* bytes) const override {
        if (character < 0x80 || (character >= 0xA0 && character < 0x100)) {
            bytes[0] = static_cast<char>(character);
            return 1;
        }
        const auto* found = std::find(std::begin(kWesternHigh), std::end(kWesternHigh), character);
        if (found == std::end(kWesternHigh)) return 0;
        bytes[0] = static_cast<char>(0x80 + (found - std::begin(kWesternHigh)));
        return 1;
    }

    bool isLeadByte(unsigned char) const override { return false; }
};

class Utf8Page final : public CodePage {
  public:
    Character decode(std::string_view text) const override {
        const Decoded next = decodeUtf8(text);
        return {next.character, next.length, next.valid};
    }
    std::size_t encode(char32_t character, char* bytes) const override {
        return character >= 0xD800 && character <= 0xDFFF ? 0 : encodeUtf8(character, bytes);
    }
    bool isLeadByte(unsigned char) const override { return false; }
};

// Stands in for an ANSI code page whose converter is missing: nothing but ASCII is known of it.
class AsciiPage final : public CodePage {
  public:
    Character decode(std::string_view text) const override {
        const auto byte = static_cast<unsigned char>(text[0]);
        return {byte < 0x80 ? char32_t{byte} : U'?', 1, byte < 0x80};
    }
    std::size_t encode(char32_t character, char* bytes) const override {
        bytes[0] = static_cast<char>(character);
        return character < 0x80 ? 1 : 0;
    }
    bool isLeadByte(unsigned char) const override { return false; }
};

const WesternPage kWesternPage;
const Utf8Page kUtf8Page;
const AsciiPage kAsciiPage;

const CodePage* ansiOrAscii() {
    const CodePage* page = codePage(CP_ACP);
    return page ? page : &kAsciiPage;
}

}  // namespace

UINT ansiCodePage() {
    static const UINT number = [] {
        const char* given = std::getenv("KORUTIL_CODEPAGE");
        const std::string_view text = given ? given : "";
        for (const auto& [name, page] :
             {std::pair{"932", kJapanese}, {"936", kChinese}, {"65001", CP_UTF8}}) {
            if (text == name) return page;
        }
        return kWestern;
    }();
    return number;
}

const CodePage* codePage(UINT number) {
    if (number == CP_ACP || number == CP_OEMCP || number == CP_THREAD_ACP) number = ansiCodePage();
    switch (number) {
        case kWestern:
            return &kWesternPage;
        case CP_UTF8:
            return &kUtf8Page;
        case kJapanese: {
            static const std::unique_ptr<CodePage> page = japanesePage();
            return page.get();
        }
        case kChinese: {
            static const std::unique_ptr<CodePage> page = chinesePage();
            return page.get();
        }
        default:
            return nullptr;
    }
}

const CodePage& ansiPage() { return *withMemory(&kAsciiPage, ansiOrAscii); }

std::optional<std::string> utf8FromText(std::string_view text) {
    const CodePage& page = *ansiOrAscii();
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const CodePage::Character next = page.decode(text);
        if (!next.valid) return std::nullopt;
        char bytes[4];
        result.append(bytes, encodeUtf8(next.character, bytes));
        text.remove_prefix(next.length);
    }
    return result;
}

std::optional<std::string> textFromUtf8(std::string_view utf8) {
    const CodePage& page = *ansiOrAscii();
    std::string result;
    result.reserve(utf8.size());
    while (!utf8.empty()) {
        const Decoded next = decodeUtf8(utf8);
        char bytes[4];
        const std::size_t length = next.valid ? page.encode(next.character, bytes) : 0;
        if (length == 0) return std::nullopt;
        result.append(bytes, length);
        utf8.remove_prefix(next.length);
    }
    return result;
}

}  // namespace kor
