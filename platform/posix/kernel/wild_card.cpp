#include "platform/posix/kernel/wild_card.h"

#include <vector>

#include "platform/posix/kernel/utf.h"

namespace kor {
namespace {

// What `*`, `?` and `.` become next to each other; they may also be given as they are.
constexpr char32_t kAny = U'*';          // any characters
constexpr char32_t kUpToLastDot = U'<';  // any characters, but not the name's last dot
constexpr char32_t kOneOrNone = U'>';    // one character but a dot, or none before a dot and at the end
constexpr char32_t kDotOrEnd = U'"';     // a dot, or nothing at the end

std::u32string folded(std::string_view text) {
    const std::string upper = foldedName(text);
    std::u32string result;
    for (std::string_view rest = upper; !rest.empty();) {
        const Decoded next = decodeUtf8(rest);
        result.push_back(next.character);
        rest.remove_prefix(next.length);
    }
    return result;
}

std::u32string translated(std::u32string pattern) {
    if (pattern == U"*.*") return U"*";
    const bool endsInDot = pattern.size() > 1 && pattern.back() == U'.';
    while (pattern.size() > 1 && pattern.back() == U'.')
        pattern.pop_back();
    for (std::size_t index = 0; index < pattern.size(); ++index) {
        char32_t& before = pattern[index == 0 ? 0 : index - 1];
        if (pattern[index] == U'.' && index != 0 && before == kAny) before = kUpToLastDot;
        if ((pattern[index] == U'?' || pattern[index] == kAny) && index != 0 && before == U'.')
            before = kDotOrEnd;
        if (pattern[index] == U'?') pattern[index] = kOneOrNone;
    }
    if (endsInDot && pattern.back() == kAny) pattern.back() = kUpToLastDot;
    return pattern;
}

// Which places of the pattern are reached; those behind a token that may match nothing are reached with it.
using Places = std::vector<bool>;

}  // namespace

bool hasWildCard(std::string_view component) { return component.find_first_of("*?<>\"") != component.npos; }

WildCard::WildCard(std::string_view pattern) : pattern_(translated(folded(pattern))) {}

bool WildCard::matches(std::string_view text) const {
    const std::u32string name = folded(text);
    // The folder's own names have no extension: their dots are no last dots.
    const bool ownName = name == U"." || name == U"..";
    const std::size_t lastDot = ownName ? name.npos : name.rfind(U'.');
    const auto mayBeNothing = [&name](char32_t token, std::size_t at) {
        const bool atEnd = at == name.size();
        if (token == kAny || token == kUpToLastDot) return true;
        if (token == kOneOrNone) return atEnd || name[at] == U'.';
        return token == kDotOrEnd && atEnd;
    };
    const auto closeOver = [this, &mayBeNothing](Places& places, std::size_t at) {
        for (std::size_t place = 0; place < pattern_.size(); ++place) {
            if (places[place] && mayBeNothing(pattern_[place], at)) places[place + 1] = true;
        }
    };
    Places places(pattern_.size() + 1);
    places[0] = true;
    closeOver(places, 0);
    for (std::size_t at = 0; at < name.size(); ++at) {
        Places next(pattern_.size() + 1);
        for (std::size_t place = 0; place < pattern_.size(); ++place) {
            if (!places[place]) continue;
            const char32_t token = pattern_[place];
            if (token == kAny || (token == kUpToLastDot && at != lastDot)) {
                next[place] = true;
            } else if (token == kOneOrNone) {
                if (name[at] != U'.') next[place + 1] = true;
            } else if (token == name[at] || (token == kDotOrEnd && name[at] == U'.')) {
                next[place + 1] = true;
            }
        }
        places = std::move(next);
        closeOver(places, at + 1);
    }
    return places[pattern_.size()];
}

}  // namespace kor
