#pragma once
// The replacement of an initialisation file by a new one in one step.

#include <string>
#include <string_view>

#include "platform/posix/kernel/descriptor.h"
#include "platform/posix/kernel/profile_folder.h"

namespace kor {

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
    bool write(std::string_view bytes);  ///< small pieces are collected
    bool finish();                       ///< brings it to the disk
    bool takePlace();  ///< and the file's name to it; EEXIST when another file has it meanwhile

  private:
    bool openNamed();
    bool writeNow(std::string_view bytes);
    bool giveName(const std::string& name);
    bool hasOwnName() const;
    bool renameToFree();

    const ProfileFolder& folder_;
    std::string name_;
    std::string ownName_;    // until it has the other one
    std::string collected_;  // not written yet
    int former_;
    bool isNamed_ = false;
    Descriptor file_;
};

}  // namespace kor
