#include "platform/posix/kernel/profile_edit.h"

#include <algorithm>
#include <initializer_list>

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

// A text of these parts, without room for more.
std::string joined(std::initializer_list<std::string_view> parts) {
    std::size_t size = 0;
    for (const std::string_view part : parts)
        size += part.size();
    std::string all;
    all.reserve(size);
    for (const std::string_view part : parts)
        all.append(part);
    return all;
}

// What lines that are put in at a place between lines begin with: the line end that is missing there.
std::string_view openEnd(std::string_view text, std::size_t place) {
    const bool open = place > 0 && !endsLine(text.substr(0, place));
    return open ? lineEndAt(text, place) : std::string_view();
}

// What a new section's lines begin with.
std::string sectionHead(std::string_view text, std::string_view section) {
    return joined({openEnd(text, text.size()), "[", section, "]", lineEndAt(text, text.size())});
}

bool isRemark(std::string_view text, const ProfileLineSpan& span) {
    const auto line = withoutLeadingProfileBlanks(text.substr(span.begin, span.end - span.begin));
    return line.empty() || line.front() == ';';
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

// Gives out the blank lines and comments of a part of a section, those that follow each other at once.
bool visitRemarks(std::string_view text, std::size_t begin, std::size_t end, const ProfileSink& sink) {
    std::size_t kept = begin;
    while (begin < end) {
        const ProfileLineSpan span = profileLineAt(text, begin);
        if (!isRemark(text, span)) {
            if (kept < begin && !sink(text.substr(kept, begin - kept))) return false;
            kept = span.next;
        }
        begin = span.next;
    }
    return kept >= end || sink(text.substr(kept, end - kept));
}

// Whether the text has already what an edit would give it.
bool changesNothing(const ProfileText& text, const ProfileEdit& edit) {
    std::string_view rest = text.view().substr(edit.begin, edit.end - edit.begin);
    const bool same = visitEdited(text, edit, [&rest](std::string_view piece) {
        const bool goesOn = rest.starts_with(piece);
        if (goesOn) rest.remove_prefix(piece.size());
        return goesOn;
    });
    return same && rest.empty();
}

// The lines, each with its line end, behind a beginning.
std::string linesBehind(std::string start, std::string_view lines, std::string_view lineEnd) {
    const auto visit = [lines](auto&& line) {
        for (std::size_t begin = 0; begin < lines.size();) {
            const std::size_t end = std::min(lines.find('\0', begin), lines.size());
            const auto text = withoutLeadingProfileBlanks(lines.substr(begin, end - begin));
            if (!text.empty()) line(text);
            begin = end + 1;
        }
    };
    std::size_t size = start.size();
    visit([&](std::string_view line) { size += line.size() + lineEnd.size(); });
    start.reserve(size);
    visit([&](std::string_view line) { start.append(line).append(lineEnd); });
    return start;
}

bool hasLines(std::string_view lines) {
    return lines.find_first_not_of(std::string_view(" \t\v\f\x1A\r\n\0", 8)) != lines.npos;
}

ProfileEdit setValue(const ProfileKeyLine& found, std::string_view text, std::string_view value) {
    if (!found.line.hasValue) {
        const auto end = static_cast<std::size_t>(found.line.name.end() - text.begin());
        return {end, found.span.end, joined({"=", value})};
    }
    const auto sign = text.find('=', found.span.begin);
    const auto all = text.substr(sign + 1, found.span.end - sign - 1);
    const auto rest = withoutLeadingProfileBlanks(all);
    if (found.line.value == value || rest == value || all == value) return {};
    // Blanks that are given take the place of those that are there, or they would grow in number.
    const bool bringsBlanks = withoutLeadingProfileBlanks(value).size() != value.size();
    const std::size_t replaced = bringsBlanks ? all.size() : rest.size();
    return {found.span.end - replaced, found.span.end, std::string(value)};
}

}  // namespace

bool visitEdited(const ProfileText& text, const ProfileEdit& edit, const ProfileSink& sink) {
    if (!edit.keepsRemarks) return sink(edit.replacement);
    return visitRemarks(text.view(), edit.begin, edit.place, sink) && sink(edit.replacement) &&
           visitRemarks(text.view(), edit.place, edit.end, sink);
}

ProfileEdit setProfileKey(const ProfileText& text, std::string_view section, std::string_view key,
                          std::string_view value) {
    const std::string_view view = text.view();
    section = askedProfileName(section);
    key = askedProfileName(key);
    const auto where = findProfileSection(text, section);
    if (!where) {
        const std::size_t end = view.size();
        const std::string_view lineEnd = lineEndAt(view, end);
        return {end, end, joined({sectionHead(view, section), key, "=", value, lineEnd})};
    }
    if (const auto found = findProfileKey(text, *where, key)) return setValue(*found, view, value);
    const std::size_t place = endOfLines(view, *where);
    return {place, place, joined({openEnd(view, place), key, "=", value, lineEndAt(view, place)})};
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
    return {where->line, where->end, {}, true, where->line};
}

ProfileEdit setProfileSection(const ProfileText& text, std::string_view section, std::string_view lines) {
    const std::string_view view = text.view();
    section = askedProfileName(section);
    const auto where = findProfileSection(text, section);
    const std::string_view lineEnd = lineEndAt(view, where ? where->body : view.size());
    if (!where) {
        if (!hasLines(lines)) return {};
        return {view.size(), view.size(), linesBehind(sectionHead(view, section), lines, lineEnd)};
    }
    const std::size_t place = firstKeyOf(view, *where);
    const std::string start(hasLines(lines) ? openEnd(view, place) : std::string_view());
    ProfileEdit edit{where->body, where->end, linesBehind(start, lines, lineEnd), true, place};
    if (changesNothing(text, edit)) return {};
    return edit;
}

}  // namespace kor
