#include "platform/posix/kernel/profile_line.h"

#include <algorithm>

namespace kor {
namespace {

constexpr bool isLineEnd(char character) { return character == '\n' || character == '\r'; }

// Ctrl-Z too: it once ended a file, and what follows it is read all the same.
constexpr bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\v' || character == '\f' ||
           character == '\x1A' || isLineEnd(character);
}

std::string_view untilZero(std::string_view text) { return text.substr(0, text.find('\0')); }

// @param bracket  where a `[` stands. @return the begin of its line when nothing but blanks is before it
std::optional<std::size_t> lineOfBracket(std::string_view text, std::size_t from, std::size_t bracket) {
    std::size_t begin = bracket;
    while (begin > from && !isLineEnd(text[begin - 1])) {
        if (!isBlank(text[begin - 1])) return std::nullopt;
        --begin;
    }
    return begin;
}

// The first `]` of a section line; its end when there is none.
std::size_t closingBracket(std::string_view line, ProfileLeadByte isLeadByte) {
    if (!isLeadByte) return std::min(line.find(']'), line.size());
    std::size_t at = 1;
    while (at < line.size() && line[at] != ']')
        at += isLeadByte(static_cast<unsigned char>(line[at])) ? 2 : 1;
    return std::min(at, line.size());
}

}  // namespace

ProfileLineSpan profileLineAt(std::string_view text, std::size_t begin) {
    std::size_t end = begin;
    while (end < text.size() && !isLineEnd(text[end]))
        ++end;
    const bool pair = text.substr(end).starts_with("\r\n");
    return {begin, end, end + (pair ? 2 : end < text.size() ? 1 : 0)};
}

ProfileLine readProfileLine(std::string_view line, ProfileLeadByte isLeadByte) {
    const std::string_view text = withoutProfileBlanks(line);
    if (text.empty()) return {ProfileLineKind::blank, {}, {}, false};
    if (text.front() == ';') return {ProfileLineKind::comment, {}, {}, false};
    if (text.front() == '[') {
        const std::string_view name = text.substr(1, closingBracket(text, isLeadByte) - 1);
        return {ProfileLineKind::section, withoutProfileBlanks(untilZero(name)), {}, false};
    }
    const std::size_t sign = text.find('=');
    const std::string_view name = withoutProfileBlanks(untilZero(text.substr(0, sign)));
    if (sign == text.npos) return {ProfileLineKind::key, name, {}, false};
    return {ProfileLineKind::key, name, untilZero(withoutProfileBlanks(text.substr(sign + 1))), true};
}

std::string_view profileNameAt(std::string_view text, std::size_t begin) {
    std::size_t end = begin;
    while (end < text.size() && text[end] != '=' && !isLineEnd(text[end]))
        ++end;
    return withoutProfileBlanks(untilZero(withoutProfileBlanks(text.substr(begin, end - begin))));
}

std::optional<ProfileSectionLine> nextProfileSection(std::string_view text, std::size_t from,
                                                     ProfileLeadByte isLeadByte) {
    for (std::size_t bracket = text.find('[', from); bracket != text.npos;
         bracket = text.find('[', bracket + 1)) {
        const auto begin = lineOfBracket(text, from, bracket);
        if (!begin) continue;
        const ProfileLineSpan rest = profileLineAt(text, bracket);
        const ProfileLine line = readProfileLine(text.substr(bracket, rest.end - bracket), isLeadByte);
        return ProfileSectionLine{{*begin, rest.end, rest.next}, line.name};
    }
    return std::nullopt;
}

std::string_view askedProfileName(std::string_view name) {
    const std::size_t first = name.find_first_not_of(' ');
    if (first == name.npos) return {};
    return name.substr(first, name.find_last_not_of(' ') - first + 1);
}

std::string_view withoutLeadingProfileBlanks(std::string_view text) {
    std::size_t begin = 0;
    while (begin < text.size() && isBlank(text[begin]))
        ++begin;
    return text.substr(begin);
}

std::string_view withoutProfileBlanks(std::string_view text) {
    text = withoutLeadingProfileBlanks(text);
    std::size_t end = text.size();
    while (end > 0 && isBlank(text[end - 1]))
        --end;
    return text.substr(0, end);
}

std::string_view withoutProfileQuotes(std::string_view value) {
    const bool quoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace kor
