#include "runtime/number_text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/random.h"

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// The texts of some doubles, with blanks between them.
std::string textsOf(int digits, const std::vector<double>& values) {
    std::string texts;
    for (const double value : values) {
        std::array<char, kor::kNumberTextRoom> text;
        const std::size_t length = kor::numberText(value, digits, text);
        texts.append(texts.empty() ? "" : " ").append(text.data(), length);
    }
    return texts;
}

// What is read from some texts, each with the number of characters used.
std::string readFrom(const std::vector<const char*>& texts) {
    std::string read;
    for (const char* text : texts) {
        const char* end = nullptr;
        const double value = kor::numberValue(text, &end);
        read += textsOf(17, {value}) + '/' + std::to_string(end - text) + ' ';
    }
    return read;
}

}  // namespace

TEST(NumberText, IsTheShorterOfFixedAndExponentForm) {
    EXPECT_EQ(textsOf(15, {0, -0.0, 5, -0.1, 0.1 + 0.2, 0.0001, 0.00001}), "0 -0 5 -0.1 0.3 0.0001 1e-005");
    EXPECT_EQ(textsOf(15, {123456789012345, 1e14, 1e15}), "123456789012345 100000000000000 1e+015");
    EXPECT_EQ(textsOf(15, {999999999999999.9, 5e-324}), "1e+015 4.94065645841247e-324") << "rounding carries";
    EXPECT_EQ(textsOf(14, {123456789012346, 0.1}), "1.2345678901235e+014 0.1");
    EXPECT_EQ(textsOf(17, {-1.7976931348623157e308}), "-1.7976931348623157e+308");
    EXPECT_EQ(textsOf(15, {kInfinite, -kInfinite, kNone}), "1.#INF -1.#INF 1.#QNAN");
    std::array<char, 4> small;
    EXPECT_EQ(kor::numberText(0.25, 15, small), 0u);
    EXPECT_STREQ(small.data(), "");
}

TEST(NumberText, IsReadUpToItsEnd) {
    EXPECT_EQ(readFrom({"5", " \t-0.5,", "+.5e1x", "1,5", "1e20"}), "5/1 -0.5/6 5/5 1/1 1e+020/4 ");
    EXPECT_EQ(readFrom({"", ".", "x1", "-", "inf", "nan"}), "0/0 0/0 0/0 0/0 0/0 0/0 ");
    EXPECT_EQ(readFrom({"1e", "1e+", "0x1F", "1.#x"}), "1/1 1/1 0/1 1/2 ");
    EXPECT_EQ(readFrom({"1.e+020", "1e-999", "-1e999"}), "1e+020/7 0/6 -1.#INF/6 ");
    EXPECT_EQ(readFrom({"1.#INF,", "-1.#INF00", "1.#QNAN", "-1.#IND"}),
              "1.#INF/6 -1.#INF/7 1.#QNAN/7 1.#QNAN/7 ");
}

TEST(NumberText, SeventeenDigitsBringEveryDoubleBack) {
    auto random = kor::test::generator();
    for (int round = kor::test::scaled(20000); round > 0; --round) {
        const auto value = std::bit_cast<double>(std::uint64_t{random()} << 32 | random());
        if (!std::isfinite(value)) continue;
        const std::string text = textsOf(17, {value});
        EXPECT_EQ(kor::numberValue(text.c_str(), nullptr), value) << text;
    }
}

TEST(CommaLocale, IsInForceInAllTests) {
    char text[8];
    std::snprintf(text, sizeof text, "%.1f", 0.5);
    if (std::string(text) == "0.5") GTEST_SKIP() << "no locale with a comma is installed";
    EXPECT_STREQ(text, "0,5");
    EXPECT_EQ(textsOf(15, {0.5}), "0.5");
}
