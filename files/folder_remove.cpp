// Removing a folder with all that is in it.
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "files/path_form.h"
#include "files/read_only.h"
#include "framework/multibyte.h"
#include "korutil/file_system.h"
#include "korutil/path.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

bool fail(DWORD code) {
    SetLastError(code);
    return false;
}

bool removeBy(BOOL(WINAPI* remove)(LPCSTR), const char* path) {
    return remove(path) || (GetLastError() == ERROR_ACCESS_DENIED && removeReadOnly(path, remove));
}

bool removeFile(const char* path) { return removeBy(DeleteFileA, path); }

// An empty folder, or a link to a folder: what it leads to stays.
bool removeOne(const char* path) { return removeBy(RemoveDirectoryA, path); }

// The entries of a folder, one by one.
class Entries {
  public:
    explicit Entries(const std::string& folder)
        : find_(FindFirstFileA((folder + "\\*").c_str(), &data_)),
          end_(find_ != INVALID_HANDLE_VALUE ? ERROR_SUCCESS : GetLastError()) {}
    Entries(Entries&& other) noexcept
        : data_(other.data_), find_(std::exchange(other.find_, INVALID_HANDLE_VALUE)), end_(other.end_) {}
    Entries& operator=(Entries&&) = delete;
    ~Entries() {
        if (find_ != INVALID_HANDLE_VALUE) FindClose(find_);
    }

    bool atEnd() const { return end_ != ERROR_SUCCESS; }
    // What kept the folder from being read to its end, or ERROR_SUCCESS.
    DWORD failure() const {
        return end_ == ERROR_NO_MORE_FILES || end_ == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : end_;
    }
    void next() { end_ = FindNextFileA(find_, &data_) ? ERROR_SUCCESS : GetLastError(); }
    const char* name() const { return data_.cFileName; }
    bool isFolder() const { return data_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY; }
    bool isOwnName() const { return std::strcmp(name(), ".") == 0 || std::strcmp(name(), "..") == 0; }

  private:
    WIN32_FIND_DATAA data_{};
    HANDLE find_;
    DWORD end_;  // why there is no entry
};

// Folders within folders are kept in a list of their own, not on the stack.
class Removal {
  public:
    explicit Removal(std::string folder) : path_(std::move(folder)) {}

    bool run() {
        if (!enter()) return false;
        while (!open_.empty())
            if (!step()) return false;
        return true;
    }

  private:
    struct Open {
        Entries entries;
        std::size_t nameStart;  // how long the path of the folder above was
    };

    // Removes what `path_` leads to, or else begins with its entries.
    bool enter(std::size_t nameStart = 0) {
        if (removeOne(path_.c_str())) {
            path_.resize(nameStart);
            return true;
        }
        if (GetLastError() != ERROR_DIR_NOT_EMPTY) return false;
        open_.push_back({Entries(path_), nameStart});
        return true;
    }

    // One entry of the innermost folder, or its end.
    bool step() {
        Entries& entries = open_.back().entries;
        if (entries.atEnd()) return leave();
        const std::size_t length = path_.size();
        const bool isFolder = entries.isFolder();
        const bool isOwn = entries.isOwnName();
        if (!isOwn) path_.append("\\").append(entries.name());
        entries.next();  // not later: the list may move
        if (isOwn) return true;
        if (isFolder) return enter(length);
        if (!removeFile(path_.c_str())) return false;
        path_.resize(length);
        return true;
    }

    bool leave() {
        if (const DWORD code = open_.back().entries.failure()) return fail(code);
        const std::size_t nameStart = open_.back().nameStart;
        open_.pop_back();
        if (!removeOne(path_.c_str())) return false;
        path_.resize(nameStart);
        return true;
    }

    std::string path_;
    std::vector<Open> open_;
};

// Whether nothing stands above the folder that a program should remove: a drive's root, a network's share.
bool isTop(std::string_view folder) {
    if (!isNetworkPath(folder)) return isRootFolder(folder);
    std::size_t backslashes = 0;
    for (std::size_t at = 2; at < folder.size(); at += characterLength(folder.substr(at)))
        backslashes += folder[at] == '\\';
    return backslashes < 2;
}

bool removeTree(const char* path) {
    char full[kPathRoom];
    if (!sysFullPath(full, path, sizeof full)) return false;
    if (isTop(full)) return fail(ERROR_ACCESS_DENIED);
    sysDeleteBackslash(full);
    if (isTop(full)) return fail(ERROR_ACCESS_DENIED);
    return Removal(full).run();
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysRemoveDir(const char* path) {
    try {
        const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
        return path ? kor::removeTree(path) : kor::fail(ERROR_INVALID_PARAMETER);
    } catch (const std::bad_alloc&) {
        return kor::fail(ERROR_NOT_ENOUGH_MEMORY);
    }
}
