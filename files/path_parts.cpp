// Paths taken apart and put together.
#include <algorithm>
#include <new>
#include <string>
#include <string_view>

#include "files/text_buffer.h"
#include "korutil/path.h"
#include "platform/last_separator.h"

namespace kor {
namespace {

constexpr std::string_view kSeparators = "\\/";

struct Piece {
    std::string_view text;
    char* buffer;
    DWORD size;
};

bool fits(const Piece& piece) { return !piece.buffer || piece.text.size() < piece.size; }

std::string_view textOf(const char* piece) { return piece ? piece : std::string_view(); }

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysSplitPathEx(const char* path, char* drive, DWORD driveSize, char* folder,
                                DWORD folderSize, char* name, DWORD nameSize, char* extension,
                                DWORD extensionSize) {
    if (!path) return 0;
    std::string_view rest(path);
    const auto take = [&rest](std::size_t length) {
        const std::string_view piece = rest.substr(0, length);
        rest.remove_prefix(length);
        return piece;
    };
    const kor::Piece drivePiece{take(rest.size() >= 2 && rest[1] == ':' ? 2 : 0), drive, driveSize};
    const std::size_t separator = kor::lastSeparator(rest, kor::kSeparators);
    const kor::Piece folderPiece{take(separator == rest.npos ? 0 : separator + 1), folder, folderSize};
    const kor::Piece namePiece{take(std::min(rest.rfind('.'), rest.size())), name, nameSize};
    const kor::Piece extensionPiece{rest, extension, extensionSize};
    for (const auto& piece : {drivePiece, folderPiece, namePiece, extensionPiece})
        if (!kor::fits(piece)) return 0;
    for (const auto& piece : {drivePiece, folderPiece, namePiece, extensionPiece})
        kor::copyWhole(piece.text, piece.buffer, piece.size);
    return 1;
}

int KORUTIL_CALL sysMakePathEx(char* path, DWORD size, const char* drive, const char* folder,
                               const char* name, const char* extension) {
    if (!path) return 0;
    try {
        std::string made;
        if (const auto text = kor::textOf(drive); !text.empty()) made = {text[0], ':'};
        const auto folderText = kor::textOf(folder);
        made += folderText;
        if (!folderText.empty() && !kor::endsInSeparator(folderText, kor::kSeparators)) made += '\\';
        made += kor::textOf(name);
        const auto extensionText = kor::textOf(extension);
        if (!extensionText.empty() && extensionText[0] != '.') made += '.';
        made += extensionText;
        return kor::copyWhole(made, path, size);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
