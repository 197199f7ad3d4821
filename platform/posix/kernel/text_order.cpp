// Word order of texts.
#include <compare>
#include <cstring>
#include <optional>
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

// A text character by character. A comparison cannot fail, so nothing is decoded into memory.
class Characters {
  public:
    Characters(std::string_view text, bool withIgnored) : rest_(text), withIgnored_(withIgnored) {}

    std::optional<char32_t> next() {
        while (!rest_.empty()) {
            const CodePage::Character found = page_.decode(rest_);
            rest_.remove_prefix(found.length);
            if (withIgnored_ || !isIgnored(found.character)) return found.character;
        }
        return std::nullopt;
    }

  private:
    const CodePage& page_ = kor::ansiPage();
    std::string_view rest_;
    bool withIgnored_;
};

template <typename Weight>
int compareBy(Characters first, Characters second, Weight weight) {
    for (;;) {
        const auto one = first.next();
        const auto other = second.next();
        if (!one || !other) return one.has_value() - other.has_value();
        if (const auto order = weight(*one) <=> weight(*other); order != 0) return order < 0 ? -1 : 1;
    }
}

int compareTexts(std::string_view first, std::string_view second, bool ignoreCase) {
    const Characters firstWords(first, false);
    const Characters secondWords(second, false);
    if (const int order = compareBy(firstWords, secondWords, primaryWeight)) return order;
    if (const int order = compareBy(firstWords, secondWords, small)) return order;
    const auto capital = [](char32_t character) { return small(character) != character; };
    if (!ignoreCase) {
        if (const int order = compareBy(firstWords, secondWords, capital)) return order;
    }
    // All is equal but for the ignored signs: the text whose sign comes first is the later one.
    return compareBy(Characters(first, true), Characters(second, true), isIgnored);
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
