#include "korutil/framework/string.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/framework/thrown.h"
#include "tests/support/random.h"

void PrintTo(const CString& text, std::ostream* out) {
    *out << '"' << std::string(text, static_cast<std::size_t>(text.GetLength())) << '"';
}

namespace {

std::string bytesOf(const CString& text) {
    return std::string(static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength()));
}

const void* placeOf(const CString& text) { return static_cast<const char*>(text); }

static_assert(sizeof(CString) == sizeof(void*));

TEST(String, IsMadeFromTextsAndParts) {
    EXPECT_EQ(CString(), "");
    EXPECT_EQ(CString(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(CString("kor"), "kor");
    EXPECT_EQ(bytesOf(CString("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(CString("abc", -5), "");
    EXPECT_EQ(CString('x', 3), "xxx");
    EXPECT_EQ(CString('x', -1), "");
}

TEST(String, Concatenates) {
    const CString b("b");
    EXPECT_EQ("a" + b + "c" + 'd' + CString("e"), "abcde");
    EXPECT_EQ('a' + b, "ab");
    CString taker;
    taker += b;
    EXPECT_EQ(placeOf(taker), placeOf(b));
    const CString moved(static_cast<CString&&>(taker));
    EXPECT_EQ(placeOf(moved), placeOf(b));
    EXPECT_TRUE(taker.IsEmpty());
}

TEST(String, CopiesShareUntilOneChanges) {
    using Change = void (*)(CString&);
    for (const Change change :
         {Change{[](CString& s) { s.MakeUpper(); }}, Change{[](CString& s) { s.TrimRight(); }},
          Change{[](CString& s) { s.Empty(); }}, Change{[](CString& s) { s.GetBufferSetLength(2); }}}) {
        const CString original("korutil ");
        CString copy(original);
        ASSERT_EQ(placeOf(copy), placeOf(original));
        change(copy);
        EXPECT_NE(copy, original);
        EXPECT_EQ(original, "korutil ");
    }
}

TEST(String, CutsClampedToTheText) {
    const CString text("korutil");
    const std::pair<CString, const char*> cases[] = {
        {text.Mid(3), "util"},
        {text.Mid(-2), "korutil"},
        {text.Mid(99), ""},
        {text.Mid(3, INT_MAX), "util"},
        {text.Mid(3, -1), ""},
        {text.Mid(-4, 3), "kor"},
        {text.Left(-1), ""},
        {text.Left(99), "korutil"},
        {text.Right(-1), ""},
        {text.Right(99), "korutil"},
        {text.SpanIncluding("rok"), "kor"},
        {text.SpanIncluding(nullptr), ""},
        {text.SpanExcluding("ut"), "kor"},
        {text.SpanExcluding(nullptr), "korutil"},
    };
    for (const auto& [got, wanted] : cases)
        EXPECT_EQ(got, wanted);
    EXPECT_EQ(placeOf(text.Left(7)), placeOf(text));
}

TEST(String, Compares) {
    EXPECT_EQ(CString("a").Compare("b"), -1);
    EXPECT_EQ(CString("\xE4").Compare("z"), 1);  // bytes count as unsigned
    EXPECT_EQ(CString("").Compare(nullptr), 0);
    EXPECT_EQ(CString("Korutil").CompareNoCase("kORUTIL"), 0);
    EXPECT_EQ(CString("kor_").CompareNoCase("KORA"), -1);  // by the lower-case form: '_' is before 'a'
    EXPECT_EQ(CString("\xC4pfel").CompareNoCase("\xE4PFEL"), 0);
    EXPECT_EQ(CString("kor\xE4").CompareNoCase("kor"), 1);
    EXPECT_LT(CString("a").Collate("B"), 0);  // bytes would say the opposite
    EXPECT_TRUE("a" == CString("a") && CString("a") != "b" && "a" < CString("b") && CString("b") >= "b");
}

TEST(String, Finds) {
    const CString text("C:\\kor\\util.kor");
    EXPECT_EQ(text.Find('\\', 3), 6);
    EXPECT_EQ(text.ReverseFind('\\'), 6);
    EXPECT_EQ(text.Find("kor", 4), 12);
    EXPECT_EQ(text.Find("korx"), -1);
    EXPECT_EQ(text.Find("", 15), 15);
    EXPECT_EQ(text.Find("", 16), -1);
    EXPECT_EQ(text.Find('k', -1), -1);
    EXPECT_EQ(text.FindOneOf(".\\"), 2);
    EXPECT_EQ(CString().FindOneOf("a"), -1);
}

TEST(String, ChangesItsCharacters) {
    CString text(" \t\r\nKor \xE4 Util\v\f ");
    text.TrimLeft();
    text.TrimRight();
    EXPECT_EQ(text, "Kor \xE4 Util");
    text.MakeUpper();
    EXPECT_EQ(text, "KOR \xC4 UTIL");
    text.MakeLower();
    EXPECT_EQ(text, "kor \xE4 util");
    text.MakeReverse();
    EXPECT_EQ(text, "litu \xE4 rok");
    CString blanks("  ");
    blanks.TrimRight();
    blanks.MakeUpper();
    blanks.MakeReverse();
    EXPECT_TRUE(blanks.IsEmpty());
}

TEST(String, RefusesIndexesOutside) {
    CString text("kor");
    EXPECT_EQ(text[0], 'k');
    EXPECT_EQ(text[3], '\0');
    for (const int index : {-1, 4, INT_MAX, INT_MIN})
        EXPECT_THROW(text.GetAt(index), std::out_of_range) << index;
    for (const int index : {-1, 3, INT_MAX})
        EXPECT_THROW(text.SetAt(index, 'x'), std::out_of_range) << index;
    EXPECT_EQ(text, "kor");
}

TEST(String, OpensItsBuffer) {
    CString text("kor");
    char* buffer = text.GetBuffer(7);
    EXPECT_STREQ(buffer, "kor");
    std::char_traits<char>::copy(buffer + 3, "util", 5);
    text.ReleaseBuffer();
    EXPECT_EQ(text, "korutil");
    text.GetBuffer(0);
    text.ReleaseBuffer(3);
    EXPECT_EQ(text, "kor");
    text.GetBuffer(-1);
    text.ReleaseBuffer(INT_MAX);
    EXPECT_EQ(text.GetLength(), 7);  // cut to the room there was
    EXPECT_EQ(bytesOf(text).substr(0, 3), "kor");
    text = "kor";
    EXPECT_EQ(text.GetBufferSetLength(5)[5], '\0');
    EXPECT_EQ(bytesOf(text), std::string("kor\0\0", 5));
    text.ReleaseBuffer();
    text.FreeExtra();
    EXPECT_EQ(text, "kor");

    CString full("ab");
    full.GetBufferSetLength(3)[2] = 'c';
    full.ReleaseBuffer();  // no zero within the room
    EXPECT_EQ(full, "abc");
    CString empty;
    empty.ReleaseBuffer();
    empty.GetBuffer(0)[0] = '\0';
    empty.ReleaseBuffer();
    EXPECT_TRUE(empty.IsEmpty());
}

TEST(String, SizesThatCannotBeAreMemoryFailures) {
    CString text("kor");
    EXPECT_TRUE(kor::test::isMemoryFailure([&text] {
        text.GetBuffer(INT_MAX);  // where that much can be had, its sum with itself is still too long
        text.ReleaseBuffer(INT_MAX);
        text += text;
    }));
    EXPECT_EQ(text.Left(3), "kor");
}

TEST(String, CopiesLiveInSeveralThreads) {
    const CString original("shared by all");
    const auto work = [&original] {
        for (int i = 0; i < kor::test::scaled(20000); ++i) {
            CString copy(original);
            CString second;
            second = copy;
            if (i % 16 == 0) second += "!";
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(original, "shared by all");
}

TEST(String, BehavesAsAPlainStringWouldInRandomChanges) {
    auto random = kor::test::generator();
    CString texts[4];
    std::string models[4];
    for (int step = 0; step < kor::test::scaled(20000); ++step) {
        const std::size_t a = random() % 4, b = random() % 4, at = random() % (models[a].size() + 1);
        const int place = static_cast<int>(at);
        CString& text = texts[a];
        std::string& model = models[a];
        const int action = text.GetLength() > 1000 ? 5 : static_cast<int>(random() % 7);
        if (action == 0) text = texts[b], model = models[b];
        if (action == 1) text += texts[b], model += models[b];
        if (action == 2) text += static_cast<char>('a' + at % 26), model += static_cast<char>('a' + at % 26);
        if (action == 3) {
            text = static_cast<const char*>(text) + place;
            model = std::string(model.c_str() + at);
            text += static_cast<const char*>(text) + text.GetLength() / 2;
            model += model.substr(model.size() / 2);
        }
        if (action == 4 && at < model.size()) text.SetAt(place, 'x'), model[at] = 'x';
        if (action == 5) {
            text.GetBuffer(place);
            text.ReleaseBuffer(place);
            model.resize(at);
        }
        if (action == 6) {
            text.FreeExtra();
            text.MakeReverse();
            model.assign(model.rbegin(), model.rend());
        }
        for (std::size_t i = 0; i < 4; ++i)
            ASSERT_EQ(bytesOf(texts[i]), models[i]) << "step " << step;
        const std::size_t found = model.find("xa");
        ASSERT_EQ(text.Find("xa"), found == std::string::npos ? -1 : static_cast<int>(found));
    }
}

}  // namespace
