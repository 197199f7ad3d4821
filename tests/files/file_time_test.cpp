#include "korutil/file_time.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <utility>

#include "platform/win32.h"

namespace {

constexpr std::uint64_t k1970 = 116444736000000000;

FILETIME fileTime(std::uint64_t units) {
    return {static_cast<DWORD>(units & 0xFFFFFFFF), static_cast<DWORD>(units >> 32)};
}

TEST(FileTime, CountsSecondsSince1970) {
    const struct {
        std::uint64_t units;
        LONGLONG seconds;
    } cases[] = {{k1970, 0},
                 {k1970 - 1, -1},
                 {k1970 + 19999999, 1},
                 {0, -11644473600},
                 {k1970 + 0x80000000ull * 10000000, 0x80000000},
                 {0x7FFFFFFFFFFFFFFF, 910692730085}};
    for (const auto& c : cases) {
        FILETIME time = fileTime(c.units);
        LONGLONG seconds = 99;
        EXPECT_EQ(sysFileTimeToTimet(&time, &seconds), 1);
        EXPECT_EQ(seconds, c.seconds) << c.units;
        EXPECT_EQ(sysTimetToFileTime(seconds, &time), 1) << seconds;
        const std::uint64_t units = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
        EXPECT_EQ(units, static_cast<std::uint64_t>(c.seconds + 11644473600) * 10000000);
    }
    FILETIME time = fileTime(5);
    LONGLONG seconds = 99;
    for (const LONGLONG wrong : {LONGLONG{-11644473601}, LONGLONG{910692730086}, INT64_MAX, INT64_MIN})
        EXPECT_EQ(sysTimetToFileTime(wrong, &time), 0) << wrong;
    EXPECT_EQ(time.dwLowDateTime, 5u);
    time = fileTime(0x8000000000000000);
    EXPECT_EQ(sysFileTimeToTimet(&time, &seconds), 0);
    EXPECT_EQ(seconds, 99);
}

std::tm brokenDown(int year, int month, int day) {
    std::tm broken{};
    broken.tm_year = year - 1900;
    broken.tm_mon = month - 1;
    broken.tm_mday = day;
    broken.tm_hour = 23;
    broken.tm_wday = 17;  // not looked at
    return broken;
}

TEST(FileTime, HasTwoBrokenDownForms) {
    const int cases[][5] = {{1601, 1, 1, 1, 0},     {1900, 3, 1, 4, 59},  {2000, 12, 31, 0, 365},
                            {2023, 12, 31, 0, 364}, {2024, 2, 29, 4, 59}, {30827, 12, 31, 5, 364}};
    for (const auto& [year, month, day, weekDay, yearDay] : cases) {
        std::tm broken = brokenDown(year, month, day);
        SYSTEMTIME time{};
        ASSERT_EQ(utlCvtTmToSysTime(&broken, &time), 1) << year;
        EXPECT_EQ(time.wDayOfWeek, weekDay) << year;
        time.wDayOfWeek = 17;
        ASSERT_EQ(utlCvtSysToTmTime(&time, &broken), 1);
        EXPECT_EQ(broken.tm_year + 1900, year);
        EXPECT_EQ((broken.tm_mon * 100 + broken.tm_mday) * 100 + broken.tm_hour,
                  ((month - 1) * 100 + day) * 100 + 23);
        EXPECT_EQ(broken.tm_wday * 1000 + broken.tm_yday, weekDay * 1000 + yearDay) << year;
        EXPECT_EQ(broken.tm_isdst, -1);
    }
    const std::pair<int std::tm::*, int> tooLarge[] = {
        {&std::tm::tm_year, 30828 - 1900}, {&std::tm::tm_mon, 12}, {&std::tm::tm_mday, 30},
        {&std::tm::tm_hour, 24},           {&std::tm::tm_min, 60}, {&std::tm::tm_sec, 60}};
    for (const auto& [field, value] : tooLarge) {
        for (const int wrong : {value, value + 0x10000, INT_MAX, INT_MIN}) {
            std::tm broken = brokenDown(2023, 2, 1);
            broken.*field = wrong;
            SYSTEMTIME time{};
            EXPECT_EQ(utlCvtTmToSysTime(&broken, &time), 0) << wrong;
        }
    }
}

}  // namespace
