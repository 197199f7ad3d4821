// Texts made into paths that a folder can have.
#include <algorithm>
#include <new>
#include <string>
#include <string_view>

#include "files/path_form.h"
#include "files/text_buffer.h"
#include "framework/multibyte.h"
#include "korutil/path.h"
#include "platform/win32.h"

namespace kor {
namespace {

bool isOwnName(std::string_view component) { return component == "." || component == ".."; }

// One component as a folder can have it; empty when nothing is left of it.
std::string validComponent(std::string_view component) {
    if (isOwnName(component)) return std::string(component);
    std::string valid;
    for (std::size_t length; !component.empty(); component.remove_prefix(length)) {
        length = characterLength(component);
        const auto first = static_cast<unsigned char>(component[0]);
        const bool stays = length > 1 || (first >= 0x20 && sysIsValidFileNameChar(first));
        valid.append(stays ? component.substr(0, length) : "_");
    }
    // No byte below 0x40 is ever the second one of a character.
    valid.erase(valid.find_last_not_of(" .") + 1);
    if (sysIsReservedFileName(valid.c_str())) valid.insert(0, 1, '_');
    return valid;
}

bool isSeparator(char character) { return character == '\\' || character == '/'; }

std::string validFolder(std::string_view path) {
    const bool network = path.size() >= 2 && path.find_first_not_of("\\/") >= 2;
    const std::size_t drive = hasDrive(path) ? 2 : 0;
    std::string folder(network ? "\\\\" : path.substr(0, drive));
    path.remove_prefix(drive);
    if (!network && !path.empty() && isSeparator(path[0])) folder += '\\';
    for (std::size_t start = 0, at = 0; at <= path.size();) {
        const char next = at < path.size() ? path[at] : '\\';
        if (isSeparator(next)) {
            const std::string component = validComponent(path.substr(start, at - start));
            if (!component.empty()) folder += component + '\\';
            start = at + 1;
        }
        at += std::max<std::size_t>(1, characterLength(path.substr(at)));
    }
    if (folder.size() == 2 && hasDrive(folder)) {
        folder += '\\';
    } else if (folder.size() > 1 && !isRootFolder(folder)) {
        folder.pop_back();
    }
    return folder;
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysMakeValidDirPath(char* path, DWORD size) {
    if (!path) return 0;
    try {
        const std::string folder = kor::validFolder(path);
        return folder.empty() ? 0 : kor::copyWhole(folder, path, std::min(size, kPathRoom));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
