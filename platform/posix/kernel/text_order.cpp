// Word order of texts.
#include <algorithm>
#include <compare>
#include <cstring>
#include <string>
#include <string_view>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/letter_case.h"
#include "platform/posix/kernel/text.h"

namespace {

using kor::CodePage;

// Signs before digits before letters; what is not here follows by its number.
constexpr std::u32string_view kFirst = U" !\"#$%&()*,./:;?@[\\]^_`{|}~+<=>0123456789";

// The letters under the accents of U+00C0 to U+00FF, small; a blank where there is none.
constexpr std::string_view kBaseLetters =
    "aaaaaa ceeeeiiiidnooooo ouuuuy  "
    "aaaaaa ceeeeiiiidnooooo ouuuuy y";

// Hyphen and apostrophe only count when all else is equal.
bool isIgnored(char32_t character) { return character == U'-' || character == U'\''; }

char32_t small(char32_t character) {
    return character < 0x10000 ? kor::lowerCase(static_cast<char16_t>(character)) : character;
}

// The first level: the same for a letter in both cases and with its accents.
char32_t primaryWeight(char32_t character) {
    const std::size_t sign = kFirst.find(character);
    if (sign != kFirst.npos) return static_cast<char32_t>(0x20 + sign);
    char32_t letter = small(character);
    if (letter >= 0xC0 && letter <= 0xFF && kBaseLetters[letter - 0xC0] != ' ') {
        letter = static_cast<unsigned char>(kBaseLetters[letter - 0xC0]);
    }
    return letter < 0x20 ? letter : letter + 0x100;
}

std::u32string charactersOf(std::string_view text) {
    const CodePage& page = kor::ansiPage();
    std::u32string characters;
    characters.reserve(text.size());
    while (!text.empty()) {
        const CodePage::Character next = page.decode(text);
        characters.push_back(next.character);
        text.remove_prefix(next.length);
    }
    return characters;
}

template <typename Weight>
int compareBy(std::u32string_view first, std::u32string_view second, Weight weight) {
    const auto order = std::lexicographical_compare_three_way(
        first.begin(), first.end(), second.begin(), second.end(),
        [weight](char32_t one, char32_t other) { return weight(one) <=> weight(other); });
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int compareTexts(std::string_view firstText, std::string_view secondText, bool ignoreCase) {
    const std::u32string first = charactersOf(firstText);
    const std::u32string second = charactersOf(secondText);
    std::u32string firstWords = first;
    std::u32string secondWords = second;
    std::erase_if(firstWords, isIgnored);
    std::erase_if(secondWords, isIgnored);
    if (const int order = compareBy(firstWords, secondWords, primaryWeight)) return order;
    if (const int order = compareBy(firstWords, secondWords, small)) return order;
    const auto capital = [](char32_t character) { return small(character) != character; };
    if (!ignoreCase) {
        if (const int order = compareBy(firstWords, secondWords, capital)) return order;
    }
    // All is equal but for the ignored signs: the text whose sign comes first is the later one.
    return compareBy(first, second, isIgnored);
}

std::string_view textOf(LPCSTR text, int length) {
    return {text, length < 0 ? std::strlen(text) : static_cast<std::size_t>(length)};
}

int compareTerminated(LPCSTR first, LPCSTR second, bool ignoreCase) {
    if (!first || !second) return (first != nullptr) - (second != nullptr);
    return compareTexts(first, second, ignoreCase);
}

}  // namespace

KORPLATFORM_API int WINAPI lstrcmpA(LPCSTR first, LPCSTR second) {
    return compareTerminated(first, second, false);
}

KORPLATFORM_API int WINAPI lstrcmpiA(LPCSTR first, LPCSTR second) {
    return compareTerminated(first, second, true);
}

KORPLATFORM_API int WINAPI CompareStringA(LCID, DWORD flags, LPCSTR first, int firstLength, LPCSTR second,
                                          int secondLength) {
    if (!first || !second) return kor::failWith(ERROR_INVALID_PARAMETER);
    if (flags & ~NORM_IGNORECASE) return kor::failWith(ERROR_INVALID_FLAGS);
    return CSTR_EQUAL + compareTexts(textOf(first, firstLength), textOf(second, secondLength), flags != 0);
}
