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
    EXPECT_EQ(CString("abc", 0), "");
    EXPECT_EQ(CString("abc", -5), "");
    EXPECT_EQ(CString('x', 3), "xxx");
    EXPECT_EQ(CString('x', -1), "");
}

TEST(String, CopiesShareUntilOneChanges) {
    using Change = void (*)(CString&);
    const Change changes[] = {
        [](CString& s) { s.SetAt(0, 'X'); },
        [](CString& s) { s += "!"; },
        [](CString& s) { s.MakeUpper(); },
        [](CString& s) { s.MakeReverse(); },
        [](CString& s) {
            s.GetBuffer(1)[0] = 'X';
            s.ReleaseBuffer();
        },
        [](CString& s) { s.Empty(); },
        [](CString& s) { s = "other"; },
        [](CString& s) { s.TrimRight(); },
        [](CString& s) { s.GetBufferSetLength(2); },
    };
    for (const Change change : changes) {
        const CString original("korutil ");
        CString copy(original);
        CString assigned;
        assigned = original;
        ASSERT_EQ(placeOf(copy), placeOf(original));
        ASSERT_EQ(placeOf(assigned), placeOf(original));
        change(copy);
        EXPECT_NE(copy, original) << "change " << (&change - changes);
        EXPECT_EQ(original, "korutil ");
        EXPECT_EQ(assigned, "korutil ");
    }
}

TEST(String, TakesPartsOfItself) {
    CString text("0123456789");
    text = static_cast<const char*>(text) + 4;
    EXPECT_EQ(text, "456789");
    text += static_cast<const char*>(text) + 2;
    EXPECT_EQ(text, "4567896789");
    text += text;
    EXPECT_EQ(text, "45678967894567896789");
    text = text;  // NOLINT: assigning itself is the case
    EXPECT_EQ(text.GetLength(), 20);
    CString shared(text);
    text = static_cast<const char*>(text) + 18;
    EXPECT_EQ(text, "89");
    EXPECT_EQ(shared.GetLength(), 20);
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

TEST(String, CutsClampedToTheText) {
    const CString text("korutil");
    const struct {
        CString got;
        const char* wanted;
    } cases[] = {
        {text.Mid(3), "util"},
        {text.Mid(-2), "korutil"},
        {text.Mid(7), ""},
        {text.Mid(99), ""},
        {text.Mid(3, 2), "ut"},
        {text.Mid(3, INT_MAX), "util"},
        {text.Mid(3, -1), ""},
        {text.Mid(-4, 3), "kor"},
        {text.Left(3), "kor"},
        {text.Left(-1), ""},
        {text.Left(99), "korutil"},
        {text.Right(4), "util"},
        {text.Right(-1), ""},
        {text.Right(99), "korutil"},
        {text.SpanIncluding("rok"), "kor"},
        {text.SpanIncluding("x"), ""},
        {text.SpanIncluding(nullptr), ""},
        {text.SpanExcluding("ut"), "kor"},
        {text.SpanExcluding("k"), ""},
        {text.SpanExcluding(nullptr), "korutil"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(row.got, row.wanted) << "row " << (&row - cases);
    EXPECT_EQ(placeOf(text.Left(7)), placeOf(text));
}

TEST(String, Compares) {
    EXPECT_EQ(CString("a").Compare("b"), -1);
    EXPECT_EQ(CString("\xE4").Compare("z"), 1);  // bytes count as unsigned
    EXPECT_EQ(CString("").Compare(nullptr), 0);
    EXPECT_EQ(CString("Korutil").CompareNoCase("kORUTIL"), 0);
    EXPECT_EQ(CString("kor_").CompareNoCase("KORA"), -1);  // by the lower-case form: '_' is before 'a'
    EXPECT_EQ(CString("\xC4pfel").CompareNoCase("\xE4PFEL"), 0);
    EXPECT_EQ(CString("kor").CompareNoCase("korutil"), -1);
    EXPECT_EQ(CString("kor\xE4").CompareNoCase("kor"), 1);
    EXPECT_LT(CString("a").Collate("B"), 0);  // bytes would say the opposite
    EXPECT_GT(CString("b").Collate("A"), 0);
    EXPECT_EQ(CString("a").Collate("a"), 0);
    EXPECT_TRUE("a" == CString("a") && CString("a") != "b" && "a" < CString("b") && CString("b") >= "b");
    EXPECT_TRUE(CString("a") < CString("b") && CString("c") > CString("b") && "c" > CString("b"));
}

TEST(String, Finds) {
    const CString text("C:\\kor\\util.kor");
    EXPECT_EQ(text.Find('\\'), 2);
    EXPECT_EQ(text.Find('\\', 3), 6);
    EXPECT_EQ(text.ReverseFind('\\'), 6);
    EXPECT_EQ(text.Find("kor"), 3);
    EXPECT_EQ(text.Find("kor", 4), 12);
    EXPECT_EQ(text.Find("korx"), -1);
    EXPECT_EQ(text.Find("", 15), 15);
    EXPECT_EQ(text.Find("", 16), -1);
    EXPECT_EQ(text.Find('k', -1), -1);
    EXPECT_EQ(text.ReverseFind('x'), -1);
    EXPECT_EQ(text.FindOneOf(".\\"), 2);
    EXPECT_EQ(text.FindOneOf("xyz"), -1);
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
    EXPECT_TRUE(blanks.IsEmpty());
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
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    CString texts[4];
    std::string models[4];
    for (int step = 0; step < kor::test::scaled(20000); ++step) {
        const auto a = static_cast<std::size_t>(below(4));
        const auto b = static_cast<std::size_t>(below(4));
        CString& text = texts[a];
        std::string& model = models[a];
        const int at = below(text.GetLength() + 1);
        const auto modelAt = static_cast<std::size_t>(at);
        switch (below(7)) {
            case 0:
                text = texts[b];
                model = models[b];
                break;
            case 1:
                if (text.GetLength() > 1000) text.Empty();
                model.resize(static_cast<std::size_t>(text.GetLength()));
                text += texts[b];
                model += models[b];
                break;
            case 2:
                text += static_cast<char>('a' + below(26));
                model += text[text.GetLength() - 1];
                break;
            case 3:
                text = static_cast<const char*>(text) + at;
                model = std::string(model.c_str() + modelAt);
                break;
            case 4:
                if (at < text.GetLength()) {
                    text.SetAt(at, 'x');
                    model[modelAt] = 'x';
                }
                break;
            case 5:
                text.GetBuffer(at);
                text.ReleaseBuffer(at);
                model.resize(modelAt);
                break;
            default:
                text.FreeExtra();
                text.MakeReverse();
                model.assign(model.rbegin(), model.rend());
                break;
        }
        for (std::size_t i = 0; i < 4; ++i)
            ASSERT_EQ(bytesOf(texts[i]), models[i]) << "step " << step;
        ASSERT_EQ(text.Find("xa"),
                  static_cast<int>(model.find("xa") == std::string::npos ? -1 : model.find("xa")));
    }
}

}  // namespace
