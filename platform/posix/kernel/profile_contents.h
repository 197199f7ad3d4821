#pragma once
// A parsed initialisation file: its text, and where its sections and keys are.

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "platform/posix/kernel/profile_line.h"
#include "platform/posix/kernel/profile_table.h"
#include "platform/posix/kernel/profile_text.h"

namespace kor {

/// A section's part of the text. Lines before the first section line are in none.
struct ProfileSection {
    std::size_t line;  ///< begin of its section line
    std::size_t body;  ///< begin of the line behind that
    std::size_t end;   ///< begin of the next section line, or the end of the text
};

/// Looks a section up without an index. Of several of a name the first one counts.
std::optional<ProfileSection> findProfileSection(const ProfileText& text, std::string_view name);

struct ProfileKeyLine {
    ProfileLineSpan span;
    ProfileLine line;
};

/// The first line of a section with a name, likewise.
std::optional<ProfileKeyLine> findProfileKey(const ProfileText& text, const ProfileSection& section,
                                             std::string_view name);

/// The same with indexes, of the sections when the first one is looked for and of each section's keys when
/// the first of them is. An index that would take too much memory for the size of the text is given up, and
/// the text searched instead.
class ProfileContents {
  public:
    explicit ProfileContents(ProfileText text);

    const ProfileText& text() const { return text_; }
    std::optional<ProfileSection> section(std::string_view name);

    /// @return the line of a key; nothing when it or its section is not there
    std::optional<ProfileLine> key(std::string_view section, std::string_view name);

    /// What the object keeps, in bytes.
    std::size_t bytes() const { return text_.view().size() + indexBytes_; }

  private:
    enum class Index { none, whole, givenUp };

    struct OpenSection {
        ProfileSection where;
        Index state = Index::none;  // of the keys
        ProfileTable keys;
    };

    OpenSection* openSection(std::string_view name);
    bool indexSections();
    bool indexKeys(OpenSection& section);
    std::optional<ProfileLine> indexedKey(const OpenSection& section, std::string_view name) const;

    ProfileText text_;
    std::size_t budget_;
    std::size_t indexBytes_ = 0;
    Index state_ = Index::none;                            // of the sections
    ProfileTable names_;                                   // of the sections' lines
    std::unordered_map<std::uint32_t, OpenSection> open_;  // those that were asked for, by their lines
};

}  // namespace kor
