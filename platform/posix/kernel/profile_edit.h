#pragma once
// What a write changes in the text of an initialisation file: one part of it, and nothing else.

#include <string>
#include <string_view>

#include "platform/posix/kernel/profile_text.h"

namespace kor {

struct ProfileEdit {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string replacement;
    bool keepsRemarks = false;  ///< comments and blank lines of the part stay
    std::size_t place = 0;      ///< the replacement then goes before the line here

    bool isNothing() const { return begin == end && replacement.empty(); }
};

/// Gives out, piece by piece, what takes the place of the edit's part.
/// @return false as soon as `sink` does
bool visitEdited(const ProfileText& text, const ProfileEdit& edit, const ProfileSink& sink);

// All names and values are in the text's encoding.

/// The value of the key's line, from its first character that is no blank to the line's end, or from behind
/// the `=` where the new one begins with a blank; else a line
/// behind the last one of the section that is not blank; else a section at the end.
ProfileEdit setProfileKey(const ProfileText& text, std::string_view section, std::string_view key,
                          std::string_view value);

/// The key's line. What is not there need not be removed.
ProfileEdit removeProfileKey(const ProfileText& text, std::string_view section, std::string_view key);

/// The section's line and those of its keys; comments and blank lines stay.
ProfileEdit removeProfileSection(const ProfileText& text, std::string_view section);

/// The lines of the section's keys, for others where the first of them was; comments and blank lines stay.
/// @param lines  with a zero each; blank ones are passed over
ProfileEdit setProfileSection(const ProfileText& text, std::string_view section, std::string_view lines);

}  // namespace kor
