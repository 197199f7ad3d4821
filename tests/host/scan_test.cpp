#include "host/scan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "host/format.h"
#include "korutil/argument_list.h"
#include "tests/support/random.h"

namespace {

template <class... Targets>
int scan(const std::string& text, const char* format, Targets*... targets) {
    KorArgumentList list;
    (list.add(static_cast<void*>(targets)), ...);
    return kor::scanText(text.c_str(), static_cast<UINT>(text.size()), format, list.arguments());
}

template <class Value>
Value scanned(const std::string& text, const char* format, Value otherwise) {
    Value value = otherwise;
    scan(text, format, &value);
    return value;
}

TEST(Scan, Integers) {
    struct Case {
        const char *text, *format;
        int value;
        const char* reason;
    };
    constexpr int kUntouched = -99;
    const Case cases[] = {
        {"  12", "%d", 12, "blanks in front"},
        {"-12x", "%d", -12, "up to what is no digit"},
        {"x", "%d", kUntouched, "no digit"},
        {"", "%d", kUntouched, "nothing"},
        {"010", "%i", 8, "octal by prefix"},
        {"0x1F", "%i", 31, "hexadecimal by prefix"},
        {"0x", "%i", 0, "a prefix alone is a zero"},
        {"0xfF", "%x", 255, "prefix allowed"},
        {"179", "%o", 15, "9 is no octal digit"},
        {"12345", "%3d", 123, "width"},
        {"4294967295", "%d", -1, "the low 32 bits"},
        {"-1", "%u", -1, "a sign is allowed"},
        {"b=5", "a=%d", kUntouched, "literal that differs"},
        {"5 6", "%*d %d", 6, "scanned, not stored"},
        {"% 5", "%% %d", 5, "a per cent sign"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(scanned(each.text, each.format, kUntouched), each.value) << each.text << ' ' << each.reason;
}

TEST(Scan, IntegersAreStoredInTheirSize) {
    struct {
        std::uint8_t before = 0xEE;
        std::uint8_t value[8] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    } target;
    const std::pair<const char*, std::size_t> sizes[] = {
        {"%hhd", 1}, {"%hd", 2}, {"%d", 4}, {"%ld", 4}, {"%lld", 8}, {"%I64d", 8}, {"%zd", sizeof(void*)}};
    for (const auto& [format, size] : sizes) {
        std::memset(target.value, 0xEE, sizeof(target.value));
        ASSERT_EQ(scan("-2", format, &target.value), 1) << format;
        EXPECT_EQ(target.value[0], 0xFE) << format;
        EXPECT_EQ(target.value[size - 1], size == 1 ? 0xFE : 0xFF) << format;
        const std::uint8_t behind = size < 8 ? target.value[size] : 0xEE;
        EXPECT_EQ(behind, 0xEE) << format << ": nothing behind the value";
    }
    int value = 0;
    const char digits[2] = {'1', '2'};  // not terminated
    KorArgumentList list;
    list.add(&value);
    EXPECT_EQ(kor::scanText(digits, 2, "%d", list.arguments()), 1);
    EXPECT_EQ(value, 12);
    EXPECT_EQ(scanned("9223372036854775807", "%lld", LONGLONG{0}), std::numeric_limits<LONGLONG>::max());
}

TEST(Scan, FloatingPoint) {
    struct Case {
        const char* text;
        double value;
        int used;
    };
    const double huge = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {"0.1", 0.1, 3},
        {"-2.5e3", -2500, 6},
        {"1e+020", 1e20, 6},
        {".5", 0.5, 2},
        {"1e+", 1, 1},
        {"1.5.5", 1.5, 3},
        {"1e400", huge, 5},
        {"1e-99999999999", 0, 14},
        {"0.0e99999999999", 0, 15},
        {"1,5", 1, 1},
    };
    for (const Case& each : cases) {
        double value = -99;
        int used = -1;
        EXPECT_EQ(scan(each.text, "%lf%n", &value, &used), 1) << each.text;
        EXPECT_EQ(value, each.value) << each.text;
        EXPECT_EQ(used, each.used) << each.text;
    }
    for (const char* text : {"", ".", "-", "e5", "-.e5", "inf", "nan"})
        EXPECT_EQ(scanned(text, "%lf", -99.0), -99.0) << text;
    EXPECT_EQ(scanned("0.1 ", "%f", 0.0f), 0.1f);
    EXPECT_EQ(scanned("123456", "%3lf", 0.0), 123.0);
}

TEST(Scan, FormattedDoublesComeBack) {
    auto random = kor::test::generator();
    for (int round = kor::test::scaled(5000); round > 0; --round) {
        const std::uint64_t bits = (std::uint64_t{random()} << 32) | random();
        double value;
        std::memcpy(&value, &bits, sizeof(value));
        if (!std::isfinite(value)) continue;
        char text[64];
        kor::printText(text, sizeof(text), "%.17g", value);
        ASSERT_EQ(scanned(text, "%lf", -99.0), value) << text;
    }
}

TEST(Scan, TextsAndSets) {
    char first[16];
    char second[16];
    EXPECT_EQ(scan("  alpha beta", "%s %s", first, second), 2);
    EXPECT_STREQ(first, "alpha");
    EXPECT_STREQ(second, "beta");
    EXPECT_EQ(scan("key=value;", "%[a-z]=%[^;]", first, second), 2);
    EXPECT_STREQ(first, "key");
    EXPECT_STREQ(second, "value");
    EXPECT_EQ(scan("]]a", "%[]]%[^]]", first, second), 2);
    EXPECT_STREQ(first, "]]");
    EXPECT_EQ(scan("a-b", "%[a-]%s", first, second), 2);
    EXPECT_STREQ(first, "a-");
    EXPECT_EQ(scan("123", "%[a-z]", first), 0) << "an empty match is no match";
    EXPECT_EQ(scan("abc", "%[a-z", first), 0) << "a set without end";
    std::strcpy(first, "######");
    EXPECT_EQ(scan(" xyz", "%3c", first), 1);
    EXPECT_EQ(std::string(first, 4), " xy#") << "blanks count and nothing terminates";
    EXPECT_EQ(scan("xy", "%3c", first), 0);
    int value = 0, other = 0;
    EXPECT_EQ(scan("1;2", "%d,%d", &value, &other), 1) << "up to what differs";
    EXPECT_EQ(scan("1 , 2", "%d , %d", &value, &other), 2);
    for (const char* format : {"%y", "%Lf", "%hs", "%"})
        EXPECT_EQ(scan("12", format, &value), 0) << format;
    EXPECT_EQ(scan("12", "%d", static_cast<int*>(nullptr)), 0);
    EXPECT_EQ(kor::scanText("12", 2, "%d", nullptr), 0);
    EXPECT_EQ(kor::scanText(nullptr, 2, "%d", nullptr), 0);
    EXPECT_EQ(kor::scanText("12", 2, nullptr, nullptr), 0);
}

}  // namespace
