// The functions that write initialisation files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/open_file.h"
#include "platform/posix/kernel/profile.h"
#include "platform/posix/kernel/profile_cache.h"
#include "platform/posix/kernel/profile_edit.h"
#include "platform/posix/kernel/profile_replace.h"
#include "platform/posix/kernel/share_lock.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::failWith;
using kor::failWithErrno;
using kor::LoadedProfile;
using kor::ProfileEdit;
using kor::ProfileText;

using MakeEdit = std::function<ProfileEdit(const ProfileText&)>;

enum class Outcome { done, failed, again };

// Whether the file of this name is still the one that was read.
bool isStill(const kor::ProfileFolder& folder, const std::string& name, const LoadedProfile* former) {
    struct stat now {};
    const bool isThere = fstatat(folder.descriptor(), name.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0;
    if (!former) return !isThere && errno == ENOENT;
    return isThere && kor::ProfileIdentity(former->status, {}).isSameState(now);
}

// @return false with the last error set
bool mayWrite(const kor::ProfileFolder& folder, const std::string& name, int descriptor,
              const LoadedProfile& former) {
    if (kor::isReadOnly(former.status.st_mode)) return failWith(ERROR_ACCESS_DENIED);
    constexpr unsigned kAll = kor::kReads | kor::kWrites | kor::kDeletes;
    if (!kor::claimShare(descriptor, kor::kWrites, kAll)) return failWith(ERROR_SHARING_VIOLATION);
    if (faccessat(folder.descriptor(), name.c_str(), W_OK, AT_EACCESS) != 0) return failWithErrno();
    return true;
}

Outcome replace(const kor::ProfileFolder& folder, const std::string& name, int descriptor,
                const LoadedProfile* former, const ProfileEdit& edit) {
    const ProfileText empty;
    kor::ProfileReplacement file(folder, name, descriptor);
    const auto put = [&file](std::string_view bytes) { return file.write(bytes); };
    const bool written = file.open() &&
                         (former ? former->text : empty).write(edit.begin, edit.end, edit.replacement, put) &&
                         file.finish();
    if (!written) return failWithErrno(), Outcome::failed;
    // Editors and other programs take no lock.
    if (!isStill(folder, name, former)) return Outcome::again;
    if (file.takePlace()) return Outcome::done;
    if (errno == EEXIST) return Outcome::again;
    return failWithErrno(), Outcome::failed;
}

Outcome changeOnce(const kor::ProfilePath& path, const MakeEdit& makeEdit) {
    const auto place = kor::profilePlaceOf(path.native());
    if (!place) return kor::failWithErrnoOf(path.native()), Outcome::failed;
    const auto folder = kor::ProfileFolder::lock(place->folder);
    if (!folder) return kor::failWithErrnoOf(place->path()), Outcome::failed;
    const kor::Descriptor file = kor::openProfile(folder->descriptor(), place->name, O_NOFOLLOW);
    std::optional<LoadedProfile> former;
    if (file.isOpen()) {
        former = kor::loadProfile(file.get());
        if (!former) return Outcome::failed;
    } else if (errno != ENOENT) {
        return failWithErrno(), Outcome::failed;
    }
    const ProfileText none;
    const ProfileEdit edit = makeEdit(former ? former->text : none);
    if (edit.isNothing()) return Outcome::done;
    if (former && !mayWrite(*folder, place->name, file.get(), *former)) return Outcome::failed;
    return replace(*folder, place->name, file.get(), former ? &*former : nullptr, edit);
}

BOOL change(LPCSTR file, const MakeEdit& makeEdit) {
    // Threads of this process take turns also where the file system has no locks.
    static std::mutex writers;
    const std::lock_guard turn(writers);
    const auto name = kor::ProfileName::of(file);
    const auto path = name ? kor::ProfilePath::find(*name) : std::nullopt;
    if (!path) return FALSE;
    if (path->isFolder()) return failWith(ERROR_ACCESS_DENIED);
    constexpr int kMostTries = 16;
    for (int tries = 0; tries < kMostTries; ++tries) {
        const Outcome outcome = changeOnce(*path, makeEdit);
        if (outcome != Outcome::again) return outcome == Outcome::done;
    }
    return failWith(ERROR_SHARING_VIOLATION);
}

// A caller's text in a file's encoding.
class Converted {
  public:
    Converted(const ProfileText& text, std::string_view given) : view_(text.fromCaller(given, holder_)) {}
    Converted(const Converted&) = delete;
    Converted& operator=(const Converted&) = delete;
    operator std::string_view() const { return view_; }

  private:
    std::string holder_;
    std::string_view view_;
};

// The texts up to the empty one, with their zeros.
std::string_view linesOf(LPCSTR lines) {
    LPCSTR end = lines;
    while (*end)
        end += std::char_traits<char>::length(end) + 1;
    return {lines, static_cast<std::size_t>(end - lines)};
}

}  // namespace

KORPLATFORM_API BOOL WINAPI WritePrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR value,
                                                       LPCSTR file) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (!section && !key && !value) kor::ProfileCache::instance().clear();
        if (!section) return failWith(ERROR_FILE_NOT_FOUND);
        return change(file, [&](const ProfileText& text) {
            const Converted sectionName(text, section);
            if (!key) return kor::removeProfileSection(text, sectionName);
            const Converted keyName(text, key);
            if (!value) return kor::removeProfileKey(text, sectionName, keyName);
            return kor::setProfileKey(text, sectionName, keyName, Converted(text, value));
        });
    });
}

KORPLATFORM_API BOOL WINAPI WritePrivateProfileSectionA(LPCSTR section, LPCSTR lines, LPCSTR file) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        if (!section) return failWith(ERROR_FILE_NOT_FOUND);
        return change(file, [&](const ProfileText& text) {
            const Converted name(text, section);
            if (!lines) return kor::removeProfileSection(text, name);
            return kor::setProfileSection(text, name, Converted(text, linesOf(lines)));
        });
    });
}
