#include "runtime/folder_form.h"

#include "platform/last_separator.h"

namespace kor {
namespace {

bool isDriveLetter(char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
}

bool isRoot(std::string_view folder) {
    if (folder == "\\\\") return true;
    if (folder.size() < 2 || !isDriveLetter(folder[0]) || folder[1] != ':') return false;
    return folder.size() == 2 || (folder.size() == 3 && folder[2] == '\\');
}

}  // namespace

bool isAbsolutePath(std::string_view path) {
    if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') return true;
    return path.size() >= 3 && isDriveLetter(path[0]) && path[1] == ':' && path[2] == '\\';
}

void normaliseFolder(std::string& folder) {
    const bool closed = endsInSeparator(folder, "\\");
    if (isRoot(folder)) {
        if (!closed) folder += '\\';
    } else if (closed) {
        folder.pop_back();
    }
}

std::string folderOf(const std::string& fileName) {
    const std::size_t end = lastSeparator(fileName, "\\");
    return end == std::string::npos ? std::string() : fileName.substr(0, end);
}

}  // namespace kor
