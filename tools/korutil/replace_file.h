#pragma once
// Replacing a file in one atomic step: the new content is written beside it, brought to the disk and renamed
// over it, so that whoever looks at any moment, or after a crash, finds the old file or the new one. Where
// the file system can, the new file has no name before that, so that a process that is killed leaves nothing
// behind.

#include <csignal>
#include <string>

#include "tools/korutil/failure.h"
#include "tools/korutil/file_argument.h"

namespace kor::command {

/// Holds back the signals that would end the process between making the new file and renaming it.
class SignalBlock {
  public:
    SignalBlock();
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;
    ~SignalBlock();

  private:
    sigset_t before_;
};

/// The target is no longer what it was when the command looked at it.
class ChangedMeanwhile : public Failure {
  public:
    explicit ChangedMeanwhile(std::string_view file)
        : Failure(file, "another program has changed it meanwhile") {}
};

class FileReplacement {
  public:
    /// Makes an empty file in the target's folder. @throws Failure also when the target may not be written,
    /// or cannot keep its owner
    explicit FileReplacement(FileArgument target);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    /// Removes the new file unless it was committed.
    ~FileReplacement();

    /// The new file, for the library.
    const std::string& path() const { return path_; }

    /// Gives the new file the target's mode and owner (a new file gets the usual ones) and renames it over
    /// the target.
    /// @throws Failure; ChangedMeanwhile when somebody has changed the target meanwhile. The target is then
    /// as it was
    void commit();

  private:
    bool isNamed() const { return !native_.empty(); }
    bool openUnnamed();
    void openNamed();
    void giveName();
    void discard();
    void takeOverRights();

    SignalBlock signals_;
    FileArgument target_;
    std::string folder_;
    std::string native_;  // empty while the new file has no name
    std::string path_;
    int descriptor_ = -1;
};

}  // namespace kor::command
