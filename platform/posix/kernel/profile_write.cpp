// The functions that write initialisation files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
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
#include "platform/posix/kernel/transfer.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::failWith;
using kor::failWithErrno;
using kor::LoadedProfile;
using kor::ProfileEdit;
using kor::ProfileText;

using MakeEdit = std::function<ProfileEdit(const ProfileText&)>;

constexpr std::chrono::seconds kLongestWait{5};  // for other writers

enum class Outcome { done, failed, again };

// Whether a file holds what was read from it.
bool holds(int descriptor, const ProfileText& text) {
    std::array<char, 16384> buffer;
    off_t place = 0;
    const auto readNext = [&](std::size_t size) {
        return kor::transferAll(
            [&](char* to, std::size_t count) {
                const ssize_t got = pread(descriptor, to, count, place);
                if (got > 0) place += got;
                return got;
            },
            buffer.data(), size);
    };
    const auto isNext = [&](std::string_view bytes) {
        while (!bytes.empty()) {
            const std::string_view part = bytes.substr(0, buffer.size());
            if (readNext(part.size()).done != part.size()) return false;
            if (std::string_view(buffer.data(), part.size()) != part) return false;
            bytes.remove_prefix(part.size());
        }
        return true;
    };
    const auto unchanged = [](const kor::ProfileSink&) { return true; };
    return text.write(0, 0, unchanged, isNext) && readNext(1).done == 0;
}

// Whether the file of this name is still the one that was read.
bool isStill(const kor::ProfileFolder& folder, const std::string& name, int descriptor,
             const LoadedProfile* former) {
    struct stat now {};
    const bool isThere = fstatat(folder.descriptor(), name.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0;
    if (!former) return !isThere && errno == ENOENT;
    if (!isThere || !kor::ProfileIdentity(former->status, {}).isSameState(now)) return false;
    return former->identity.isStill(now) || holds(descriptor, former->text);
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
    const ProfileText& text = former ? former->text : empty;
    const auto put = [&file](std::string_view bytes) { return file.write(bytes); };
    const auto visit = [&](const kor::ProfileSink& sink) { return visitEdited(text, edit, sink); };
    const bool written = file.open() && text.write(edit.begin, edit.end, visit, put) && file.finish();
    if (!written) return failWithErrno(), Outcome::failed;
    // Editors and other programs take no lock.
    if (!isStill(folder, name, descriptor, former)) return Outcome::again;
    if (file.takePlace()) return Outcome::done;
    if (errno == EEXIST) return Outcome::again;
    return failWithErrno(), Outcome::failed;
}

Outcome changeOnce(const kor::ProfilePath& path, const MakeEdit& makeEdit,
                   kor::ProfileFolder::Deadline deadline) {
    const auto place = kor::profilePlaceOf(path.native());
    if (!place) return kor::failWithErrnoOf(path.native()), Outcome::failed;
    const auto folder = kor::ProfileFolder::lock(place->folder, deadline);
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
    const auto name = kor::ProfileName::of(file);
    const auto path = name ? kor::ProfilePath::find(*name) : std::nullopt;
    if (!path) return FALSE;
    if (path->isFolder()) return failWith(ERROR_ACCESS_DENIED);
    kor::ProfileCache::instance().forgetLarge(*name);
    constexpr int kMostTries = 16;
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    for (int tries = 0; tries < kMostTries; ++tries) {
        const Outcome outcome = changeOnce(*path, makeEdit, deadline);
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
