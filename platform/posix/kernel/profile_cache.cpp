#include "platform/posix/kernel/profile_cache.h"

#include <algorithm>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/native_name.h"

namespace kor {
namespace {

constexpr std::size_t kMostEntries = 32;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;    // of all files but the one used last,
constexpr std::size_t kLargestKept = std::size_t{64} << 20;  // and of that one

}  // namespace

ProfileCache& ProfileCache::instance() {
    static ProfileCache cache;
    return cache;
}

ProfileCache::Reading::Reading(const char* file)
    : lock_(instance().mutex_), contents_(instance().open(file)) {}

ProfileCache::Reading::~Reading() { instance().release(); }

void ProfileCache::clear() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
}

void ProfileCache::forgetLarge(const ProfileName& name) {
    constexpr std::size_t kLarge = std::size_t{4} << 20;
    const std::lock_guard lock(mutex_);
    std::erase_if(entries_,
                  [&](const auto& entry) { return entry->key == name.key() && entry->bytes() > kLarge; });
}

ProfileContents* ProfileCache::open(const char* file) {
    const auto name = ProfileName::of(file);
    if (!name) return nullptr;
    if (Entry* const entry = entryOf(*name)) {
        struct stat status {};
        if (!entry->contents) return SetLastError(entry->lack), nullptr;
        if (stat(entry->path.native().c_str(), &status) == 0)
            return entry->identity.isStill(status) ? entry->contents.get() : load();
        entries_.erase(entries_.begin());
    }
    auto path = ProfilePath::find(*name);
    if (!path) return nullptr;
    auto entry = std::make_unique<Entry>();
    entry->key = name->key();
    entry->path = std::move(*path);
    entries_.insert(entries_.begin(), std::move(entry));
    return load();
}

// The entry of a name, brought to the front; null when there is none that still holds.
ProfileCache::Entry* ProfileCache::entryOf(const ProfileName& name) {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const auto& entry) { return entry->key == name.key(); });
    if (found == entries_.end()) return nullptr;
    if (!(*found)->path.isStill()) {
        entries_.erase(found);
        return nullptr;
    }
    std::rotate(entries_.begin(), found, found + 1);
    return entries_.front().get();
}

// Reads the file of the first entry anew. Of one that cannot be read nothing is remembered but that it is
// missing.
ProfileContents* ProfileCache::load() {
    Entry& entry = *entries_.front();
    entry.contents.reset();
    counted_ = nullptr;
    makeRoom();
    try {
        if (auto loaded = loadProfile(entry.path)) {
            entry.identity = loaded->identity;
            entry.contents = std::make_unique<ProfileContents>(std::move(loaded->text));
            return entry.contents.get();
        }
    } catch (...) {
        entries_.erase(entries_.begin());
        throw;
    }
    entry.lack = GetLastError();
    if (!entry.path.isMissing()) entries_.erase(entries_.begin());
    return nullptr;
}

// For the first entry at the cost of the last ones.
void ProfileCache::makeRoom() {
    std::size_t bytes = 0;
    std::size_t kept = 1;
    while (kept < entries_.size() && kept < kMostEntries) {
        bytes += entries_[kept]->bytes();
        if (bytes > kMostBytes) break;
        ++kept;
    }
    entries_.resize(std::min(kept, entries_.size()));
}

// A call that has changed neither the order nor what the first file takes has left enough room.
void ProfileCache::release() {
    if (entries_.empty()) return;
    const Entry* const first = entries_.front().get();
    if (first == counted_ && first->bytes() == countedBytes_) return;
    if (first->bytes() > kLargestKept) {
        entries_.erase(entries_.begin());
        counted_ = nullptr;
        return;
    }
    makeRoom();
    counted_ = first;
    countedBytes_ = first->bytes();
}

}  // namespace kor
