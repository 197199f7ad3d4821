#pragma once
// The lines of an initialisation file. Nothing here knows of files, code pages or memory: every result is a
// part of the text that was given.

#include <cstddef>
#include <optional>
#include <string_view>

namespace kor {

/// Where a line lies in its text.
struct ProfileLineSpan {
    std::size_t begin;
    std::size_t end;   ///< of what it says, without its line end
    std::size_t next;  ///< of the line end: CR LF, LF or CR, or nothing at the end of the text
};

/// The line that begins at `begin`, which must lie before the end of the text.
ProfileLineSpan profileLineAt(std::string_view text, std::size_t begin);

enum class ProfileLineKind {
    blank,
    comment,  ///< begins with `;`
    section,  ///< begins with `[`
    key,      ///< any other, with a value or without one
};

struct ProfileLine {
    ProfileLineKind kind;
    std::string_view name;   ///< of a section or key, without blanks around it
    std::string_view value;  ///< of a key, without blanks around it, with its quotes
    bool hasValue;           ///< the line has a `=`
};

/// Tells the first byte of a character of two, of which the second may look like a bracket.
using ProfileLeadByte = bool (*)(unsigned char byte);

/// What a line without its line end says. A section's name ends at the first `]`, or else with the line; what
/// follows it is passed over. Blanks are the space, TAB, VT, FF and Ctrl-Z. A name or a value ends at a zero.
ProfileLine readProfileLine(std::string_view line, ProfileLeadByte isLeadByte = nullptr);

/// The name of the key's line that begins at `begin`, read no further than to its `=`.
std::string_view profileNameAt(std::string_view text, std::size_t begin);

struct ProfileSectionLine {
    ProfileLineSpan span;
    std::string_view name;
};

/// The first section line of a text from `from` on, which must be the begin of a line. Costs little where
/// there are few brackets.
std::optional<ProfileSectionLine> nextProfileSection(std::string_view text, std::size_t from,
                                                     ProfileLeadByte isLeadByte = nullptr);

/// A name that is asked for: of the blanks only the space can be around it.
std::string_view askedProfileName(std::string_view name);

/// A text without the blanks before and behind it.
std::string_view withoutProfileBlanks(std::string_view text);
std::string_view withoutLeadingProfileBlanks(std::string_view text);

/// A value without the pair of equal quotes, single or double, that encloses it.
std::string_view withoutProfileQuotes(std::string_view value);

}  // namespace kor
