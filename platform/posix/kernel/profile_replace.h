#pragma once
// One writer's turn at an initialisation file, and its replacement by a new one in one step.

#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/profile_text.h"

namespace kor {

/// Where a file is, symbolic links followed.
struct ProfilePlace {
    std::string folder;  ///< with a separator at its end
    std::string name;

    std::string path() const { return folder + name; }
};

/// @return nothing on failure, with errno set
std::optional<ProfilePlace> profilePlaceOf(const std::string& native);

/// The folder of a file, locked by the kernel: of all that change files in a folder in this way, in any
/// process, one does. The lock goes with the object, or the process.
class ProfileFolder {
  public:
    /// @return nothing on failure, with errno set
    static std::optional<ProfileFolder> lock(const std::string& folder);

    int descriptor() const { return folder_.get(); }

  private:
    explicit ProfileFolder(Descriptor folder) : folder_(std::move(folder)) {}

    Descriptor folder_;
};

/// A file that is written beside another one and then takes its place, with its owner, mode and extended
/// attributes.
class ProfileReplacement {
  public:
    /// @param folder  locked, and longer there than this
    /// @param former  the file that is replaced, open; -1 when there is none
    ProfileReplacement(const ProfileFolder& folder, std::string name, int former);
    ~ProfileReplacement();
    ProfileReplacement(const ProfileReplacement&) = delete;
    ProfileReplacement& operator=(const ProfileReplacement&) = delete;

    /// Each false with errno set; the former file then stays.
    bool open();
    bool write(std::string_view bytes);
    bool finish();     ///< brings it to the disk
    bool takePlace();  ///< and the file's name to it; EEXIST when another file has it meanwhile

  private:
    bool openNamed();
    bool takeOverRights() const;
    bool giveName(const std::string& name);
    bool giveOwnName();

    const ProfileFolder& folder_;
    std::string name_;
    std::string ownName_;  // until it has the other one
    int former_;
    bool isNamed_ = false;
    Descriptor file_;
};

}  // namespace kor
