// Arrays of numbers as comma-separated text.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <string>
#include <vector>

#include "korutil/buffered_file.h"

namespace {

TEST(NumberArray, ReadsAsFarAsItIsNumbers) {
    const struct {
        const char* text;
        int count;
        BOOL result;
        std::vector<int> values;  // -7 where nothing was stored
        const char* why;
    } rows[] = {
        {"1,2,3", 3, 1, {1, 2, 3}, "as many as there are"},
        {"1,2,3", 4, 0, {1, 2, 3, -7}, "one too few: the others are stored"},
        {" 1 ,\n-2 x,+3", 3, 1, {1, -2, 3}, "blanks in front, and anything behind up to the comma"},
        {"1,,3", 3, 0, {1, -7, -7}, "an empty place ends it"},
        {"1,", 2, 0, {1, -7}, "nothing behind the comma"},
        {nullptr, 1, 0, {-7}, "no text"},
        {nullptr, 0, 1, {-7}, "none are wanted"},
        {"1", -1, 0, {-7}, "a negative count"},
    };
    for (const auto& row : rows) {
        std::vector<int> values(row.values.size(), -7);
        EXPECT_EQ(utlReadArray(row.text, values.data(), row.count, 4, 0), row.result) << row.why;
        EXPECT_EQ(values, row.values) << row.why;
    }
    EXPECT_EQ(utlReadArray("1", nullptr, 0, 2, 0), 0) << "neither integers nor doubles";
}

TEST(NumberArray, WritesNothingOutsideItsText) {
    const double doubles[] = {1, 2.5};
    const int integers[] = {INT_MIN, INT_MIN};
    const struct {
        const void* numbers;
        int count;
        DWORD size;
        BOOL result;
        std::string text;
    } rows[] = {
        {doubles, 2, 8, 1, "1.00,2.50"}, {integers, 2, 4, 1, "-2147483648,-2147483648"},
        {integers, 0, 4, 1, ""},         {integers, -1, 4, 0, ""},
        {integers, 1, 2, 0, ""},
    };
    for (const auto& row : rows) {
        std::string room(row.text.size() + 3, ',');
        EXPECT_EQ(utlWriteArray(room.data() + 1, row.numbers, row.count, row.size, 0), row.result);
        EXPECT_EQ(room, ',' + row.text + std::string(1, '\0') + ',') << "nothing in front or behind";
    }
    const double largest = -DBL_MAX;
    std::string text(314, ',');
    EXPECT_TRUE(utlWriteArray(text.data(), &largest, 1, 8, 0));
    EXPECT_EQ(text.find('\0'), 313u) << "the room that the header asks for";
    double read = 0;
    EXPECT_TRUE(utlReadArray(text.c_str(), &read, 1, 8, 0));
    EXPECT_EQ(read, largest);
}

}  // namespace
