#pragma once
// A private copy of a settings file, for changes that become visible all at once.

#include <string>

#include "tools/korutil/file_argument.h"
#include "tools/korutil/replace_file.h"

namespace kor::profile {

/// A folder of its own, which goes with the object.
struct ScratchFolder {
    ScratchFolder();  ///< @throws command::Failure
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    command::SignalBlock signals;  // outlives the folder: a signal that came meanwhile leaves none behind
    std::string path;
};

class ScratchProfile {
  public:
    /// Copies the target's content; a target that is missing counts as empty. @throws command::Failure
    explicit ScratchProfile(const command::FileArgument& target);

    /// The copy, for the library.
    const std::string& path() const { return path_; }
    const std::string& native() const { return native_; }

    /// Replaces the target by what the copy holds now, in one atomic step. @throws command::Failure
    void commit() const;

  private:
    command::FileArgument target_;
    ScratchFolder folder_;
    std::string native_;
    std::string path_;
};

}  // namespace kor::profile
