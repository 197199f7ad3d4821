#pragma once
// One writer's turn at the initialisation files of a folder.

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include "platform/posix/kernel/descriptor.h"

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
    using Deadline = std::chrono::steady_clock::time_point;

    /// @param deadline  until when it waits for others
    /// @return nothing on failure, with errno set: EBUSY when others held the folder too long
    static std::optional<ProfileFolder> lock(const std::string& folder, Deadline deadline);

    ~ProfileFolder();
    ProfileFolder(ProfileFolder&&) noexcept = default;
    ProfileFolder& operator=(ProfileFolder&&) = delete;

    int descriptor() const { return folder_.get(); }

  private:
    using Key = std::tuple<pid_t, dev_t, ino_t>;
    struct EndTurn {
        void operator()(const Key* key) const;
    };
    using Turn = std::unique_ptr<const Key, EndTurn>;

    ProfileFolder(Turn turn, Descriptor folder) : turn_(std::move(turn)), folder_(std::move(folder)) {}

    static Turn takeTurn(const Key& key, Deadline deadline);

    Turn turn_;
    Descriptor folder_;
};

}  // namespace kor
