#include <clocale>
#include <cstdlib>

#include "tests/support/comma_locale.h"

// The build makes the locale where the system's sources of locales are installed.
bool kor::test::useCommaLocale() {
    setenv("LOCPATH", KOR_TEST_LOCALES, 1);
    setenv("LC_NUMERIC", "de_DE.UTF-8", 1);
    return std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
}
