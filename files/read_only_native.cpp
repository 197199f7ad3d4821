#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>

#include "files/read_only.h"
#include "korutil/platform/name.h"

namespace kor {
namespace {

// An entry of a folder, a link itself, held so that nothing else can come in its place meanwhile.
class HeldEntry {
  public:
    explicit HeldEntry(const char* path) {
        char native[PATH_MAX];
        const DWORD length = korNativePath(path, native, sizeof native);
        if (length > 0 && length < sizeof native) number_ = open(native, O_PATH | O_NOFOLLOW | O_CLOEXEC);
        std::snprintf(name_, sizeof name_, "/proc/self/fd/%d", number_);
    }
    ~HeldEntry() {
        if (number_ >= 0) close(number_);
    }
    HeldEntry(const HeldEntry&) = delete;
    HeldEntry& operator=(const HeldEntry&) = delete;

    // @param mode  receives the rights of a file that nobody may write
    bool isReadOnlyFile(mode_t& mode) const {
        struct stat status {};
        if (number_ < 0 || fstat(number_, &status) != 0) return false;
        mode = status.st_mode & 07777;
        return S_ISREG(status.st_mode) && (mode & 0222) == 0;
    }
    bool setMode(mode_t mode) const { return chmod(name_, mode) == 0; }

  private:
    int number_ = -1;
    char name_[32];
};

}  // namespace

bool removeReadOnly(const char* path, BOOL(WINAPI* remove)(LPCSTR)) {
    const HeldEntry entry(path);
    mode_t mode = 0;
    if (!entry.isReadOnlyFile(mode) || !entry.setMode(mode | 0200)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    const bool removed = remove(path) != FALSE;
    const DWORD code = GetLastError();
    entry.setMode(mode);  // also after the removal: the file may have another name
    SetLastError(code);
    return removed;
}

}  // namespace kor
