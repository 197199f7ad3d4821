// A readable letter case for short names in capitals.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "framework/multibyte.h"
#include "korutil/path.h"
#include "platform/win32.h"

namespace kor {
namespace {

bool isLowerCase(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (first < 0x80) return first >= 'a' && first <= 'z';
    if (character.size() == 1) return IsCharLowerA(character[0]) != FALSE;
    char upper[4];
    std::memcpy(upper, character.data(), character.size());
    CharUpperBuffA(upper, static_cast<DWORD>(character.size()));
    return std::memcmp(upper, character.data(), character.size()) != 0;
}

bool isShortName(std::string_view name) {
    constexpr std::size_t kLongest = 12, kLongestStem = 8, kLongestExtension = 3;
    if (name.empty() || name.size() > kLongest) return false;
    const std::size_t dot = name.rfind('.');
    if (dot == name.npos) return name.size() <= kLongestStem;
    return dot <= kLongestStem && name.size() - dot - 1 <= kLongestExtension;
}

void capitalise(char* name, std::size_t length) {
    const std::size_t first = characterLength({name, length});
    CharLowerBuffA(name + first, static_cast<DWORD>(length - first));
    CharUpperBuffA(name, static_cast<DWORD>(first));
}

void beautify(char* path) {
    const std::string_view text(path);
    std::size_t start = 0;
    bool hasLower = false;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t length = characterLength(text.substr(at));
        const char next = at < text.size() ? text[at] : '\\';
        if (next == '\\' || next == '/' || next == ':') {
            const bool changes = next != ':' && !hasLower && isShortName(text.substr(start, at - start));
            if (changes) capitalise(path + start, at - start);
            start = at + 1;
            hasLower = false;
        } else {
            hasLower = hasLower || isLowerCase(text.substr(at, length));
        }
        at += std::max<std::size_t>(1, length);
    }
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysBeautifyPathname(char* path, DWORD) {
    if (!path) return 0;
    kor::beautify(path);
    return 1;
}
