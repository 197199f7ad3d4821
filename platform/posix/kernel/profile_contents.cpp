#include "platform/posix/kernel/profile_contents.h"

#include <algorithm>

#include "platform/posix/kernel/profile_name.h"

namespace kor {
namespace {

// Calls `visit(line span)` for the lines of a part of a text until it returns true.
template <typename Visit>
bool visitLines(std::string_view text, std::size_t begin, std::size_t end, Visit&& visit) {
    while (begin < end) {
        const ProfileLineSpan span = profileLineAt(text, begin);
        if (visit(span)) return true;
        begin = span.next;
    }
    return false;
}

constexpr std::size_t kOpenSectionBytes = 120;  // of a section that was asked for, without its keys

std::optional<ProfileSectionLine> nextSection(const ProfileText& text, std::size_t from) {
    return nextProfileSection(text.view(), from, text.leadBytes());
}

std::size_t beginOr(const std::optional<ProfileSectionLine>& line, std::size_t end) {
    return line ? line->span.begin : end;
}

}  // namespace

std::optional<ProfileSection> findProfileSection(const ProfileText& text, std::string_view name) {
    name = askedProfileName(name);
    const std::string_view view = text.view();
    for (auto line = nextSection(text, 0); line; line = nextSection(text, line->span.next)) {
        if (!isSameProfileName(line->name, name, text.page())) continue;
        const std::size_t body = line->span.next;
        return ProfileSection{line->span.begin, body, beginOr(nextSection(text, body), view.size())};
    }
    return std::nullopt;
}

std::optional<ProfileKeyLine> findProfileKey(const ProfileText& text, const ProfileSection& section,
                                             std::string_view name) {
    name = askedProfileName(name);
    std::optional<ProfileKeyLine> found;
    const std::string_view view = text.view();
    visitLines(view, section.body, section.end, [&](const ProfileLineSpan& span) {
        const ProfileLine line = readProfileLine(view.substr(span.begin, span.end - span.begin));
        if (line.kind != ProfileLineKind::key || !isSameProfileName(line.name, name, text.page()))
            return false;
        found = {span, line};
        return true;
    });
    return found;
}

// With this the whole stays below twice the file's size and 16 MB: of a UTF-16 file the text is up to half as
// large again as the file.
ProfileContents::ProfileContents(ProfileText text) : text_(std::move(text)), budget_(std::size_t{8} << 20) {
    const std::size_t size = text_.view().size();
    const bool isUtf16 = text_.encoding() >= ProfileEncoding::utf16LittleEndian;
    budget_ += isUtf16 ? size / 3 : size - size / 8;
}

std::optional<ProfileSection> ProfileContents::section(std::string_view name) {
    const OpenSection* const open = openSection(name);
    if (open) return open->where;
    if (state_ == Index::givenUp) return findProfileSection(text_, name);
    return std::nullopt;
}

std::optional<ProfileLine> ProfileContents::key(std::string_view section, std::string_view name) {
    name = askedProfileName(name);
    if (OpenSection* const open = openSection(section)) {
        if (open->state == Index::none) open->state = indexKeys(*open) ? Index::whole : Index::givenUp;
        if (open->state == Index::whole) return indexedKey(*open, name);
    }
    const auto where = this->section(section);
    if (!where) return std::nullopt;
    const auto found = findProfileKey(text_, *where, name);
    if (!found) return std::nullopt;
    return found->line;
}

ProfileContents::OpenSection* ProfileContents::openSection(std::string_view name) {
    if (state_ == Index::none) state_ = indexSections() ? Index::whole : Index::givenUp;
    if (state_ == Index::givenUp) return nullptr;
    name = askedProfileName(name);
    const std::uint32_t found = names_.find(profileNameHash(name, text_.page()), [&](std::uint32_t line) {
        return isSameProfileName(nextSection(text_, line)->name, name, text_.page());
    });
    if (found == ProfileTable::kNone) return nullptr;
    const auto known = open_.find(found);
    if (known != open_.end()) return &known->second;
    if (indexBytes_ + kOpenSectionBytes > budget_) {
        open_ = {};
        indexBytes_ = names_.bytes();
    }
    OpenSection& open = open_[found];
    indexBytes_ += kOpenSectionBytes;
    const std::size_t body = nextSection(text_, found)->span.next;
    open.where = {found, body, beginOr(nextSection(text_, body), text_.view().size())};
    return &open;
}

// @return false when the index has become too large
bool ProfileContents::indexSections() {
    bool added = true;
    for (auto line = nextSection(text_, 0); added && line; line = nextSection(text_, line->span.next)) {
        const std::uint32_t hash = profileNameHash(line->name, text_.page());
        const auto isSame = [&](std::uint32_t other) {
            return isSameProfileName(nextSection(text_, other)->name, line->name, text_.page());
        };
        if (names_.find(hash, isSame) == ProfileTable::kNone)
            added = names_.add(hash, static_cast<std::uint32_t>(line->span.begin), budget_);
    }
    if (!added) names_.clear();
    indexBytes_ = names_.bytes();
    return added;
}

// @return false when the index has become too large
bool ProfileContents::indexKeys(OpenSection& section) {
    const std::string_view view = text_.view();
    const std::size_t budget = budget_ - std::min(budget_, indexBytes_);
    const bool stopped =
        visitLines(view, section.where.body, section.where.end, [&](const ProfileLineSpan& span) {
            const std::string_view line = view.substr(span.begin, span.end - span.begin);
            const std::string_view said = withoutLeadingProfileBlanks(line);
            if (said.empty() || said.front() == ';') return false;
            const std::string_view name = profileNameAt(view, span.begin);
            const std::uint32_t hash = profileNameHash(name, text_.page());
            const auto isSame = [&](std::uint32_t position) {
                return isSameProfileName(profileNameAt(view, position), name, text_.page());
            };
            return section.keys.find(hash, isSame) == ProfileTable::kNone &&
                   !section.keys.add(hash, static_cast<std::uint32_t>(span.begin), budget);
        });
    if (stopped) section.keys.clear();
    indexBytes_ += section.keys.bytes();
    return !stopped;
}

std::optional<ProfileLine> ProfileContents::indexedKey(const OpenSection& section,
                                                       std::string_view name) const {
    const std::string_view view = text_.view();
    const std::uint32_t found =
        section.keys.find(profileNameHash(name, text_.page()), [&](std::uint32_t position) {
            return isSameProfileName(profileNameAt(view, position), name, text_.page());
        });
    if (found == ProfileTable::kNone) return std::nullopt;
    const ProfileLineSpan span = profileLineAt(view, found);
    return readProfileLine(view.substr(span.begin, span.end - span.begin));
}

}  // namespace kor
