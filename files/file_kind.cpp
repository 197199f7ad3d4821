#include "files/file_kind.h"

#include "korutil/path.h"
#include "korutil/profile.h"
#include "platform/last_separator.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"

namespace kor {
namespace {

void close(std::string& folder) {
    if (!folder.empty() && !endsInSeparator(folder, "\\")) folder += '\\';
}

std::string userRootFolder() {
    char folder[kPathRoom] = "";
    return appGetUserRootDir(folder, sizeof folder) ? folder : "";
}

}  // namespace

std::string textOf(const FileIoDescription& kind, const char* textOrNumber) {
    char buffer[kPathRoom];
    const char* text = resolveText(textOrNumber, kind.instance ? kind.instance : resourceModule(), buffer);
    return text ? text : "";
}

std::string folderOf(const FileIoDescription& kind) {
    std::string folder = kind.folder ? textOf(kind, kind.folder) : userRootFolder();
    close(folder);
    folder += textOf(kind, kind.subfolder);
    close(folder);
    return folder;
}

}  // namespace kor
