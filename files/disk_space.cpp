// Room on the disks, and the system's age.
#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "files/path_form.h"
#include "framework/multibyte.h"
#include "korutil/file_system.h"
#include "korutil/path.h"
#include "platform/last_separator.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

// The root of a full path: its drive's, or its share's with a backslash.
std::string rootOf(std::string_view full) {
    if (!isNetworkPath(full)) return std::string(full.substr(0, 3));
    std::size_t backslashes = 0;
    for (std::size_t at = 2; at < full.size(); at += characterLength(full.substr(at)))
        if (full[at] == '\\' && ++backslashes == 2) return std::string(full.substr(0, at + 1));
    return std::string(full) + '\\';
}

// The folder that a path is in, or is.
std::string folderOf(const char* full) {
    if (sysExistsDir(full)) return full;
    return std::string(full, std::min(lastSeparator(full, "\\") + 1, std::strlen(full)));
}

// Calls the system with the full path of what is there; null is the current folder.
template <typename Ask>
int askFor(const char* path, Ask ask) {
    const ErrorModeScope quiet(kNoErrorBoxes);
    try {
        char full[kPathRoom];
        return sysFullPath(full, path ? path : ".", sizeof full) && sysExistsPath(full) && ask(full);
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
}

void set(ULONGLONG* result, const ULARGE_INTEGER& value) {
    if (result) *result = value.QuadPart;
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysGetDiskFreeSpace(const char* path, DWORD* sectorsPerCluster, DWORD* bytesPerSector,
                                     DWORD* freeClusters, DWORD* clusters) {
    return kor::askFor(path, [&](const char* full) {
        DWORD told[4]{};
        const auto ask = [&told](const std::string& place) {
            return GetDiskFreeSpaceA(place.c_str(), &told[0], &told[1], &told[2], &told[3]) != FALSE;
        };
        // A folder may be on another disk than the root; not every system answers for one.
        if (!ask(kor::folderOf(full)) && !ask(kor::rootOf(full))) return false;
        DWORD* const results[] = {sectorsPerCluster, bytesPerSector, freeClusters, clusters};
        for (std::size_t i = 0; i < 4; ++i)
            if (results[i]) *results[i] = told[i];
        return true;
    });
}

int KORUTIL_CALL sysGetDiskFreeSpaceEx(const char* path, ULONGLONG* available, ULONGLONG* total,
                                       ULONGLONG* free) {
    return kor::askFor(path, [&](const char* full) {
        ULARGE_INTEGER told[3]{};
        if (!GetDiskFreeSpaceExA(kor::folderOf(full).c_str(), &told[0], &told[1], &told[2])) return false;
        kor::set(available, told[0]);
        kor::set(total, told[1]);
        kor::set(free, told[2]);
        return true;
    });
}

int KORUTIL_CALL sysIsWin2000() { return 1; }
