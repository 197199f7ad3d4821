#include "host/format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "host/conversion.h"
#include "korutil/argument_list.h"
#include "tests/support/random.h"

namespace {

using kor::formatText;
using kor::printText;

// Formats the same arguments as a call's own and as a list built in memory.
template <class... Values>
std::string print(const char* format, Values... values) {
    char called[2048];
    char listed[2048];
    const int length = printText(called, sizeof(called), format, values...);
    KorArgumentList list;
    (list.add(values), ...);
    EXPECT_EQ(formatText(listed, sizeof(listed), format, list.arguments()), length);
    EXPECT_STREQ(called, listed) << format;
    EXPECT_EQ(std::strlen(called), static_cast<std::size_t>(length)) << format;
    return called;
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Format, Integers) {
    EXPECT_EQ(print("%d|%i|%u", -7, 7, 0xFFFFFFFFu), "-7|7|4294967295");
    EXPECT_EQ(print("%x|%X|%#x|%#X|%o|%#o", 0xbeef, 0xbeef, 0xbeef, 0xbeef, 8, 8),
              "beef|BEEF|0xbeef|0XBEEF|10|010");
    EXPECT_EQ(print("%#x|%#o|%#.3o", 0, 0, 8), "0|0|010") << "no second prefix in front of a zero";
    EXPECT_EQ(print("%+d|% d|%+u|% d", 5, 5, 5, -5), "+5| 5|5|-5");
    EXPECT_EQ(print("%6d|%-6d|%06d|%+06d", -42, -42, -42, 42), "   -42|-42   |-00042|+00042");
    EXPECT_EQ(print("%.3d|%8.3d|%08.3d|%-8.3d|", 5, -5, 5, 5), "005|    -005|     005|005     |");
    EXPECT_EQ(print("[%.0d][%.0x][%.d]", 0, 0, 1), "[][][1]");
    EXPECT_EQ(print("%d", std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(print("%#10x|%#010x|%-#10x|", 255, 255, 255), "      0xff|0x000000ff|0xff      |");
}

TEST(Format, IntegerSizesAreTheSameOnEveryTarget) {
    const LONGLONG big = -0x123456789ABCDEFLL;
    EXPECT_EQ(print("%ld %d", -1, 7), "-1 7") << "l is 32 bits, so the next argument is found";
    EXPECT_EQ(print("%lx", 0xFFFFFFFFu), "ffffffff");
    EXPECT_EQ(print("%lld|%I64d|%jd %d", big, big, big, 7),
              "-81985529216486895|-81985529216486895|-81985529216486895 7");
    EXPECT_EQ(print("%llx %I64X", 0xFEDCBA9876543210ULL, 0xFEDCBA9876543210ULL),
              "fedcba9876543210 FEDCBA9876543210");
    EXPECT_EQ(print("%hd|%hu|%hhd|%hhu|%hx", 0x18000, -1, 0x180, -1, 0x12345), "-32768|65535|-128|255|2345");
    EXPECT_EQ(print("%I32d|%zu|%Iu", 9, std::size_t{10}, std::size_t{11}), "9|10|11");
    EXPECT_EQ(print("%lld", std::numeric_limits<LONGLONG>::min()), "-9223372036854775808");
}

TEST(Format, TextsCharactersAndPointers) {
    EXPECT_EQ(print("%s|%5s|%-5s|%.2s|%5.1s|", "abc", "abc", "abc", "abc", "abc"),
              "abc|  abc|abc  |ab|    a|");
    EXPECT_EQ(print("%s|%.3s", nullptr, nullptr), "(null)|(nu");
    EXPECT_EQ(print("%c%3c%-3c|%%|%5%|", 'a', 'b', 'c'), "a  bc  |%|%|");
    const char unterminated[3] = {'x', 'y', 'z'};
    EXPECT_EQ(print("%.3s", static_cast<const char*>(unterminated)), "xyz");
    EXPECT_EQ(print("%p", reinterpret_cast<void*>(UINT_PTR{0xABC})),
              std::string(2 * sizeof(void*) - 3, '0') + "ABC");
}

TEST(Format, WidthAndPrecisionFromArguments) {
    EXPECT_EQ(print("%*d|%*d|%-*d|", 5, 1, -5, 2, 5, 3), "    1|2    |3    |");
    EXPECT_EQ(print("%.*f|%*.*f|%.*f", 2, 1.0, 8, 3, 2.0, -1, 3.0), "1.00|   2.000|3.000000");
    EXPECT_EQ(print("[%*s]", 4, ""), "[    ]");
}

TEST(Format, FloatingPoint) {
    EXPECT_EQ(print("%f|%.0f|%#.0f|%.1f", 1.5, 2.5, 2.5, 0.05), "1.500000|2|2.|0.1");
    EXPECT_EQ(print("%e|%E|%.0e|%#.0e", 12345.678, 0.00012, 5.5e10, 5.5e10),
              "1.234568e+04|1.200000E-04|6e+10|6.e+10");
    EXPECT_EQ(print("%g|%g|%G|%g|%g", 100000.0, 1000000.0, 1e-5, 0.0001, 0.0), "100000|1e+06|1E-05|0.0001|0");
    EXPECT_EQ(print("%#g|%#g|%#.3g|%#.0g", 1.0, 1e6, 0.0001, 3.0), "1.00000|1.00000e+06|0.000100|3.");
    EXPECT_EQ(print("%#.3g|%#.2g", 999.96, 0.00009999), "1.00e+03|0.00010")
        << "the exponent is the rounded one's";
    EXPECT_EQ(print("%8.2f|%-8.2f|%08.2f|%+.1f|% .1f", -1.5, 1.5, -1.5, 1.0, 1.0),
              "   -1.50|1.50    |-0001.50|+1.0| 1.0");
    EXPECT_EQ(print("%f|%g", -0.0, -0.0), "-0.000000|-0");
    EXPECT_EQ(print("%f|%06.1e|%G|%+f|%f", kInfinity, -kInfinity, kInfinity, kInfinity, std::nan("")),
              "inf|  -inf|INF|+inf|nan");
    EXPECT_EQ(print("%lf %d", 0.5, 7), "0.500000 7");
    EXPECT_EQ(print("%.17g", 0.1), "0.10000000000000001");
    EXPECT_EQ(print("%.3e", DBL_TRUE_MIN), "4.941e-324");
}

TEST(Format, LongFloatingPointIsExact) {
    EXPECT_EQ(print("%.0f", DBL_MAX).size(), 309u);
    const std::string tiny = print("%.1200f", DBL_TRUE_MIN);
    EXPECT_EQ(tiny.size(), 1202u);
    EXPECT_EQ(tiny.find_last_not_of('0'), 1075u) << "the last digit of 2^-1074, then zeros";
    const std::string digits = print("%.1200e", 1.0);
    EXPECT_EQ(digits, "1." + std::string(1200, '0') + "e+00");
}

TEST(Format, RandomDoublesAreRoundedAsTheRuntimeDoes) {
    auto random = kor::test::generator();
    for (int round = kor::test::scaled(5000); round > 0; --round) {
        const std::uint64_t bits = (std::uint64_t{random()} << 32) | random();
        double value;
        std::memcpy(&value, &bits, sizeof(value));
        if (!std::isfinite(value)) continue;
        const char* formats[] = {"%.*e", "%.*f", "%.*g", "%#.*g"};
        const char* format = formats[random() % 4];
        const int precision = static_cast<int>(random() % 25);
        char expected[512];
        std::snprintf(expected, sizeof(expected), format, precision, value);
        std::replace(expected, expected + std::strlen(expected), ',', '.');
        ASSERT_EQ(print(format, precision, value), expected) << format << ' ' << precision;
    }
}

TEST(Format, DoesNotFollowTheLocale) {
    const std::string former = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "German_Germany.1252", "de_DE", ""}) {
        if (!std::setlocale(LC_ALL, name)) continue;
        EXPECT_EQ(print("%.2f %g", 1234.5, 0.5), "1234.50 0.5") << name;
    }
    std::setlocale(LC_ALL, former.c_str());
}

TEST(Format, IsCutAtTheBufferAndAlwaysTerminated) {
    for (UINT size = 1; size <= 12; ++size) {
        std::string buffer(16, '#');
        const int length = printText(buffer.data(), size, "ab%5dxy%s", 123, "long text");
        EXPECT_EQ(length, static_cast<int>(size) - 1);
        EXPECT_EQ(buffer.substr(0, size - 1), std::string("ab  123xylong text").substr(0, size - 1));
        EXPECT_EQ(buffer[size - 1], '\0');
        EXPECT_EQ(buffer.substr(size), std::string(16 - size, '#')) << "nothing behind the buffer";
    }
    char one = '#';
    EXPECT_EQ(printText(&one, 0, "text"), 0);
    EXPECT_EQ(one, '#');
    EXPECT_EQ(printText(nullptr, 10, "text"), 0);
    char small[8];
    EXPECT_EQ(printText(small, sizeof(small), "%999999999999d", 1), 7) << "a huge width takes no time";
    EXPECT_EQ(printText(small, sizeof(small), "%-2147483647s|", "a"), 7);
    EXPECT_EQ(printText(small, sizeof(small), "%*d", std::numeric_limits<int>::min(), 1), 7);
}

TEST(Format, RefusesWhatItCannotFormat) {
    int written = 99;
    char buffer[64];
    for (const char* format : {"%n", "a%hhn", "%", "%5", "%y", "%Lf", "%ls", "%hc", "%.-3d", "%lp", "%hf"}) {
        std::strcpy(buffer, "former");
        EXPECT_EQ(printText(buffer, sizeof(buffer), format, &written), 0) << format;
        EXPECT_STREQ(buffer, "") << format;
    }
    EXPECT_EQ(written, 99);
    EXPECT_EQ(formatText(buffer, sizeof(buffer), "no list: %d", nullptr), 0);
    EXPECT_EQ(formatText(buffer, sizeof(buffer), "no list: 5 %%", nullptr), 12);
    EXPECT_EQ(formatText(buffer, sizeof(buffer), nullptr, nullptr), 0);
}

TEST(Format, TheCallersListStaysWhereItIs) {
    KorArgumentList list;
    list.add(1).add("two").add(3.0).add(LONGLONG{4});
    char first[64];
    char second[64];
    void* arguments = list.arguments();
    formatText(first, sizeof(first), "%d %s %g %lld", arguments);
    formatText(second, sizeof(second), "%d %s %g %lld", arguments);
    EXPECT_STREQ(first, "1 two 3 4");
    EXPECT_STREQ(second, first);
}

TEST(ArgumentList, TakesMoreThanTheRegistersHold) {
    EXPECT_EQ(print("%d %d %d %d %d %d %d %d", 1, 2, 3, 4, 5, 6, 7, 8), "1 2 3 4 5 6 7 8");
    EXPECT_EQ(print("%g %g %g %g %g %g %g %g %g %g", 1., 2., 3., 4., 5., 6., 7., 8., 9., 10.),
              "1 2 3 4 5 6 7 8 9 10");
    EXPECT_EQ(print("%d %g %lld %s %c %g", 1, 2.5, LONGLONG{3}, "four", 'x', 6.5), "1 2.5 3 four x 6.5");
}

TEST(ArgumentList, SmallValuesArePromoted) {
    enum Colour : short { kRed = 3 };
    KorArgumentList list;
    list.add('a').add(static_cast<short>(-2)).add(true).add(kRed).add(0.5f);
    char text[64];
    formatText(text, sizeof(text), "%c %d %d %d %g", list.arguments());
    EXPECT_STREQ(text, "a -2 1 3 0.5");
}

TEST(FormatTakes, ComparesConversionsWithArguments) {
    struct Case {
        const char* format;
        const char* arguments;
        bool fits;
        const char* reason;
    };
    const Case cases[] = {
        {"Error %u; No.: %u;", "ii", true, "as meant"},
        {"Error %u;", "ii", true, "fewer are left unread"},
        {"100 %%", "", true, "no argument"},
        {"%s", "ii", false, "a number is no text"},
        {"%u %u %u", "ii", false, "one too many"},
        {"%I64u", "i", false, "wider"},
        {"%lu", "i", true, "l is 32 bits"},
        {"%*d", "i", false, "the width takes one"},
        {"%.*s", "is", true, "the precision takes one"},
        {"%s%n", "sp", false, "refused"},
        {"%g %d", "di", true, "in order"},
        {"%d %g", "di", false, "in order"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(kor::formatTakes(each.format, each.arguments), each.fits)
            << each.format << ": " << each.reason;
    }
}

}  // namespace
