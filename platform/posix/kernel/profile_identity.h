#pragma once
// Whether a file or folder is still what it was.

#include <sys/stat.h>

namespace kor {

class ProfileIdentity {
  public:
    ProfileIdentity() = default;

    /// @param seen  the time, by the wall clock, before the file was looked at
    ProfileIdentity(const struct stat& status, const timespec& seen);

    /// The time to give to it.
    static timespec now();

    /// Whether the status is that of the same file, unchanged. A file that had changed less than 20 ms before
    /// it was looked at may have changed since without a new time, and is never the same.
    bool isStill(const struct stat& status) const { return isSettled_ && isSameState(status); }

    /// The same without regard to time.
    bool isSameState(const struct stat& status) const;

  private:
    dev_t device_ = 0;
    ino_t inode_ = 0;
    off_t size_ = 0;
    timespec modified_{};
    timespec changed_{};
    bool isSettled_ = false;
};

}  // namespace kor
