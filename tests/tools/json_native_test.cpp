#include "tools/korutil/json.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "tests/support/random.h"

namespace {

using namespace kor::json;

std::string refusalOf(const std::string& text) {
    try {
        const Document document(text);
    } catch (const Error& error) {
        return error.what();
    }
    return "accepted";
}

TEST(JsonReader, KeepsKindsOrderAndDigits) {
    const Document document(
        R"( { "b" : [ 1 , -0.50e+3 , "x" , true , false , null , { } , [ ] ] , "a" : { "b" : "" } } )");
    const Value& root = document.root();
    ASSERT_EQ(root.kind(), Kind::kObject);
    EXPECT_EQ(root.names(), (std::vector<std::string>{"b", "a"}));
    const Value& list = *root.find("b");
    const Kind kinds[] = {Kind::kNumber,  Kind::kNumber, Kind::kString, Kind::kBoolean,
                          Kind::kBoolean, Kind::kNull,   Kind::kObject, Kind::kArray};
    ASSERT_EQ(list.items().size(), std::size(kinds));
    for (std::size_t i = 0; i < std::size(kinds); ++i)
        EXPECT_EQ(list.items()[i].kind(), kinds[i]) << i;
    EXPECT_EQ(list.items()[1].text(), "-0.50e+3");
    EXPECT_TRUE(list.items()[3].truth());
    EXPECT_FALSE(list.items()[4].truth());
    EXPECT_EQ(root.find("c"), nullptr);
}

TEST(JsonReader, DecodesEscapesAndTellsWhichWereBytes) {
    const Document document(R"("\"\\\/\b\f\n\r\t\u0041é\u00e9\u20AC\ud83D\uDe00\u0000z\u00ff")");
    const std::string expected =
        std::string("\"\\/\b\f\n\r\tA\xC3\xA9\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80") + '\0' + "z\xC3\xBF";
    EXPECT_EQ(document.root().text(), expected);
    EXPECT_EQ(document.root().bytes(), (std::vector<std::size_t>{11, expected.size() - 2}));
}

TEST(JsonReader, RefusesWithLineAndColumn) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "line 1, column 1: the text ends too early"},
        {"[1,\n 2,]", "line 2, column 4: a value is expected here"},
        {"[1 2]", "line 1, column 4: ',' or ']' is expected here"},
        {"{\"a\":1,}", "line 1, column 8: a name in double quotes is expected here"},
        {"{\"a\" 1}", "line 1, column 6: ':' is expected here"},
        {"{\"a\":1;}", "line 1, column 7: ',' or '}' is expected here"},
        {"[] x", "line 1, column 4: nothing may follow the value"},
        {"{\"ä\":1,\n\"\\u00e4\":2}", "line 2, column 1: the name \"ä\" stands twice in one object"},
        {"01", "line 1, column 2: a number does not begin with 0"},
        {"[-]", "line 1, column 3: a digit is expected here"},
        {"[1e+]", "line 1, column 5: a digit is expected here"},
        {"[truex]", "line 1, column 6: ',' or ']' is expected here"},
        {"\"a\nb\"", "line 1, column 3: a control character in a string must be written as an escape"},
        {"\"\\x41\"", "line 1, column 3: there is no such escape"},
        {"\"\\u00g0\"", "line 1, column 6: four hexadecimal digits are expected here"},
        {"\"a\\ud800\"", "line 1, column 3: half of a surrogate pair"},
        {"\"\\ud800\\u0041\"", "line 1, column 2: half of a surrogate pair"},
        {"\"\xC0\x80\"", "line 1, column 2: the text is not UTF-8 here"},
        {"\"\xF4\x90\x80\x80\"", "line 1, column 2: the text is not UTF-8 here"},
        {"\"\xE2\x82\"", "line 1, column 2: the text is not UTF-8 here"},
        {std::string("[1]\0", 4), "line 1, column 4: nothing may follow the value"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(refusalOf(text), message) << text;
}

TEST(JsonReader, RefusesEveryBeginningOfAText) {
    const std::string text = R"({"id":-1.5e3,"type":"\u00e4\n","children":[true,false,null,[],{}]})";
    ASSERT_EQ(refusalOf("\xEF\xBB\xBF" + text), "accepted") << "a byte order mark is skipped";
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_NE(refusalOf(text.substr(0, length)), "accepted") << length;
}

TEST(JsonReader, BoundsTheDepth) {
    const auto nested = [](int depth) {
        const auto count = static_cast<std::size_t>(depth);
        return std::string(count, '[') + std::string(count, ']');
    };
    EXPECT_EQ(refusalOf(nested(kor::json::kMaximumDepth)), "accepted");
    EXPECT_EQ(refusalOf(nested(kor::json::kMaximumDepth + 1)),
              "line 1, column " + std::to_string(kor::json::kMaximumDepth + 1) + ": nested too deeply");
    EXPECT_NE(refusalOf(std::string(1'000'000, '[')), "accepted");
}

TEST(JsonReader, WholeNumbersAreExactAndBounded) {
    constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    const auto read = [](const std::string& text, std::int64_t least, std::int64_t most) -> std::string {
        const Document document(text);
        try {
            return std::to_string(document.integer(document.root(), least, most, "it"));
        } catch (const Error& error) {
            return error.what();
        }
    };
    EXPECT_EQ(read("9223372036854775807", kLeast, kMost), "9223372036854775807");
    EXPECT_EQ(read("-9223372036854775808", kLeast, kMost), "-9223372036854775808");
    EXPECT_EQ(read("9007199254740993", kLeast, kMost), "9007199254740993");
    EXPECT_EQ(read("9223372036854775808", 0, 7), "line 1, column 1: it must lie between 0 and 7");
    EXPECT_EQ(read("-1", 0, 7), "line 1, column 1: it must lie between 0 and 7");
    for (const char* text : {"5.0", "1e2", "\"5\"", "null"})
        EXPECT_EQ(read(text, 0, 7), "line 1, column 1: it must be a whole number") << text;
}

TEST(JsonReader, DoublesAreTheNearestOnesAndRangeIsNoticed) {
    const auto read = [](const std::string& text) {
        const Document document(text);
        return document.real(document.root(), "it");
    };
    EXPECT_EQ(read("0.1"), 0.1);
    EXPECT_EQ(read("5e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(read("1.7976931348623157e308"), std::numeric_limits<double>::max());
    EXPECT_EQ(read("9007199254740993"), 9007199254740992.0);
    EXPECT_THROW(read("1e309"), Error);
    EXPECT_THROW(read("1e-400"), Error);
    EXPECT_THROW(read("\"1\""), Error);
}

TEST(JsonWriter, EscapesOnlyWhatItMust) {
    std::string text;
    kor::json::appendString(text, std::string("a\"\\/\b\f\n\r\t\x01\x1F\x7Fµ€", 17));
    EXPECT_EQ(text, "\"a\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001F\x7Fµ€\"");
}

TEST(JsonWriter, DoublesAreShortAndComeBack) {
    const auto written = [](double value) {
        std::string text;
        kor::json::appendReal(text, value);
        return text;
    };
    EXPECT_EQ(written(-0.0), "-0");
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(1e20), "1e+20");
    auto generator = kor::test::generator();
    std::uniform_int_distribution<std::uint64_t> bits;
    for (int i = 0; i < kor::test::scaled(20'000); ++i) {
        const auto value = std::bit_cast<double>(bits(generator));
        if (!std::isfinite(value)) continue;
        const Document document(written(value));
        EXPECT_EQ(std::bit_cast<std::uint64_t>(document.real(document.root(), "it")),
                  std::bit_cast<std::uint64_t>(value));
    }
}

}  // namespace
