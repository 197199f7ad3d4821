// Characters that differ between settings and between code pages.

#include <string_view>

#include "framework/bounded_text.h"
#include "framework/multibyte.h"
#include "korutil/text.h"
#include "platform/win32.h"
#include "runtime/regional_settings.h"

namespace kor {
namespace {

constexpr UINT kWesternPage = 1252;

struct SpecialCharacter {
    char western;  // in code page 1252
    char plain;
};
constexpr SpecialCharacter kSpecialCharacters[] = {
    {'\xB5', 'u'}, {'\xB2', '2'}, {'\xB3', '3'}, {'\xB0', 'o'}, {'\xC5', 'A'}};

// Calls function(place, length) for each character; it may change the first byte.
template <class Function>
void forEachCharacter(char* text, Function function) {
    for (std::string_view rest(text); !rest.empty();) {
        const std::size_t length = characterLength(rest);
        char* const place = text + (rest.data() - text);
        rest.remove_prefix(length);
        function(place, length);
    }
}

void replaceCharacter(char* text, char from, char to) {
    forEachCharacter(text, [=](char* place, std::size_t length) {
        if (length == 1 && *place == from) *place = to;
    });
}

// Byte by byte: the text is one of code page 1252, whatever its bytes look like here.
void reduceSpecials(char* text) {
    for (; *text; ++text)
        for (const SpecialCharacter& special : kSpecialCharacters)
            if (*text == special.western) *text = special.plain;
}

// Also letters and digits that were never special: unit texts were reduced before they come here.
void restoreSpecials(char* text) {
    forEachCharacter(text, [](char* place, std::size_t length) {
        if (length > 1) return;
        for (const SpecialCharacter& special : kSpecialCharacters) {
            if (*place != special.plain) continue;
            *place = special.western;
            return;
        }
    });
}

void appendFromWestern(BoundedText& target, char character) {
    WCHAR wide;
    char converted[8];
    if (MultiByteToWideChar(kWesternPage, 0, &character, 1, &wide, 1) != 1) return;
    const int length =
        WideCharToMultiByte(CP_ACP, 0, &wide, 1, converted, sizeof converted, nullptr, nullptr);
    if (length > 0) target.append({converted, static_cast<std::size_t>(length)});
}

}  // namespace
}  // namespace kor

using namespace kor;

void KORUTIL_CALL strHandleDecimal(char* text, BOOL toLocal) {
    const char decimal = regionalSettings().decimal;
    if (!text || decimal == '.') return;
    replaceCharacter(text, toLocal ? '.' : decimal, toLocal ? decimal : '.');
}

void KORUTIL_CALL strHandleCharExtension(char* text, BOOL reduce) {
    if (!text || GetACP() == kWesternPage) return;
    if (reduce)
        reduceSpecials(text);
    else
        restoreSpecials(text);
}

char* KORUTIL_CALL strMapUniCharsX(const char* source, char* destination, DWORD size) {
    BoundedText target(destination, size);
    const std::string_view text = source ? source : "";
    if (!GetSystemMetrics(SM_DBCSENABLED)) {
        target.append(text);
        return destination;
    }
    for (const char character : text)
        appendFromWestern(target, character);
    return destination;
}
