#include "cursor.h"

#include <string_view>

namespace korrc {
namespace {

constexpr std::size_t kHeaderSize = 40;
constexpr std::size_t kPaletteSize = 8;
constexpr std::size_t kPlaneSize = kCursorSide * kCursorSide / 8;

// One plane of the picture, bottom row first, a set bit for each point that is one of `characters`.
void plane(Writer& writer, const Picture& picture, std::string_view characters) {
    for (unsigned row = kCursorSide; row-- > 0;) {
        for (unsigned column = 0; column < kCursorSide; column += 8) {
            unsigned bits = 0;
            for (unsigned k = 0; k < 8; ++k) {
                bits = bits << 1 |
                       (characters.find(picture.at(column + k, row)) != std::string_view::npos ? 1u : 0u);
            }
            writer.byte(bits);
        }
    }
}

}  // namespace

const char* Picture::fault() const {
    if (rows.size() > kCursorSide) return "the cursor has too many rows";
    for (const std::string& row : rows) {
        if (row.size() > kCursorSide) return "a row of the cursor is too long";
        if (row.find_first_not_of(". #+/") != std::string::npos)
            return "a row of the cursor has an unknown character";
    }
    return nullptr;
}

char Picture::at(unsigned column, unsigned row) const {
    return row < rows.size() && column < rows[row].size() ? rows[row][column] : '.';
}

Bytes cursorImage(const Picture& picture) {
    Bytes bytes;
    Writer writer(bytes);
    writer.word(picture.x);
    writer.word(picture.y);
    writer.dword(kHeaderSize);
    writer.dword(kCursorSide);
    writer.dword(kCursorSide * 2);  // both planes
    writer.word(1);
    writer.word(1);
    writer.dword(0);
    writer.dword(kPlaneSize * 2);
    writer.padTo(4 + kHeaderSize);
    writer.dword(0);
    writer.dword(0xFFFFFF);
    plane(writer, picture, "+/");
    plane(writer, picture, ". /");
    return bytes;
}

Bytes cursorGroup(unsigned image) {
    Bytes bytes;
    Writer writer(bytes);
    writer.word(0);
    writer.word(2);  // cursors
    writer.word(1);  // one of them
    writer.word(kCursorSide);
    writer.word(kCursorSide * 2);
    writer.word(1);
    writer.word(1);
    writer.dword(4 + kHeaderSize + kPaletteSize + 2 * kPlaneSize);
    writer.word(image);
    return bytes;
}

}  // namespace korrc
