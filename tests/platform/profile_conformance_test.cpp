// Reading initialisation files: every line form, buffer size and failure.
#include "tests/platform/profile_conformance.h"

namespace {

using namespace kor::test;
using namespace kor::test::profile;

TEST(ProfileReads, FindsKeys) {
    expectReads(
        withCrLf("[s]\nKey=first\nKEY=second\na b=two words\nlonely\n;note=1\n  ;indented=2\n\t;tab=3\n"
                 "semi;colon=4\nhash #x=5\n#hash=6\n'single'=7\n\"double\"=8\neq=a=b=c\n=nameless\n"
                 "\\back/slash=9\ndot.ted=10"),
        {{"s", "Key", "first", "the first of two counts"},
         {"s", "KEY", "first", "in any case of letters"},
         {"s", "kEy", "first", "in any case of letters"},
         {"s", "ke", kGone, "a part of a name is none"},
         {"s", "keyy", kGone, "more than a name is none"},
         {"s", "a b", "two words", "blanks inside a name"},
         {"s", "a  b", kGone, "which count"},
         {"s", "a", kGone, "a word of a name is none"},
         {"s", "lonely", kGone, "a line without = has no value"},
         {"s", "note", kGone, "a comment"},
         {"s", ";note", kGone, "a comment by its whole name", "1"},
         {"s", "indented", kGone, "a comment behind blanks"},
         {"s", ";indented", kGone, "which has no name", "2"},
         {"s", ";tab", kGone, "nor behind a tab", "3"},
         {"s", "semi;colon", "4", "a semicolon inside a name"},
         {"s", "semi", kGone, "begins no comment there"},
         {"s", "hash #x", "5", "a hash inside a name"},
         {"s", "#hash", "6", "a hash begins no comment"},
         {"s", "'single'", "7", "quotes belong to a name"},
         {"s", "single", kGone, "quotes belong to a name"},
         {"s", "\"double\"", "8", "quotes belong to a name"},
         {"s", "double", kGone, "quotes belong to a name"},
         {"s", "eq", "a=b=c", "the first = ends the name"},
         {"s", "eq=a", kGone, "the first = ends the name"},
         {"s", "", "nameless", "an empty name is one"},
         {"s", "\\back/slash", "9", "separators are letters"},
         {"s", "dot.ted", "10", "dots are letters"},
         {"none", "key", kGone, "no such section"},
         {"", "key", kGone, "no such section"}});
}

TEST(ProfileReads, TrimsNamesAndValues) {
    expectReads(
        withCrLf("[s]\n  lead=1\ntrail  =2\n  both  =  3  \n\ttab\t=\t4\t\nin ner = a  b \t c \nempty=\n"
                 "blank=   \n\vvertical\v=\v5\v\n\n   \nend=6\x1A\n"),
        {{"s", "lead", "1", "blanks before a name"},
         {"s", "trail", "2", "blanks behind a name"},
         {"s", "both", "3", "blanks on all sides"},
         {"s", "tab", "4", "tabs are blanks"},
         {"s", "in ner", "a  b \t c", "what is inside stays"},
         {"s", "empty", "", "an empty value is one"},
         {"s", "blank", "", "blanks alone are none"},
         {"s", "vertical", "5", "vertical tabs are blanks"},
         {"s", "end", "6", "Ctrl-Z at an end is a blank"},
         {" s", "lead", "1", "a blank before the section asked for"},
         {"s  ", "lead", "1", "blanks behind the section asked for"},
         {"s", "  lead", "1", "blanks before the key asked for"},
         {"s", "lead  ", "1", "blanks behind the key asked for"},
         {"s", "  ", kGone, "no name but blanks"},
         {"\ts", "lead", kGone, "a tab is part of the section asked for", "1"},
         {"s", "\tlead", kGone, "a tab is part of the key asked for", "1"},
         {"s", "lead\t", kGone, "a tab is part of the key asked for", "1"}});
}

TEST(ProfileReads, TakesOnePairOfQuotesOff) {
    expectReads(
        withCrLf("[s]\nd=\"two words\"\ns='two words'\nin=\"  kept  \"\nout=  \" x \"  \nempty=\"\"\n"
                 "empty1=''\none=\"\none1='\nopen=\"x\nopen1='x\nclose=x\"\nmixed=\"x'\nmixed1='x\"\n"
                 "twice=\"\"x\"\"\ntwice1=''x''\nnest=\"'x'\"\nnest1='\"x\"'\nmid=a\"b\"c\ntwo=\"a\" \"b\"\n"
                 "behind=\"x\" y\ncomment=\"x\" ; \"y\"\ntab=\"\tx\t\"\nlone=\"\"\"\nends=x\"\"\n"),
        {{"s", "d", "two words", "double quotes"},
         {"s", "s", "two words", "single quotes"},
         {"s", "in", "  kept  ", "blanks inside stay"},
         {"s", "out", " x ", "blanks outside go"},
         {"s", "empty", "", "nothing in quotes"},
         {"s", "empty1", "", "nothing in quotes"},
         {"s", "one", "\"", "one quote is no pair"},
         {"s", "one1", "'", "one quote is no pair"},
         {"s", "open", "\"x", "an open one stays"},
         {"s", "open1", "'x", "an open one stays"},
         {"s", "close", "x\"", "one that only ends stays"},
         {"s", "mixed", "\"x'", "two kinds are no pair"},
         {"s", "mixed1", "'x\"", "two kinds are no pair"},
         {"s", "twice", "\"x\"", "one pair of two goes"},
         {"s", "twice1", "'x'", "one pair of two goes"},
         {"s", "nest", "'x'", "the outer pair goes"},
         {"s", "nest1", "\"x\"", "the outer pair goes"},
         {"s", "mid", "a\"b\"c", "quotes inside stay"},
         {"s", "two", "a\" \"b", "the first and the last make the pair"},
         {"s", "behind", "\"x\" y", "text behind the pair keeps it"},
         {"s", "comment", "x\" ; \"y", "nothing in a value is a comment"},
         {"s", "tab", "\tx\t", "tabs inside stay"},
         {"s", "lone", "\"", "the middle one of three"},
         {"s", "ends", "x\"\"", "two at the end are no pair around"}},
        true);
}

TEST(ProfileReads, HasNoCommentsBehindValues) {
    expectReads(
        withCrLf(
            "[s]\na=1;x\nb=1 ;x\nc=;x\nd=1 # x\ne=1 // x\n;f=1\n# g=1\nh==\ni= = \nj=[x]\nk=\\n\nl=%s\n"),
        {{"s", "a", "1;x", "a semicolon in a value"},
         {"s", "b", "1 ;x", "also behind a blank"},
         {"s", "c", ";x", "also as its first"},
         {"s", "d", "1 # x", "a hash in a value"},
         {"s", "e", "1 // x", "slashes in a value"},
         {"s", "f", kGone, "a comment"},
         {"s", "# g", "1", "a hash begins a name"},
         {"s", "h", "=", "a second = is the value"},
         {"s", "i", "=", "a second = is the value"},
         {"s", "j", "[x]", "brackets in a value"},
         {"s", "k", "\\n", "there are no escapes"},
         {"s", "l", "%s", "nor formats"}});
}

TEST(ProfileReads, FindsSections) {
    expectReads(
        withCrLf(
            "early=0\n[Alpha]\nkey=1\n[beta]\nkey=2\n[ALPHA]\nkey=3\nlate=3\n[ padded\t]\nkey=4\n[two "
            "words]\nkey=5\n"
            "   [indented]\nkey=6\n\t[tabbed]\nkey=7\n[behind]text=0\nkey=8\n[in[side]\nkey=9\n[]\nkey=10\n"
            "[;semi]\nkey=11\n\"[quoted]\"=0\n['q']\nkey=12\nx[no]\nkey=13\n[beta2]\n[comment] ; c\nkey=14\n"
            "[a=b]\nkey=15\n[sub\\sect/ion.x]\nkey=16\n;[off]\noff=17\n"),
        {{"Alpha", "key", "1", "the first section"},
         {"aLPHa", "KEY", "1", "in any case of letters"},
         {"alpha", "late", kGone, "a second section of a name is not read"},
         {"beta", "key", "2", "the next section"},
         {"padded", "key", "4", "blanks inside the brackets"},
         {" padded ", "key", "4", "and in what is asked for"},
         {"two words", "key", "5", "blanks inside a name"},
         {"twowords", "key", kGone, "which count"},
         {"indented", "key", "6", "blanks before the bracket"},
         {"tabbed", "key", "7", "tabs before the bracket"},
         {"behind", "key", "8", "text behind the bracket"},
         {"behind", "text", kGone, "which is no line"},
         {"behind", "]text", kGone, "nor part of one"},
         {"in[side", "key", "9", "a bracket inside a name"},
         {"side", "key", kGone, "begins no section"},
         {"", "key", "10", "an empty name is one", kGone},
         {"", "early", kGone, "lines before the first section are in none", "0"},
         {";semi", "key", "11", "a semicolon in brackets"},
         {";semi", "\"[quoted]\"", "0", "a quoted bracket begins no section"},
         {"'q'", "key", "12", "quotes belong to the name"},
         {"q", "key", kGone, "quotes belong to the name"},
         {"no", "key", kGone, "text before the bracket makes it a line"},
         {"'q'", "key", "12", "of the section before"},
         {"beta2", "key", kGone, "an empty section"},
         {"comment", "key", "14", "a comment behind the bracket"},
         {"a=b", "key", "15", "= in a section's name"},
         {"sub\\sect/ion.x", "key", "16", "separators in a section's name"},
         {"off", "off", kGone, "a section line as a comment"},
         {"sub\\sect/ion.x", "off", "17", "the section before goes on"}});
    expectReads(withCrLf("[a]b]\nkey=1\n[open\nkey=2\n[ open too  \nkey=3\n[\nkey=4\n]\n"),
                {{"a", "key", "1", "the first bracket ends the name", kGone},
                 {"a]b", "key", kGone, "the first bracket ends the name", "1"},
                 {"open", "key", "2", "without one the line does", kGone},
                 {"open too", "key", "3", "without one the line does", kGone},
                 {"", "key", "4", "also at once", kGone}});
}

TEST(ProfileReads, ListsSectionsAndKeys) {
    expectReads(withCrLf("[s]\nb=1\n;c=2\na=\n\nlonely\nB=3\n sp ace = 4\n[T]\n[u]\nz=1\n[S]\nlate=1\n"),
                {{nullptr, nullptr, "s|T|u|S|", "every section, as often as it stands there"},
                 {nullptr, "b", "s|T|u|S|", "a key does not matter then"},
                 {"s", nullptr, "b|a|B|sp ace|", "every key, but no comment and no line without ="},
                 {"S", nullptr, "b|a|B|sp ace|", "of the first section of that name"},
                 {"u", nullptr, "z|", "one key"},
                 {"T", nullptr, kGone, "no key"},
                 {"none", nullptr, kGone, "no section"}});
    expectReads("", {{nullptr, nullptr, kGone, "an empty file has no sections", ""},
                     {"s", nullptr, kGone, "nor keys"},
                     {"s", "k", kGone, "nor values"}});
    expectReads(withCrLf("x=1\n;c\n"),
                {{nullptr, nullptr, kGone, "no section line", ""}, {"x", "x", kGone, "no section"}});
}

TEST(ProfileReads, ListsLinesOfASection) {
    struct Row {
        const char* text;
        const char* lines;
        const char* reason;
    };
    const Row rows[] = {
        {"a=1\nb=2\n", "a=1|b=2|", "in order"},
        {" a = 1 \n\tb\t=\t2\t\n", "a=1|b=2|", "without the blanks around"},
        {"a=\"x\"\nb=' y '\n", "a=\"x\"|b=' y '|", "with their quotes"},
        {"a=\nb=  \n", "a=|b=|", "empty values"},
        {"a=1\n;c=2\n  ;d\n#e=3\n", "a=1|#e=3|", "without comments"},
        {"a=1\nlonely\n two words \n", "a=1|lonely|two words|", "with lines without ="},
        {"A=1\na=2\nA=1\n", "A=1|a=2|A=1|", "as often as they stand there"},
        {"\n\na=1\n   \n\nb=2\n\n", "a=1|b=2|", "without blank lines"},
        {"a=1=2\n=3\n", "a=1=2|=3|", "with further ="},
        {"a=1 ; c\n", "a=1 ; c|", "with what looks like a comment"},
        {"", "", "an empty section"},
        {";c\n\n", "", "comments alone"},
        {"a=1\n[t]\nb=2\n[s]\nc=3\n", "a=1|", "to the next section and no further"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.reason);
        const ScratchFolder scratch;
        const std::string file = scratch.file("f.ini", withCrLf("[r]\nr=0\n[s]\n" + std::string(row.text)));
        expectList([&](char* buffer,
                       DWORD size) { return GetPrivateProfileSectionA("S", buffer, size, file.c_str()); },
                   row.lines);
        expectList([&](char* buffer,
                       DWORD size) { return GetPrivateProfileSectionA("x", buffer, size, file.c_str()); },
                   "");
    }
}

TEST(ProfileReads, ListsSectionNames) {
    for (const char* list : {"a|", "a|b|", "long name|b|C|", "a|A|a|", ""}) {
        std::string text = ";c\n";
        for (const char* at = list; *at; ++at)
            text += *at == '|' ? "]\nk=1\n" : (at == list || at[-1] == '|' ? "[" : "") + std::string(1, *at);
        const ScratchFolder scratch;
        const std::string file = scratch.file("f.ini", withCrLf(text));
        SCOPED_TRACE(list);
        expectList([&](char* buffer,
                       DWORD size) { return GetPrivateProfileSectionNamesA(buffer, size, file.c_str()); },
                   list);
    }
}

TEST(ProfileReads, CopiesTheDefaultWithoutBlanksAtItsEnd) {
    struct Row {
        const char* given;
        const char* copied;
        const char* reason;
        const char* wine = nullptr;
    };
    const Row rows[] = {
        {"plain", "plain", "as it is"},         {"end   ", "end", "blanks at the end go"},
        {"  lead", "  lead", "others stay"},    {" in ner ", " in ner", "others stay"},
        {"tab\t", "tab\t", "a tab is none"},    {"a 'q'", "a 'q'", "quotes stay"},
        {"   ", "", "nothing but blanks", " "}, {"", "", "an empty one"},
        {nullptr, "", "none is the empty one"}, {"a;b #c=d", "a;b #c=d", "no comment"},
    };
    const ScratchFolder scratch;
    const std::string file = scratch.file("f.ini", "[s]\r\nk=v\r\n[empty]\r\n");
    const std::string missing = scratch.path("missing.ini");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.reason);
        const auto expectDefault = [&](const char* section, const char* key, const std::string& path) {
            const auto call = [&](char* buffer, DWORD size) {
                return GetPrivateProfileStringA(section, key, row.given, buffer, size, path.c_str());
            };
            expectText(call, expected(row.copied, row.wine));
        };
        expectDefault("s", "none", file);
        expectDefault("none", "k", file);
        expectDefault("s", "k", missing);
    }
}

TEST(ProfileReads, ReadsIntegers) {
    struct Row {
        const char* text;
        INT value;
        const char* reason;
    };
    constexpr INT kOther = -77;
    const Row rows[] = {
        {"0", 0, "zero"},
        {"12", 12, "digits"},
        {"-12", -12, "a sign"},
        {"+12", 12, "the other sign"},
        {"  12  ", 12, "blanks around"},
        {"\t7", 7, "a tab before"},
        {"12abc", 12, "text behind"},
        {"12 34", 12, "a blank ends it"},
        {"12;x", 12, "a comment is text"},
        {"1.9", 1, "a point is text"},
        {"1e3", 1, "an exponent is text"},
        {"1,000", 1, "a comma is text"},
        {"abc", 0, "no number"},
        {"x12", 0, "no number at the start"},
        {"- 12", 0, "a blank behind the sign"},
        {"--1", 0, "two signs"},
        {"+-1", 0, "two signs"},
        {"-", 0, "a sign alone"},
        {"+", 0, "a sign alone"},
        {"=1", 0, "a second ="},
        {"010", 10, "leading zeros are decimal"},
        {"0009", 9, "leading zeros are decimal"},
        {"0x1F", 31, "hexadecimal"},
        {"0xfg", 15, "hexadecimal up to other text"},
        {"-0x10", -16, "hexadecimal with a sign"},
        {"0x", 0, "no digits behind it"},
        {"0X1f", 0, "the sign of it is a small x"},
        {"0b11", 3, "binary"},
        {"0b12", 1, "binary up to other text"},
        {"0o17", 15, "octal"},
        {"0o19", 1, "octal up to other text"},
        {"0xFFFFFFFF", -1, "all bits"},
        {"2147483647", 2147483647, "the largest"},
        {"2147483648", -2147483647 - 1, "one more is the smallest"},
        {"-2147483648", -2147483647 - 1, "the smallest"},
        {"-2147483649", 2147483647, "one less is the largest"},
        {"4294967295", -1, "all bits"},
        {"4294967296", 0, "the bits above 32 are lost"},
        {"4294967297", 1, "the bits above 32 are lost"},
        {"99999999999999999999", 1661992959, "the bits above 32 are lost"},
        {"\"12\"", 12, "in quotes"},
        {"'-3'", -3, "in quotes"},
        {"\"  3\"", 3, "blanks in quotes"},
        {"\"12", 0, "an open quote is text"},
        {"true", 0, "a word"},
        {"", kOther, "an empty value is none"},
        {"   ", kOther, "blanks are an empty value"},
        {"\"\"", kOther, "quotes around nothing are an empty value"},
    };
    const ScratchFolder scratch;
    for (const Row& row : rows) {
        const std::string file = scratch.file("f.ini", "[s]\r\nk=" + std::string(row.text) + "\r\n");
        EXPECT_EQ(static_cast<INT>(GetPrivateProfileIntA(" S", "K ", kOther, file.c_str())), row.value)
            << row.reason << ": " << row.text;
        EXPECT_EQ(static_cast<INT>(GetPrivateProfileIntA("s", "none", kOther, file.c_str())), kOther);
    }
    const std::string missing = scratch.path("missing.ini");
    EXPECT_EQ(GetPrivateProfileIntA("s", "k", 5, missing.c_str()), 5u);
    EXPECT_EQ(GetPrivateProfileIntA("none", "k", 0, missing.c_str()), 0u);
}

TEST(ProfileReads, LongLinesAreWhole) {
    for (const std::size_t length : {1000u, 65535u, 65536u, 65537u, 200000u}) {
        // Wine takes no arguments of 32 KB and more.
        const std::string value(length, 'v'), name(onWine() ? 1000 : length, 'n');
        const ScratchFolder scratch;
        const std::string rest = "\r\n" + name + "=1\r\n[" + name + "]\r\nz=2\r\n";
        const std::string file = scratch.file("f.ini", "[s]\r\nk=" + value + rest);
        SCOPED_TRACE(length);
        const auto call = [&](char* buffer, DWORD size) {
            return GetPrivateProfileStringA("s", "k", "", buffer, size, file.c_str());
        };
        expectText(call, value);
        EXPECT_EQ(GetPrivateProfileIntA("s", name.c_str(), 0, file.c_str()), 1u);
        EXPECT_EQ(GetPrivateProfileIntA(name.c_str(), "z", 0, file.c_str()), 2u);
    }
}

TEST(ProfileReads, ZerosEndValuesAndNames) {
    using namespace std::string_literals;
    expectReads("[s]\r\na=1\0b=2\r\nc=3\r\n\0d=4\r\n"s, {{"s", "a", "1", "what is behind a zero is lost"},
                                                         {"s", "b", kGone, "in its line"},
                                                         {"s", "c", "3", "and no further"},
                                                         {"s", "d", kGone, "a name too"}});
}

TEST(ProfileReads, ACutTextLeavesMoreDataAsTheError) {
    const ScratchFolder scratch;
    const std::string file = scratch.file("f.ini", "[s]\r\nk=value\r\n");
    char buffer[9];
    EXPECT_TRUE(gives([&] { return GetPrivateProfileStringA("s", "k", "", buffer, 5, file.c_str()); },
                      DWORD{4}, onWine() ? 0 : ERROR_MORE_DATA));
}

TEST(ProfileReads, ANameWithoutAFolderIsInTheFolderOfWindows) {
    char folder[MAX_PATH];
    GetWindowsDirectoryA(folder, MAX_PATH);
    const std::string path = std::string(folder) + "\\kortest.ini";
    DeleteFileA(path.c_str());
    EXPECT_TRUE(WritePrivateProfileStringA("s", "k", "-9 \"x\"", "kortest.ini"));
    EXPECT_EQ(bytesOf(path), "[s]\r\nk=-9 \"x\"\r\n");
    EXPECT_EQ(GetPrivateProfileIntA("s", "k", 0, "KORTEST.INI"), static_cast<UINT>(-9));
    DeleteFileA(path.c_str());
    EXPECT_EQ(GetPrivateProfileIntA("s", "k", 5, "kortest.ini"), 5u);

    EXPECT_EQ(GetProfileIntA("KorUtilTest", "k", 5), 5u);
    EXPECT_TRUE(WritePrivateProfileStringA("KorUtilTest", "k", "'12 x'", "win.ini"));
    EXPECT_EQ(GetProfileIntA("korutiltest", "K", 5), 12u);
    expectText(
        [&](char* buffer, DWORD size) { return GetProfileStringA("KorUtilTest", "k", "", buffer, size); },
        "12 x", true);
    expectList(
        [&](char* buffer, DWORD size) { return GetProfileStringA("KorUtilTest", nullptr, "", buffer, size); },
        "k|");
    EXPECT_TRUE(WritePrivateProfileStringA("KorUtilTest", nullptr, nullptr, "WIN.INI"));
    expectText([&](char* buffer,
                   DWORD size) { return GetProfileStringA("KorUtilTest", "k", "none ", buffer, size); },
               "none");
}

}  // namespace
