#include <clocale>

#include "tests/support/comma_locale.h"

bool kor::test::useCommaLocale() { return std::setlocale(LC_NUMERIC, "German") != nullptr; }
