// Drives and the room on them.
#include <linux/magic.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/current_folder.h"
#include "platform/posix/kernel/drive_map.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/text_result.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::failWith;

constexpr std::uint32_t kCifs = 0xFF534D42;
constexpr std::uint32_t kUdf = 0x15013346;

struct FileSystem {
    std::uint32_t magic;
    const char* name;
    UINT type;
};

constexpr FileSystem kFileSystems[] = {
    {EXT4_SUPER_MAGIC, "ext4", DRIVE_FIXED},     {XFS_SUPER_MAGIC, "xfs", DRIVE_FIXED},
    {BTRFS_SUPER_MAGIC, "btrfs", DRIVE_FIXED},   {OVERLAYFS_SUPER_MAGIC, "overlay", DRIVE_FIXED},
    {TMPFS_MAGIC, "tmpfs", DRIVE_RAMDISK},       {MSDOS_SUPER_MAGIC, "vfat", DRIVE_REMOVABLE},
    {NFS_SUPER_MAGIC, "nfs", DRIVE_REMOTE},      {kCifs, "cifs", DRIVE_REMOTE},
    {SMB_SUPER_MAGIC, "smb", DRIVE_REMOTE},      {SMB2_SUPER_MAGIC, "smb2", DRIVE_REMOTE},
    {ISOFS_SUPER_MAGIC, "iso9660", DRIVE_CDROM}, {kUdf, "udf", DRIVE_CDROM},
};

constexpr FileSystem kOther = {0, "native", DRIVE_FIXED};

const FileSystem& fileSystemOf(const struct statfs& status) {
    const auto magic = static_cast<std::uint32_t>(status.f_type);
    const auto* found = std::find_if(std::begin(kFileSystems), std::end(kFileSystems),
                                     [magic](const FileSystem& system) { return system.magic == magic; });
    return found == std::end(kFileSystems) ? kOther : *found;
}

// A null name is the current folder. @return false with the last error set
bool statusOf(LPCSTR name, struct statfs& status) {
    const auto path = kor::resolvePath(name ? name : ".");
    if (!path) return false;
    return statfs(path->native.c_str(), &status) == 0 || kor::failWithErrnoOf(path->native);
}

void setSize(ULARGE_INTEGER* result, std::uint64_t blocks, const struct statfs& status) {
    std::uint64_t size = 0;
    if (__builtin_mul_overflow(blocks, static_cast<std::uint64_t>(status.f_bsize), &size)) size = UINT64_MAX;
    if (result) result->QuadPart = size;
}

void setWord(LPDWORD result, std::uint64_t value) {
    if (result) *result = static_cast<DWORD>(value);
}

}  // namespace

KORPLATFORM_API UINT WINAPI GetDriveTypeA(LPCSTR root) {
    return kor::withMemory(DRIVE_UNKNOWN, [&]() -> UINT {
        struct statfs status {};
        if (root && !*root) return DRIVE_NO_ROOT_DIR;
        return statusOf(root, status) ? fileSystemOf(status).type : DRIVE_NO_ROOT_DIR;
    });
}

KORPLATFORM_API DWORD WINAPI GetLogicalDrives() { return kor::withMemory(0, kor::driveMask); }

KORPLATFORM_API BOOL WINAPI GetDiskFreeSpaceA(LPCSTR root, LPDWORD sectorsPerCluster, LPDWORD bytesPerSector,
                                              LPDWORD freeClusters, LPDWORD clusters) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        constexpr std::uint64_t kSector = 512;
        struct statfs status {};
        if (!statusOf(root, status)) return FALSE;
        std::uint64_t sectors =
            std::max<std::uint64_t>(1, static_cast<std::uint64_t>(status.f_bsize) / kSector);
        std::uint64_t total = status.f_blocks;
        std::uint64_t free = status.f_bavail;
        while (total > std::numeric_limits<DWORD>::max()) {
            sectors *= 2;
            total /= 2;
            free /= 2;
        }
        setWord(sectorsPerCluster, sectors);
        setWord(bytesPerSector, kSector);
        setWord(freeClusters, free);
        setWord(clusters, total);
        return TRUE;
    });
}

KORPLATFORM_API BOOL WINAPI GetDiskFreeSpaceExA(LPCSTR folder, ULARGE_INTEGER* available,
                                                ULARGE_INTEGER* total, ULARGE_INTEGER* free) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        struct statfs status {};
        if (!statusOf(folder, status)) return FALSE;
        setSize(available, status.f_bavail, status);
        setSize(total, status.f_blocks, status);
        setSize(free, status.f_bfree, status);
        return TRUE;
    });
}

KORPLATFORM_API BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR label, DWORD labelSize, LPDWORD serial,
                                                  LPDWORD longestComponent, LPDWORD flags, LPSTR system,
                                                  DWORD systemSize) {
    return kor::withMemory(FALSE, [&]() -> BOOL {
        constexpr DWORD kKeepsCase = 2;
        const auto path = kor::resolvePath(root ? root : "\\");
        if (!path) return FALSE;
        const std::string_view text = root ? root : "\\";
        const bool isRoot = path->full.size() == 3 && (text.back() == '\\' || text.back() == '/');
        if (!isRoot) return failWith(ERROR_DIR_NOT_ROOT);
        struct statfs status {};
        struct statvfs volume {};
        if (statfs(path->native.c_str(), &status) != 0 || statvfs(path->native.c_str(), &volume) != 0) {
            return kor::failWithErrnoOf(path->native);
        }
        const std::string_view name = fileSystemOf(status).name;
        if ((label && labelSize == 0) || (system && systemSize <= name.size()))
            return failWith(ERROR_MORE_DATA);
        if (label) *label = '\0';
        if (system) kor::textResult(name, system, systemSize);
        setWord(serial, volume.f_fsid & 0xFFFFFFFF);
        setWord(longestComponent, static_cast<std::uint64_t>(status.f_namelen));
        setWord(flags, kKeepsCase);
        return TRUE;
    });
}
