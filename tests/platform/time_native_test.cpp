// What Wine tells otherwise than the system, and time zones, which a test can only choose natively.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/platform/seeded.h"

namespace {

using namespace kor::test;

TEST(FileTimesNative, KnowLeapYears) {
    struct Case {
        WORD year;
        BOOL leap;
    };
    for (const Case& c : {Case{2004, TRUE}, {2000, TRUE}, {2001, FALSE}, {1900, FALSE}, {2100, FALSE}}) {
        const SYSTEMTIME broken{c.year, 2, 0, 29, 0, 0, 0, 0};
        FILETIME time{};
        EXPECT_EQ(SystemTimeToFileTime(&broken, &time), c.leap) << c.year;
    }
}

TEST(FileTimesNative, LocalOnesAreAheadEastOfGreenwich) {
    const auto inNewProcess = [] {
        setenv("TZ", "XST-3:30", 1);
        const FILETIME time{0, 0x1C00000};
        FILETIME local{};
        FileTimeToLocalFileTime(&time, &local);
        const ULONGLONG units = ULONGLONG{local.dwHighDateTime} << 32 | local.dwLowDateTime;
        std::_Exit(units - (ULONGLONG{0x1C00000} << 32) == 126'000'000'000ull ? 0 : 1);
    };
    EXPECT_EXIT(inNewProcess(), testing::ExitedWithCode(0), "");
}

}  // namespace
