#include "tools/korutil/tree_value.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <vector>

#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/json.h"

namespace kor::tree {
namespace {

struct Name {
    Type type;
    std::string_view name;
};

constexpr std::array kNames = {
    Name{Type::kLong, "long"},       Name{Type::kDouble, "double"},   Name{Type::kPoint, "point"},
    Name{Type::kString, "string"},   Name{Type::kDoubles, "doubles"}, Name{Type::kMemory, "memory"},
    Name{Type::kSection, "section"}, Name{Type::kOther, "other"},
};

constexpr std::uint64_t kUsualNan = 0x7FF8000000000000;

std::array<DWORD, 2> wordsOf(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

template <class Number>
bool parseWhole(std::string_view text, Number& value) {
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && rest == text.data() + text.size();
}

// from_chars also knows "inf" and "nan(...)": a number begins with a digit, a sign or a point.
bool parseDouble(std::string_view text, double& value) {
    if (specialNamed(text, value)) return true;
    return text.find_first_not_of("+-.0123456789eE") == std::string_view::npos && parseWhole(text, value);
}

std::vector<std::string_view> splitAtCommas(std::string_view text) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        parts.push_back(text.substr(0, comma));
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
        if (text.empty()) parts.emplace_back();
    }
    return parts;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

}  // namespace

Type typeOf(DWORD typeWord) {
    switch (typeWord) {
        case kLongWord:
            return Type::kLong;
        case kDoubleWord:
            return Type::kDouble;
        case kPointWord:
            return Type::kPoint;
        case kStringWord:
            return Type::kString;
        case kDoublesWord:
            return Type::kDoubles;
        default:
            break;
    }
    const DWORD kind = typeWord & ~kVersionMask;
    return kind == kSectionBit ? Type::kSection : kind == kMemoryBit ? Type::kMemory : Type::kOther;
}

std::string_view nameOf(Type type) {
    for (const Name& entry : kNames) {
        if (entry.type == type) return entry.name;
    }
    return "";
}

bool typeNamed(std::string_view name, Type& type) {
    for (const Name& entry : kNames) {
        if (entry.name != name) continue;
        type = entry.type;
        return true;
    }
    return false;
}

Content longContent(LONG value) { return {kLongWord, {static_cast<DWORD>(value), 0}, {}}; }

Content doubleContent(double value) { return {kDoubleWord, wordsOf(value), {}}; }

Content pointContent(POINT value) {
    return {kPointWord, {static_cast<DWORD>(value.x), static_cast<DWORD>(value.y)}, {}};
}

Content memoryContent(DWORD version, std::string bytes) {
    return {version | kMemoryBit, {}, std::move(bytes)};
}

Content stringContent(std::string_view text) {
    std::string data(text);
    if (!data.empty()) data += '\0';
    return {kStringWord, {}, std::move(data)};
}

void appendElement(Content& doubles, double value) {
    doubles.typeWord = kDoublesWord;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    for (int shift = 0; shift < 64; shift += 8)
        doubles.data += static_cast<char>((bits >> shift) & 0xFF);
}

double doubleOf(const std::array<DWORD, 2>& words) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(words[1]) << 32 | words[0]);
}

double elementOf(std::string_view data, std::size_t index) {
    std::uint64_t bits = 0;
    for (std::size_t i = 8; i-- > 0;)
        bits = bits << 8 | static_cast<unsigned char>(data[8 * index + i]);
    return std::bit_cast<double>(bits);
}

bool isRegular(Type type, std::string_view data) {
    if (type == Type::kDoubles) return data.size() % 8 == 0;
    if (type != Type::kString || data.empty()) return true;
    return data.size() > 1 && data.find('\0') == data.size() - 1;
}

bool isRegular(Type type, const std::array<DWORD, 2>& words) { return type != Type::kLong || words[1] == 0; }

bool isSpecial(double value) { return !std::isfinite(value); }

std::string doubleText(double value) {
    if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
    if (std::isnan(value)) {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        if (bits == kUsualNan) return "NaN";
        return wordText(static_cast<DWORD>(bits >> 32)) + wordText(static_cast<DWORD>(bits)).substr(2);
    }
    std::string text;
    json::appendReal(text, value);
    return text;
}

bool specialNamed(std::string_view text, double& value) {
    if (text == "Infinity" || text == "-Infinity") {
        value = std::numeric_limits<double>::infinity() * (text[0] == '-' ? -1 : 1);
        return true;
    }
    std::uint64_t bits = kUsualNan;
    if (text != "NaN") {
        if (text.size() != 18 || !text.starts_with("0x")) return false;
        const auto [rest, error] = std::from_chars(text.data() + 2, text.data() + text.size(), bits, 16);
        if (error != std::errc() || rest != text.data() + text.size()) return false;
    }
    value = std::bit_cast<double>(bits);
    return std::isnan(value);
}

std::string hexText(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return text;
}

bool isHex(std::string_view text) {
    return text.size() % 2 == 0 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

bool bytesOfHex(std::string_view text, std::string& bytes) {
    if (!isHex(text)) return false;
    bytes.clear();
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned byte = 0;
        std::from_chars(text.data() + i, text.data() + i + 2, byte, 16);
        bytes += static_cast<char>(byte);
    }
    return true;
}

std::string wordText(DWORD word) {
    std::string text = "0x";
    for (int shift = 24; shift >= 0; shift -= 8)
        text += hexText(std::string(1, static_cast<char>(word >> shift & 0xFF)));
    return text;
}

Content contentOfText(Type type, std::string_view text, std::string_view where) {
    const auto refuse = [&](std::string_view form) -> Content {
        throw command::UsageError("'" + std::string(text) + "' is not " + std::string(form));
    };
    const std::vector<std::string_view> parts = splitAtCommas(text);
    switch (type) {
        case Type::kLong: {
            LONG value = 0;
            return parseWhole(text, value) ? longContent(value)
                                           : refuse("a whole number from -2147483648 to 2147483647");
        }
        case Type::kDouble: {
            double value = 0;
            return parseDouble(text, value) ? doubleContent(value)
                                            : refuse("a number in the range of doubles");
        }
        case Type::kPoint: {
            POINT value{};
            const bool good = parts.size() == 2 && parseWhole(trimmed(parts[0]), value.x) &&
                              parseWhole(trimmed(parts[1]), value.y);
            return good ? pointContent(value) : refuse("a point (two whole numbers, x,y)");
        }
        case Type::kString: {
            if (text.find('\0') != std::string_view::npos) return refuse("a text without zeros");
            return stringContent(code_page::fromUtf8(text, where));
        }
        case Type::kDoubles: {
            Content content;
            content.typeWord = kDoublesWord;
            for (const std::string_view part : parts) {
                double value = 0;
                if (!parseDouble(trimmed(part), value)) return refuse("a list of numbers joined by commas");
                appendElement(content, value);
            }
            return content;
        }
        case Type::kMemory: {
            std::string digits;
            for (const char c : text) {
                if (c != ' ') digits += c;
            }
            std::string bytes;
            return bytesOfHex(digits, bytes) ? memoryContent(0, std::move(bytes))
                                             : refuse("a row of hexadecimal digit pairs");
        }
        case Type::kSection:
        case Type::kOther:
            break;
    }
    throw command::UsageError("the type " + std::string(nameOf(type)) + " takes no value; use " +
                              std::string(kValueTypes));
}

}  // namespace kor::tree
