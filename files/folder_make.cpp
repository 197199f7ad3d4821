// Making folders, and the current one.
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "files/path_form.h"
#include "korutil/file_system.h"
#include "korutil/path.h"
#include "platform/last_separator.h"
#include "platform/win32.h"
#include "runtime/error_mode.h"

namespace kor {
namespace {

constexpr std::string_view kSeparators = "\\/";

int failed(DWORD code) {
    SetLastError(code);
    return 0;
}

bool isFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeOne(const std::string& folder) {
    if (CreateDirectoryA(folder.c_str(), nullptr)) return true;
    // Another process may have made it meanwhile.
    const DWORD code = GetLastError();
    if (isFolder(folder)) return true;
    SetLastError(code);
    return false;
}

// The end of the folder above, 0 when there is none that could be made.
std::size_t endOfParent(std::string_view path) {
    while (endsInSeparator(path, kSeparators))
        path.remove_suffix(1);
    const std::size_t separator = lastSeparator(path, kSeparators);
    return separator == path.npos ? 0 : separator;
}

// Looks upwards for a folder that is there, then makes those below it, the uppermost one first. The path has
// no more than 259 characters, and so not many folders.
int makeWithParents(const std::string& path) {
    std::vector<std::string> missing;
    for (std::string folder = path; !folder.empty() && !isRootFolder(folder) && !isFolder(folder);
         folder.resize(endOfParent(folder))) {
        missing.push_back(folder);
    }
    for (; !missing.empty(); missing.pop_back())
        if (!makeOne(missing.back())) return 0;
    return isFolder(path) ? 1 : failed(ERROR_PATH_NOT_FOUND);
}

int changeTo(const char* folder, bool driveMeansRoot) {
    if (!folder) return failed(ERROR_INVALID_PARAMETER);
    try {
        std::string text(folder);
        const bool isDrive = text.size() == 2 && hasDrive(text);
        if (isDrive ? driveMeansRoot : endsInSeparator(text, "\\")) {
            text += '\0';  // room for a root's backslash
            sysMakeCommdlgDir(text.data());
        }
        const ErrorModeScope quiet(kNoErrorBoxes);
        return SetCurrentDirectoryA(text.c_str()) != FALSE;
    } catch (const std::bad_alloc&) {
        return failed(ERROR_NOT_ENOUGH_MEMORY);
    }
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysMakeDir(const char* path) {
    if (!path || !*path) return kor::failed(ERROR_PATH_NOT_FOUND);
    if (std::strlen(path) >= kPathRoom) return kor::failed(ERROR_FILENAME_EXCED_RANGE);
    if (sysIsReservedFileName(path)) return kor::failed(ERROR_INVALID_NAME);
    try {
        const kor::ErrorModeScope quiet(kor::kNoErrorBoxes);
        return kor::makeWithParents(path);
    } catch (const std::bad_alloc&) {
        return kor::failed(ERROR_NOT_ENOUGH_MEMORY);
    }
}

int KORUTIL_CALL sysChDir(const char* folder) { return kor::changeTo(folder, false); }

int KORUTIL_CALL sysChDriveDir(const char* folder) { return kor::changeTo(folder, true); }
