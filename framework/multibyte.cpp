#include "framework/multibyte.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/win32.h"

namespace kor {
namespace {

// The code page does not change while a process runs.
struct CodePage {
    bool utf8 = false;
    bool oneByte = true;
    std::array<std::uint8_t, 256> lengths{};  // of a character, by its first byte

    CodePage() : utf8(GetACP() == CP_UTF8) {
        for (unsigned byte = 0; byte < lengths.size(); ++byte)
            lengths[byte] = lengthFor(static_cast<BYTE>(byte));
        oneByte =
            std::all_of(lengths.begin(), lengths.end(), [](std::uint8_t length) { return length == 1; });
    }

    std::uint8_t lengthFor(BYTE first) const {
        if (!utf8) return IsDBCSLeadByte(first) ? 2 : 1;
        if (first < 0xC2 || first > 0xF4) return 1;
        return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    }
};

const CodePage& codePage() {
    static const CodePage page;
    return page;
}

bool continuesSequence(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

bool oneBytePerCharacter() { return codePage().oneByte; }

std::size_t characterLength(std::string_view text) {
    if (text.empty()) return 0;
    const CodePage& page = codePage();
    const std::size_t length = page.lengths[static_cast<unsigned char>(text[0])];
    if (length == 1) return 1;
    // A zero ends the text, also behind a lead byte.
    if (length > text.size() || text[1] == '\0') return 1;
    if (page.utf8 &&
        !std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length), continuesSequence))
        return 1;
    return length;
}

}  // namespace kor
