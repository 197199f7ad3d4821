#include "tools/korutil/long_text.h"

#include "tools/korutil/code_page.h"

namespace kor::command {
namespace {

constexpr std::size_t kPieceSize = 16 * 1024;
constexpr std::size_t kMostShown = 200;

// Whether a backslash at the end may belong to what oneLine must see as a whole: \xNN.
bool endsInEscape(std::string_view bytes) {
    return bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), 3)).find('\\') !=
           std::string_view::npos;
}

// Takes whole characters off the front.
std::string_view takePiece(std::string_view& rest, std::size_t least) {
    std::size_t length = 0;
    while (length < rest.size() && (length < least || endsInEscape(rest.substr(0, length))))
        length += code_page::firstOf(rest.substr(length)).length;
    const std::string_view piece = rest.substr(0, length);
    rest.remove_prefix(piece.size());
    return piece;
}

}  // namespace

void writeText(Output& output, std::string_view bytes) {
    while (!bytes.empty())
        output.write(code_page::toUtf8(takePiece(bytes, kPieceSize)));
}

void writeLine(Output& output, std::string_view bytes) {
    while (!bytes.empty())
        output.write(oneLine(code_page::toUtf8(takePiece(bytes, kPieceSize))));
}

void writeJsonText(Output& output, std::string_view bytes) {
    output.write("\"");
    while (!bytes.empty()) {
        const std::string piece = code_page::quoted(code_page::decode(takePiece(bytes, kPieceSize)));
        output.write(std::string_view(piece).substr(1, piece.size() - 2));
    }
    output.write("\"");
}

std::string shownStart(std::string_view bytes) {
    const std::string_view start = takePiece(bytes, kMostShown);
    return code_page::toUtf8(start) + (bytes.empty() ? "" : " ...");
}

}  // namespace kor::command
