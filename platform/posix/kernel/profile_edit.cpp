#include "platform/posix/kernel/profile_edit.h"

#include <algorithm>

#include "platform/posix/kernel/profile_contents.h"

namespace kor {
namespace {

bool endsLine(std::string_view text) { return text.ends_with('\n') || text.ends_with('\r'); }

std::string_view lineEndOf(std::string_view text, const ProfileLineSpan& span) {
    return text.substr(span.end, span.next - span.end);
}

// The line end for a line behind `place`: that of the line there, else of the first line.
std::string_view lineEndAt(std::string_view text, std::size_t place) {
    const std::string_view before = text.substr(0, place);
    if (before.ends_with("\r\n")) return "\r\n";
    if (endsLine(before)) return before.substr(before.size() - 1);
    const std::string_view first = text.empty() ? text : lineEndOf(text, profileLineAt(text, 0));
    return first.empty() ? "\r\n" : first;
}

// Behind the last line of a section that is not blank.
std::size_t endOfLines(std::string_view text, const ProfileSection& section) {
    const std::string_view body = text.substr(section.body, section.end - section.body);
    std::size_t last = body.size();
    while (last > 0 && withoutProfileBlanks(body.substr(last - 1, 1)).empty())
        --last;
    if (last == 0) return section.body;
    return profileLineAt(text, section.body + last - 1).next;
}

std::string lineOf(std::string_view key, std::string_view value, std::string_view lineEnd) {
    std::string line(key);
    line.append("=").append(value).append(lineEnd);
    return line;
}

// Lines put in at a place between lines.
ProfileEdit insertion(std::string_view text, std::size_t place, std::string lines) {
    const bool open = place > 0 && !endsLine(text.substr(0, place));
    if (open) lines.insert(0, lineEndAt(text, place));
    return {place, place, std::move(lines)};
}

ProfileEdit newSection(std::string_view text, std::string_view section, std::string_view lines) {
    std::string added(1, '[');
    added.append(section).append("]").append(lineEndAt(text, text.size())).append(lines);
    return insertion(text, text.size(), std::move(added));
}

bool isKeyLine(std::string_view text, const ProfileLineSpan& span) {
    return readProfileLine(text.substr(span.begin, span.end - span.begin)).kind == ProfileLineKind::key;
}

// The begin of the first key's line of a section; without one, the end of its lines.
std::size_t firstKeyOf(std::string_view text, const ProfileSection& section) {
    for (std::size_t begin = section.body; begin < section.end;) {
        const ProfileLineSpan span = profileLineAt(text, begin);
        if (isKeyLine(text, span)) return begin;
        begin = span.next;
    }
    return endOfLines(text, section);
}

// The blank lines and comments of a part of a section.
std::string keptLines(std::string_view text, std::size_t begin, std::size_t end) {
    std::string kept;
    while (begin < end) {
        const ProfileLineSpan span = profileLineAt(text, begin);
        if (!isKeyLine(text, span)) kept.append(text.substr(begin, span.next - begin));
        begin = span.next;
    }
    return kept;
}

// A section's body with other lines for its keys, where the first of them was. Comments and blank lines stay.
std::string bodyWith(std::string_view text, const ProfileSection& section, std::string lines) {
    const std::size_t place = firstKeyOf(text, section);
    if (!lines.empty()) lines = insertion(text, place, std::move(lines)).replacement;
    return keptLines(text, section.body, place) + lines + keptLines(text, place, section.end);
}

ProfileEdit setValue(const ProfileKeyLine& found, std::string_view text, std::string_view value) {
    if (!found.line.hasValue) {
        const auto end = static_cast<std::size_t>(found.line.name.end() - text.begin());
        return {end, found.span.end, lineOf({}, value, {})};
    }
    if (found.line.value == value) return {};
    const auto sign = text.find('=', found.span.begin);
    const auto rest = withoutLeadingProfileBlanks(text.substr(sign + 1, found.span.end - sign - 1));
    return {found.span.end - rest.size(), found.span.end, std::string(value)};
}

}  // namespace

ProfileEdit setProfileKey(const ProfileText& text, std::string_view section, std::string_view key,
                          std::string_view value) {
    const std::string_view view = text.view();
    section = askedProfileName(section);
    key = askedProfileName(key);
    value = withoutLeadingProfileBlanks(value);
    const auto where = findProfileSection(text, section);
    if (!where) return newSection(view, section, lineOf(key, value, lineEndAt(view, view.size())));
    if (const auto found = findProfileKey(text, *where, key)) return setValue(*found, view, value);
    const std::size_t place = endOfLines(view, *where);
    return insertion(view, place, lineOf(key, value, lineEndAt(view, place)));
}

ProfileEdit removeProfileKey(const ProfileText& text, std::string_view section, std::string_view key) {
    const auto where = findProfileSection(text, section);
    if (!where) return {};
    const auto found = findProfileKey(text, *where, key);
    if (!found) return {};
    return {found->span.begin, found->span.next, {}};
}

ProfileEdit removeProfileSection(const ProfileText& text, std::string_view section) {
    const auto where = findProfileSection(text, section);
    if (!where) return {};
    return {where->line, where->end, bodyWith(text.view(), *where, {})};
}

ProfileEdit setProfileSection(const ProfileText& text, std::string_view section, std::string_view lines) {
    const std::string_view view = text.view();
    section = askedProfileName(section);
    const auto where = findProfileSection(text, section);
    const std::string_view lineEnd = lineEndAt(view, where ? where->body : view.size());
    std::string added;
    for (std::size_t begin = 0; begin < lines.size();) {
        const std::size_t end = std::min(lines.find('\0', begin), lines.size());
        const std::string_view line = withoutLeadingProfileBlanks(lines.substr(begin, end - begin));
        if (!line.empty()) added.append(line).append(lineEnd);
        begin = end + 1;
    }
    if (!where) return added.empty() ? ProfileEdit{} : newSection(view, section, added);
    std::string body = bodyWith(view, *where, std::move(added));
    if (view.substr(where->body, where->end - where->body) == body) return {};
    return {where->body, where->end, std::move(body)};
}

}  // namespace kor
