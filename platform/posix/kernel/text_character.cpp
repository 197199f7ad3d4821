// Walking texts of the ANSI code page, letter case, and the plain text functions.
#include <cstring>
#include <string_view>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/letter_case.h"
#include "platform/posix/kernel/text.h"

namespace {

using kor::CodePage;

using CaseMapping = char16_t (*)(char16_t);

// A capital that takes another number of bytes stays small, so that a text keeps its length.
void changeCase(char* text, std::size_t length, CaseMapping mapping) {
    const CodePage& page = kor::ansiPage();
    for (std::string_view rest(text, length); !rest.empty();) {
        const CodePage::Character next = page.decode(rest);
        if (next.valid && next.character < 0x10000) {
            char bytes[4];
            const std::size_t size = page.encode(mapping(static_cast<char16_t>(next.character)), bytes);
            if (size == next.length) std::memcpy(text + (rest.data() - text), bytes, size);
        }
        rest.remove_prefix(next.length);
    }
}

LPSTR changeTextOrCharacter(LPSTR text, CaseMapping mapping) {
    if (!text) return nullptr;
    if (!IS_INTRESOURCE(text)) {
        changeCase(text, std::strlen(text), mapping);
        return text;
    }
    // Of a character given as a number only the low byte counts: required, as the system does so.
    char byte = static_cast<char>(reinterpret_cast<ULONG_PTR>(text) & 0xFF);
    changeCase(&byte, 1, mapping);
    return reinterpret_cast<LPSTR>(static_cast<ULONG_PTR>(static_cast<unsigned char>(byte)));
}

char16_t unitOf(CHAR character) {
    const CodePage::Character decoded = kor::ansiPage().decode({&character, 1});
    return decoded.valid ? static_cast<char16_t>(decoded.character) : u'\0';
}

bool isUpper(char16_t unit) { return kor::lowerCase(unit) != unit; }

// Besides the letters with capitals: those without, as the system counts them.
bool isLower(char16_t unit) {
    constexpr std::u16string_view kWithoutCapital = u"\u00AA\u00B5\u00BA\u00DF\u0192";
    return kor::upperCase(unit) != unit || kWithoutCapital.find(unit) != kWithoutCapital.npos;
}

bool isAlpha(char16_t unit) {
    const bool caseless = unit == 0x02C6 || (unit >= 0xFF66 && unit <= 0xFF9F);
    return unit != 0 && (isUpper(unit) || isLower(unit) || caseless);
}

bool isDigit(char16_t unit) {
    return (unit >= u'0' && unit <= u'9') || unit == 0x00B2 || unit == 0x00B3 || unit == 0x00B9;
}

}  // namespace

KORPLATFORM_API LPSTR WINAPI CharNextA(LPCSTR current) {
    if (!current || !*current) return const_cast<LPSTR>(current);
    const bool pair = current[1] && IsDBCSLeadByte(static_cast<BYTE>(*current));
    return const_cast<LPSTR>(current + (pair ? 2 : 1));
}

KORPLATFORM_API LPSTR WINAPI CharPrevA(LPCSTR start, LPCSTR current) {
    // Only a walk from the start tells a trail byte from a character of its own.
    while (*start && start < current) {
        LPCSTR next = CharNextA(start);
        if (next >= current) break;
        start = next;
    }
    return const_cast<LPSTR>(start);
}

KORPLATFORM_API LPSTR WINAPI CharUpperA(LPSTR text) { return changeTextOrCharacter(text, kor::upperCase); }

KORPLATFORM_API LPSTR WINAPI CharLowerA(LPSTR text) { return changeTextOrCharacter(text, kor::lowerCase); }

KORPLATFORM_API DWORD WINAPI CharUpperBuffA(LPSTR text, DWORD length) {
    if (!text) return 0;
    changeCase(text, length, kor::upperCase);
    return length;
}

KORPLATFORM_API DWORD WINAPI CharLowerBuffA(LPSTR text, DWORD length) {
    if (!text) return 0;
    changeCase(text, length, kor::lowerCase);
    return length;
}

KORPLATFORM_API BOOL WINAPI IsCharAlphaA(CHAR character) { return isAlpha(unitOf(character)); }

KORPLATFORM_API BOOL WINAPI IsCharAlphaNumericA(CHAR character) {
    return isAlpha(unitOf(character)) || isDigit(unitOf(character));
}

KORPLATFORM_API BOOL WINAPI IsCharUpperA(CHAR character) { return isUpper(unitOf(character)); }

KORPLATFORM_API BOOL WINAPI IsCharLowerA(CHAR character) { return isLower(unitOf(character)); }

KORPLATFORM_API int WINAPI lstrlenA(LPCSTR text) { return text ? static_cast<int>(std::strlen(text)) : 0; }

KORPLATFORM_API LPSTR WINAPI lstrcpynA(LPSTR target, LPCSTR source, int size) {
    if (!target || !source) return nullptr;
    if (size <= 0) return target;
    const std::size_t length = strnlen(source, static_cast<std::size_t>(size) - 1);
    std::memmove(target, source, length);
    target[length] = '\0';
    return target;
}

KORPLATFORM_API LPSTR WINAPI lstrcpyA(LPSTR target, LPCSTR source) {
    if (!target || !source) return nullptr;
    std::memmove(target, source, std::strlen(source) + 1);
    return target;
}

KORPLATFORM_API LPSTR WINAPI lstrcatA(LPSTR target, LPCSTR source) {
    if (!target || !source) return nullptr;
    lstrcpyA(target + std::strlen(target), source);
    return target;
}
