#include "platform/posix/kernel/profile_rights.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <vector>

namespace kor {
namespace {

constexpr const char* kAccessList = "system.posix_acl_access";

bool hasAccessList(int file) { return fgetxattr(file, kAccessList, nullptr, 0) > 0; }

// Those that may not be copied, or not be set here, are left out.
void copyAttributes(int from, int to, bool withAccessList) {
    std::vector<char> names(65536);
    const ssize_t length = flistxattr(from, names.data(), names.size());
    if (length <= 0) return;
    std::vector<char> value(65536);
    const std::string_view list(names.data(), static_cast<std::size_t>(length));
    for (std::size_t begin = 0; begin < list.size(); begin = list.find('\0', begin) + 1) {
        const char* const name = list.data() + begin;
        if (!withAccessList && std::string_view(name) == kAccessList) continue;
        const ssize_t size = fgetxattr(from, name, value.data(), value.size());
        if (size >= 0) fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

// Members of the former group are others now, and members of the new one were.
mode_t modeWithoutGroup(const struct stat& former, bool hadAccessList) {
    const mode_t both = hadAccessList ? 0 : (former.st_mode >> 3) & former.st_mode & 07;
    return (former.st_mode & 01700) | both << 3 | both;
}

}  // namespace

bool takeOverRights(int from, int to) {
    struct stat own {};
    struct stat former {};
    if (fstat(to, &own) != 0 || fstat(from, &former) != 0) return false;
    const bool sameOwner = own.st_uid == former.st_uid;
    bool sameGroup = own.st_gid == former.st_gid;
    if (!sameOwner || !sameGroup) {
        const bool given = fchown(to, former.st_uid, former.st_gid) == 0;
        // EINVAL: a group that is unknown in this name space of users.
        if (!given && !(sameOwner && (errno == EPERM || errno == EINVAL))) return false;
        sameGroup = given;
    }
    const bool hadAccessList = hasAccessList(from);
    copyAttributes(from, to, sameGroup);
    // The folder may have given it one, which the mode would let count.
    if (!hadAccessList || !sameGroup) fremovexattr(to, kAccessList);
    return fchmod(to, sameGroup ? former.st_mode & 07777 : modeWithoutGroup(former, hadAccessList)) == 0;
}

}  // namespace kor
