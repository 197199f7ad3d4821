#pragma once
// Letter case of UTF-16 units, by rule and not by locale: Latin, Greek, Cyrillic, Armenian, Roman numerals
// and the full-width letters. Every mapping is from one unit to one unit.

namespace kor {

char16_t upperCase(char16_t unit);
char16_t lowerCase(char16_t unit);

}  // namespace kor
