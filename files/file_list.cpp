// The files of one kind in a folder.
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

#include "files/file_kind.h"
#include "korutil/memory.h"
#include "korutil/path.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

constexpr DWORD kFirstCount = 40;
constexpr DWORD kStep = 10;
constexpr DWORD kByteTag = 3;
constexpr DWORD kLeftOut = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                           FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE;

struct FindCloser {
    void operator()(HANDLE find) const { FindClose(find); }
};
using Find = std::unique_ptr<std::remove_pointer_t<HANDLE>, FindCloser>;

// An arm array of names that null entries follow.
class NameList {
  public:
    NameList() : names_(armAlloc(kFirstCount, sizeof(char*), ARM_TAG_OF_ARRAYS, nullptr)) {}

    char** names() const { return static_cast<char**>(names_); }

    // @return false when memory is short
    bool add(char* name) {
        // One entry more than the name's: the list ends with a null entry.
        if (armGetCount(names_, 0) < count_ + 2 && !armReAlloc(&names_, static_cast<LONG>(count_ + kStep)))
            return false;
        sysBeautifyPathname(name, kPathRoom);
        if (char* dot = std::strrchr(name, '.')) *dot = '\0';
        const auto size = static_cast<DWORD>(std::strlen(name) + 1);
        void* copy = armAlloc(size, 1, kByteTag, nullptr);
        if (!copy) return false;
        std::memcpy(copy, name, size);
        names()[count_++] = static_cast<char*>(copy);
        return true;
    }

  private:
    void* names_;
    DWORD count_ = 0;
};

// The system also finds a file by its short name, whose extension is cut to three characters.
bool hasExtension(std::string_view name, const std::string& extension) {
    if (extension.empty()) return name.find('.') == name.npos;
    if (extension.find_first_of("*?") != extension.npos) return true;
    if (name.size() <= extension.size()) return false;
    const std::size_t dot = name.size() - extension.size() - 1;
    return name[dot] == '.' && lstrcmpiA(name.data() + dot + 1, extension.c_str()) == 0;
}

char** listOf(const FileIoDescription& kind) {
    const std::string extension = textOf(kind, kind.extension);
    std::string pattern = folderOf(kind) + (extension.empty() ? "*" : "*." + extension);
    sysBeautifyPathname(pattern.data(), kPathRoom);
    if (pattern.size() >= kPathRoom) return nullptr;
    WIN32_FIND_DATAA data;
    HANDLE handle = FindFirstFileA(pattern.c_str(), &data);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    const Find find(handle);
    std::unique_ptr<NameList> list;
    do {
        if ((data.dwFileAttributes & kLeftOut) || !hasExtension(data.cFileName, extension)) continue;
        if (!list) list = std::make_unique<NameList>();
        if (!list->names() || !list->add(data.cFileName)) break;
    } while (FindNextFileA(handle, &data));
    return list ? list->names() : nullptr;
}

}  // namespace
}  // namespace kor

char** KORUTIL_CALL io_GetListOfFiles(const FileIoDescription* description) {
    if (!description) return nullptr;
    try {
        const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
        return kor::listOf(*description);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
