#include "runtime/folder_form.h"

#include "platform/win32.h"

namespace kor {
namespace {

bool isDriveLetter(char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
}

// The second byte of a double-byte character may look like a backslash, so the text is walked from its start.
std::size_t lastBackslash(const std::string& text) {
    std::size_t found = std::string::npos;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsDBCSLeadByte(static_cast<BYTE>(text[i]))) {
            ++i;
        } else if (text[i] == '\\') {
            found = i;
        }
    }
    return found;
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
    const bool closed = !folder.empty() && lastBackslash(folder) == folder.size() - 1;
    if (isRoot(folder)) {
        if (!closed) folder += '\\';
    } else if (closed) {
        folder.pop_back();
    }
}

std::string folderOf(const std::string& fileName) {
    const std::size_t end = lastBackslash(fileName);
    return end == std::string::npos ? std::string() : fileName.substr(0, end);
}

}  // namespace kor
