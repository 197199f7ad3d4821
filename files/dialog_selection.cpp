// The pieces of what a file dialog was given and leaves.
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "files/text_buffer.h"
#include "framework/multibyte.h"
#include "korutil/file_dialog.h"
#include "platform/last_separator.h"

namespace kor {
namespace {

// Where the next `|` stands; npos for none.
std::size_t nextBar(std::string_view text) {
    for (std::size_t at = 0; at < text.size(); at += characterLength(text.substr(at)))
        if (text[at] == '|') return at;
    return text.npos;
}

// Walks over pieces that end in a `|` or in the text's end.
bool takeBarred(std::string_view& rest, std::string_view& piece) {
    if (rest.empty()) return false;
    const std::size_t bar = nextBar(rest);
    piece = rest.substr(0, bar);
    rest = bar == rest.npos ? std::string_view() : rest.substr(bar + 1);
    return true;
}

// Walks over texts that one more zero ends.
bool takeListed(const char*& rest, std::string_view& piece) {
    if (!*rest) return false;
    piece = rest;
    rest += piece.size() + 1;
    return true;
}

// The second piece of the pair of that number, from 1.
template <typename Take>
int deliverPatterns(DWORD index, char* buffer, DWORD size, Take take) {
    std::string_view name, patterns;
    for (DWORD entry = 1; take(name) && take(patterns); ++entry)
        if (entry == index) return copyWhole(patterns, buffer, size);
    return 0;
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysGetSelectedFilter(const char* filter, DWORD index, char* buffer, DWORD size) {
    if (!filter) return 0;
    std::string_view barred(filter);
    if (kor::nextBar(barred) != barred.npos) {
        return kor::deliverPatterns(index, buffer, size,
                                    [&](std::string_view& piece) { return kor::takeBarred(barred, piece); });
    }
    return kor::deliverPatterns(index, buffer, size,
                                [&](std::string_view& piece) { return kor::takeListed(filter, piece); });
}

int KORUTIL_CALL sysGetSelectedFileName(const char* selection, DWORD index, char* buffer, DWORD size) {
    if (!selection) return 0;
    std::string_view folder, name;
    if (!kor::takeListed(selection, folder)) return 0;
    bool more = kor::takeListed(selection, name);
    if (!more) return index == 0 ? kor::copyWhole(folder, buffer, size) : 0;
    for (DWORD file = 0; more; ++file, more = kor::takeListed(selection, name)) {
        if (file != index) continue;
        try {
            std::string path(folder);
            if (!kor::endsInSeparator(path, "\\")) path += '\\';
            return kor::copyWhole(path.append(name), buffer, size);
        } catch (const std::bad_alloc&) {
            return 0;
        }
    }
    return 0;
}
