#pragma once
// From the file name that a profile function is given to the file, and how long that answer holds.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/kernel/profile_identity.h"

namespace kor {

/// The file that a name means, in a form that stays the same whatever folder is the current one.
class ProfileName {
  public:
    /// @param file  as the caller gave it; null means WIN.INI
    /// @return nothing on failure, with the last error set
    static std::optional<ProfileName> of(const char* file);

    /// Tells names apart; part of the caller's text or of this object.
    std::string_view key() const { return held_.empty() ? given_ : held_; }

    /// The platform path in UTF-8. @return nothing on failure, with the last error set
    std::optional<std::string> path() const;

  private:
    std::string_view given_;  // absolute, or a plain name in the system's folder
    std::string held_;        // kPathMark and an absolute path in UTF-8
};

/// A name found on the disk.
class ProfilePath {
  public:
    /// @return nothing on failure, with the last error set
    static std::optional<ProfilePath> find(const ProfileName& name);

    const std::string& native() const { return native_; }

    /// The name ends in a separator: it can only be a folder's.
    bool isFolder() const { return isFolder_; }

    /// Whether the file was not there, and isStill tells whether that holds.
    bool isMissing() const { return isMissing_; }

    /// Whether the name would be found in the same way now, as far as the file itself does not tell: a name
    /// that is spelled otherwise on the disk, or was not there, is looked for again when one of the folders
    /// in which it was looked for has changed.
    bool isStill() const;

  private:
    struct Watched {
        std::string folder;
        ProfileIdentity identity;
    };

    bool watch(std::string folder, const timespec& seen);
    void watchSearched(std::string_view root, const std::vector<std::string_view>& wanted,
                       const timespec& seen);

    std::string native_;
    bool isFolder_ = false;
    bool isMissing_ = false;
    bool isLasting_ = true;
    std::vector<Watched> watched_;
};

}  // namespace kor
