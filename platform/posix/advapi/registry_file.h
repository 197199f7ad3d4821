#pragma once
// The registry's files: each is read when it is first asked for, and again when it has changed.

#include <sys/stat.h>

#include <memory>
#include <mutex>
#include <string>

#include "korutil/platform/last_error.h"
#include "korutil/platform/registry.h"
#include "platform/posix/advapi/registry_tree.h"

namespace kor {

class RegistryFile {
  public:
    /// @param root  the root's name, and the file's without its extension
    explicit RegistryFile(const char* root) : root_(root) {}

    struct State {
        LSTATUS status = ERROR_SUCCESS;
        std::shared_ptr<const RegistryTree> tree;  ///< null on failure
    };

    /// What the file says now; a file that is not there says nothing. May throw std::bad_alloc.
    State current();

  private:
    State read(const std::string& path);
    State parse(int file, const struct stat& status, const std::string& path);
    void report(std::string faults);  // unless the file's state was told of before

    const char* root_;
    std::mutex mutex_;
    State state_;
    struct stat status_ {};   // of the file that state_ was read from
    bool isCurrent_ = false;  // unless it changes
    struct stat reportedStatus_ {};
    std::string reported_;
};

/// @return the file of a root; null for anything else
RegistryFile* registryFile(HKEY root);

}  // namespace kor
