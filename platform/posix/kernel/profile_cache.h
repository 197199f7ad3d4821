#pragma once
// The initialisation files that are kept in memory.

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/kernel/profile_contents.h"
#include "platform/posix/kernel/profile_load.h"
#include "platform/posix/kernel/profile_path.h"

namespace kor {

class ProfileCache {
  public:
    static ProfileCache& instance();

    /// One file's contents as they are now; nobody else reads until it goes.
    class Reading {
      public:
        /// The contents are null on failure, with the last error set.
        explicit Reading(const char* file);
        ~Reading();
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

        ProfileContents* contents() const { return contents_; }

      private:
        std::unique_lock<std::mutex> lock_;
        ProfileContents* contents_;
    };

    void clear();

    /// Forgets a file that is about to be written, unless it is small: the writer reads it itself.
    void forgetLarge(const ProfileName& name);

  private:
    struct Entry {
        std::string key;
        ProfilePath path;
        ProfileIdentity identity;
        std::unique_ptr<ProfileContents> contents;  // null: there is no such file,
        DWORD lack = 0;                             // which is this error

        std::size_t bytes() const { return contents ? contents->bytes() : 0; }
    };

    ProfileContents* open(const char* file);
    Entry* entryOf(const ProfileName& name);
    ProfileContents* load();
    void makeRoom();
    void release();

    std::mutex mutex_;
    std::vector<std::unique_ptr<Entry>> entries_;  // the one used last comes first
    const Entry* counted_ = nullptr;               // the first one when room was made last,
    std::size_t countedBytes_ = 0;                 // and its size
};

}  // namespace kor
