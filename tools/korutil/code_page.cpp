#include "tools/korutil/code_page.h"

#include <algorithm>
#include <array>

#include "platform/win32.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/json.h"
#include "tools/korutil/utf8.h"

namespace kor::code_page {
namespace {

constexpr UINT kUtf8 = 65001;

First decodeOne(std::string_view bytes, UINT page) {
    const auto first = static_cast<unsigned char>(bytes[0]);
    const First undefined{{first, true}, 1};
    if (first < 0x80) return {{first, false}, 1};
    if (page == kUtf8) {
        const utf8::Character character = utf8::at(bytes, 0);
        return character.length ? First{{character.code, false}, character.length} : undefined;
    }
    const std::size_t length = IsDBCSLeadByteEx(page, first) ? 2 : 1;
    if (bytes.size() < length) return undefined;
    std::array<WCHAR, 4> wide{};
    const int count = MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(length),
                                          wide.data(), static_cast<int>(wide.size()));
    if (count != 1) return undefined;
    const char32_t code = wide[0];
    // The system answers a byte that a page leaves open with the control character of the same number.
    if (length == 1 && code == first && code < 0xA0) return undefined;
    return {{code, false}, length};
}

std::string encodeOne(char32_t code, UINT page) {
    std::string text;
    if (code < 0x80 || page == kUtf8) {
        utf8::append(text, code);
        return text;
    }
    if (code > 0xFFFF) return {};
    const auto wide = static_cast<WCHAR>(code);
    std::array<char, 4> bytes{};
    BOOL replaced = FALSE;
    const int count = WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, &wide, 1, bytes.data(),
                                          static_cast<int>(bytes.size()), nullptr, &replaced);
    if (count <= 0 || replaced) return {};
    text.assign(bytes.data(), static_cast<std::size_t>(count));
    const First back = decodeOne(text, page);
    return back.unit.code == code && back.length == text.size() ? text : std::string();
}

}  // namespace

First firstOf(std::string_view bytes) { return decodeOne(bytes, GetACP()); }

std::vector<Unit> decode(std::string_view bytes) {
    const UINT page = GetACP();
    std::vector<Unit> units;
    units.reserve(bytes.size());
    while (!bytes.empty()) {
        const First decoded = decodeOne(bytes, page);
        units.push_back(decoded.unit);
        bytes.remove_prefix(decoded.length);
    }
    return units;
}

std::vector<Unit> unitsOf(std::string_view utf8, const std::vector<std::size_t>& escaped) {
    const UINT page = GetACP();
    std::vector<Unit> units;
    auto escape = escaped.begin();
    for (std::size_t i = 0; i < utf8.size();) {
        const utf8::Character character = utf8::at(utf8, i);
        bool isByte = false;
        if (escape != escaped.end() && *escape == i) {
            ++escape;
            const char byte = static_cast<char>(static_cast<unsigned char>(character.code));
            isByte = decodeOne(std::string_view(&byte, 1), page).unit.isByte;
        }
        units.push_back({character.code, isByte});
        i += std::max<std::size_t>(character.length, 1);
    }
    return units;
}

std::optional<std::string> encode(const std::vector<Unit>& units, char32_t& unmappable) {
    const UINT page = GetACP();
    std::string bytes;
    for (const Unit& unit : units) {
        if (unit.isByte || unit.code < 0x80) {
            bytes += static_cast<char>(static_cast<unsigned char>(unit.code));
            continue;
        }
        const std::string encoded = encodeOne(unit.code, page);
        if (encoded.empty()) {
            unmappable = unit.code;
            return std::nullopt;
        }
        bytes += encoded;
    }
    return bytes;
}

bool isFaithful(std::string_view bytes, const std::vector<Unit>& units) {
    char32_t unmappable = 0;
    return encode(units, unmappable) == bytes;
}

bool readsAs(std::string_view bytes, const std::vector<Unit>& units) {
    const std::vector<Unit> read = decode(bytes);
    const auto isSame = [](const Unit& a, const Unit& b) { return a.code == b.code; };
    return std::equal(read.begin(), read.end(), units.begin(), units.end(), isSame);
}

std::string quoted(const std::vector<Unit>& units) {
    std::string text = "\"";
    for (const Unit& unit : units) {
        if (unit.isByte) {
            json::appendByteEscape(text, static_cast<unsigned char>(unit.code));
        } else {
            std::string character;
            utf8::append(character, unit.code);
            json::appendEscaped(text, character);
        }
    }
    return text + '"';
}

std::string toUtf8(std::string_view bytes) {
    const UINT page = GetACP();
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const First decoded = decodeOne(bytes, page);
        utf8::append(text, decoded.unit.code);
        bytes.remove_prefix(decoded.length);
    }
    return text;
}

std::string fromUtf8(std::string_view utf8, std::string_view where) {
    char32_t unmappable = 0;
    auto bytes = encode(unitsOf(utf8, {}), unmappable);
    if (!bytes) {
        throw command::Failure(
            where, "code page " + std::to_string(GetACP()) + " cannot express " + nameOf(unmappable));
    }
    return *std::move(bytes);
}

std::string nameOf(char32_t code) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string name = "U+";
    for (int shift = code > 0xFFFFF ? 20 : code > 0xFFFF ? 16 : 12; shift >= 0; shift -= 4)
        name += kDigits[(code >> shift) & 15];
    name += " '";
    utf8::append(name, code);
    return name + '\'';
}

}  // namespace kor::code_page
