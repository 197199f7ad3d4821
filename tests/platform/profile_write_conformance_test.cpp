// Writing initialisation files: the bytes of the file afterwards.
#include "tests/platform/profile_conformance.h"

namespace {

using namespace kor::test;
using namespace kor::test::profile;

struct Write {
    const char* before;
    const char* section;
    const char* key;    // null: the section goes
    const char* value;  // null: the key goes
    const char* after;
    const char* reason;
    const char* wine = nullptr;
};

void expectWrites(std::initializer_list<Write> rows, std::string (*bytes)(std::string_view) = withCrLf) {
    const ScratchFolder scratch;
    for (const Write& row : rows) {
        SCOPED_TRACE(std::string(row.reason) + ": " + readable(row.before) + " with " + row.section + ", " +
                     (row.key ? row.key : "(null)") + ", " + (row.value ? row.value : "(null)"));
        const std::string file = scratch.file("f.ini", bytes(row.before));
        EXPECT_TRUE(WritePrivateProfileStringA(row.section, row.key, row.value, file.c_str()));
        EXPECT_EQ(readable(bytesOf(file)), readable(bytes(expected(row.after, row.wine))));
    }
}

TEST(ProfileWrites, WritesValues) {
    constexpr const char* kTwo = "[a]\nx=1\ny=2\n[b]\nz=3\n";
    expectWrites({
        {kTwo, "a", "x", "9", "[a]\nx=9\ny=2\n[b]\nz=3\n", "the first key"},
        {kTwo, "a", "y", "9", "[a]\nx=1\ny=9\n[b]\nz=3\n", "the last key"},
        {kTwo, "b", "z", "9", "[a]\nx=1\ny=2\n[b]\nz=9\n", "in the last section"},
        {kTwo, "A", "X", "9", "[a]\nx=9\ny=2\n[b]\nz=3\n", "the case of the names in the file stays"},
        {kTwo, " a ", " x ", "9", "[a]\nx=9\ny=2\n[b]\nz=3\n", "blanks around names go"},
        {kTwo, "a", "x", "1", kTwo, "the same value"},
        {kTwo, "a", "x", "", "[a]\nx=\ny=2\n[b]\nz=3\n", "an empty value"},
        {kTwo, "a", "x", "longer than before", "[a]\nx=longer than before\ny=2\n[b]\nz=3\n", "longer"},
        {kTwo, "a", "x", "\"q\"", "[a]\nx=\"q\"\ny=2\n[b]\nz=3\n", "quotes as given"},
        {kTwo, "a", "x", "v ", "[a]\nx=v \ny=2\n[b]\nz=3\n", "blanks at the end as given"},
        {kTwo, "a", "x", " v ", "[a]\nx= v \ny=2\n[b]\nz=3\n", "blanks as given",
         "[a]\nx=v \ny=2\n[b]\nz=3\n"},
        {"[a]\n X\t= 1 \n", "a", "x", "2", "[a]\n X\t= 2\n", "what is before the value stays", "[a]\nX=2\n"},
        {kTwo, "a", "\tx", "9", "[a]\nx=1\ny=2\n\tx=9\n[b]\nz=3\n", "a tab is part of the key",
         "[a]\nx=9\ny=2\n[b]\nz=3\n"},
        {kTwo, "a", "x", "a=b", "[a]\nx=a=b\ny=2\n[b]\nz=3\n", "= as given"},
        {kTwo, "a", "x", ";c", "[a]\nx=;c\ny=2\n[b]\nz=3\n", "a semicolon as given"},
        {kTwo, "a", "n", "9", "[a]\nx=1\ny=2\nn=9\n[b]\nz=3\n", "a new key is the last of its section"},
        {kTwo, "b", "n", "9", "[a]\nx=1\ny=2\n[b]\nz=3\nn=9\n", "also of the last one"},
        {kTwo, "a", "N m", "9", "[a]\nx=1\ny=2\nN m=9\n[b]\nz=3\n", "with its case and blanks"},
        {kTwo, "a", "n=m", "9", "[a]\nx=1\ny=2\nn=m=9\n[b]\nz=3\n", "a name that will not be read again"},
        {kTwo, "a", ";n", "9", "[a]\nx=1\ny=2\n;n=9\n[b]\nz=3\n", "a comment"},
        {kTwo, "a", "[n]", "9", "[a]\nx=1\ny=2\n[n]=9\n[b]\nz=3\n", "a name in brackets"},
        {kTwo, "a", "", "9", "[a]\nx=1\ny=2\n=9\n[b]\nz=3\n", "an empty name"},
        {kTwo, "c", "n", "9", "[a]\nx=1\ny=2\n[b]\nz=3\n[c]\nn=9\n", "a new section is the last"},
        {kTwo, "c d", "n", "9", "[a]\nx=1\ny=2\n[b]\nz=3\n[c d]\nn=9\n", "blanks inside its name"},
        {kTwo, "c]d", "n", "9", "[a]\nx=1\ny=2\n[b]\nz=3\n[c]d]\nn=9\n",
         "a name that will be read as another"},
        {kTwo, "[c", "n", "9", "[a]\nx=1\ny=2\n[b]\nz=3\n[[c]\nn=9\n", "a bracket in its name"},
        {kTwo, "", "n", "9", "[a]\nx=1\ny=2\n[b]\nz=3\n[]\nn=9\n", "an empty name",
         "n=9\n[a]\nx=1\ny=2\n[b]\nz=3\n"},
        {"", "a", "x", "1", "[a]\nx=1\n", "an empty file"},
        {"junk\n", "a", "x", "1", "junk\n[a]\nx=1\n", "a file of no sections"},
        {"x=1\n[a]\n", "a", "x", "2", "x=1\n[a]\nx=2\n", "lines before the first section are not its own"},
        {"[a]\nx=1", "a", "x", "2", "[a]\nx=2", "no line end at the end", "[a]\nx=2\n"},
        {"[a]\nx=1", "a", "y", "2", "[a]\nx=1\ny=2\n", "a line end is put before a new line"},
        {"[a]\nx=1", "b", "y", "2", "[a]\nx=1\n[b]\ny=2\n", "a line end is put before a new section"},
        {"[a]", "a", "x", "1", "[a]\nx=1\n", "a line end is put behind the section line"},
        {"[a]\nx=1\nx=2\n", "a", "x", "9", "[a]\nx=9\nx=2\n", "the first of two keys"},
        {"[a]\nx=1\n[A]\nx=2\n", "a", "x", "9", "[a]\nx=9\n[A]\nx=2\n", "in the first of two sections"},
        {"[a]\nx=1\n[A]\ny=2\n", "a", "y", "9", "[a]\nx=1\ny=9\n[A]\ny=2\n", "where it is not looked for"},
        {"[a]\nx=1\n[b]\n[c]\n", "b", "y", "9", "[a]\nx=1\n[b]\ny=9\n[c]\n", "into an empty section"},
        {"[a]t\nx=1\n", "a", "x", "2", "[a]t\nx=2\n", "text behind the section's bracket", "[a]\nx=2\n"},
        {"[a\nx=1\n", "a", "x", "2", "[a\nx=2\n", "a section without its bracket", "[a\nx=1\n[a]\nx=2\n"},
        {"[a]\nlonely\n", "a", "lonely", "1", "[a]\nlonely=1\n", "a line without = becomes the key's"},
        {"[a]\n;x=1\n", "a", "x", "2", "[a]\n;x=1\nx=2\n", "a comment is not the key's"},
        {"[a]\nx=1\n;c\n[b]\n", "a", "y", "2", "[a]\nx=1\n;c\ny=2\n[b]\n", "behind a comment at the end"},
        {";c\n[a]\n;d\nx=1\n;e\ny=2\n", "a", "y", "3", ";c\n[a]\n;d\nx=1\n;e\ny=3\n", "comments stay"},
        {"[a]\nx=1\n\n[b]\ny=2\n", "a", "x", "2", "[a]\nx=2\n\n[b]\ny=2\n", "blank lines stay",
         "[a]\nx=2\n[b]\ny=2\n"},
        {"[a]\nx=1\n\n\n[b]\n", "a", "y", "2", "[a]\nx=1\ny=2\n\n\n[b]\n",
         "before the blank lines at its end", "[a]\nx=1\ny=2\n[b]\n"},
        {"[a]\nx=1\n\n", "b", "y", "2", "[a]\nx=1\n\n[b]\ny=2\n", "behind the blank lines of the file",
         "[a]\nx=1\n[b]\ny=2\n"},
        {"[a]\n u = 1 \nx=1\n", "a", "x", "2", "[a]\n u = 1 \nx=2\n", "blanks of other lines stay",
         "[a]\nu=1\nx=2\n"},
        {" [ a ] \nx=1\n", "a", "x", "2", " [ a ] \nx=2\n", "blanks of section lines stay", "[a]\nx=2\n"},
        {"[a]\nx\n = \ny=1\n", "a", "y", "2", "[a]\nx\n = \ny=2\n", "lines that say nothing stay",
         "[a]\nx\n=\ny=2\n"},
    });
}

TEST(ProfileWrites, DeletesKeysAndSections) {
    constexpr const char* kTwo = "[a]\nx=1\ny=2\n[b]\nz=3\n";
    expectWrites({
        {kTwo, "a", "x", nullptr, "[a]\ny=2\n[b]\nz=3\n", "a key"},
        {kTwo, "A", " Y ", nullptr, "[a]\nx=1\n[b]\nz=3\n", "in any case of letters", kTwo},
        {kTwo, "b", "z", nullptr, "[a]\nx=1\ny=2\n[b]\n", "the last one; the section stays"},
        {kTwo, "a", "none", nullptr, kTwo, "no such key is no failure"},
        {kTwo, "none", "x", nullptr, kTwo, "no such section is no failure"},
        {kTwo, "a", nullptr, nullptr, "[b]\nz=3\n", "a section"},
        {kTwo, "B ", nullptr, nullptr, "[a]\nx=1\ny=2\n", "the last section", kTwo},
        {kTwo, "a", nullptr, "v", "[b]\nz=3\n", "a value does not matter then"},
        {kTwo, "none", nullptr, nullptr, kTwo, "no such section is no failure"},
        {"[a]\nx=1\nx=2\n", "a", "x", nullptr, "[a]\nx=2\n", "the first of two keys"},
        {"[a]\nx=1\n[b]\n[A]\nx=2\n", "a", nullptr, nullptr, "[b]\n[A]\nx=2\n", "the first of two sections"},
        {"[a]\nx=1\n", "a", nullptr, nullptr, "", "the only section"},
        {"[a]\nx=1", "a", "x", nullptr, "[a]\n", "the last line, without a line end"},
        {"[a]\n;x=1\nx=2\n", "a", "x", nullptr, "[a]\n;x=1\n", "comments stay"},
        {"[a]\n;x=1\n", "a", "x", nullptr, "[a]\n;x=1\n", "a comment is not the key's"},
        {";0\n[a]\n;1\nx=1\n[b]\n;2\n", "a", nullptr, nullptr, ";0\n;1\n[b]\n;2\n",
         "comments outlive their section", ";0\n[b]\n;2\n"},
        {"[a]\nlonely\nx=1\n[b]\n", "a", nullptr, nullptr, "[b]\n", "lines without = do not"},
        {"junk\n[a]\nx=1\n", "a", nullptr, nullptr, "junk\n", "what is before the first section stays"},
        {"[a]\nx=1\n\n[b]\ny=2\n", "a", "x", nullptr, "[a]\n\n[b]\ny=2\n", "blank lines stay",
         "[a]\n[b]\ny=2\n"},
        {"", "a", "x", nullptr, "", "an empty file"},
        {"", "a", nullptr, nullptr, "", "an empty file"},
    });
}

TEST(ProfileWrites, ReplacesSections) {
    struct Row {
        const char* before;
        const char* section;
        const char* lines;  // each ends with "|"; null: the section goes
        const char* after;
        const char* reason;
        const char* wine = nullptr;
    };
    constexpr const char* kTwo = "[a]\nx=1\ny=2\n[b]\nz=3\n";
    const Row rows[] = {
        {kTwo, "a", "n=1|m=2|", "[a]\nn=1\nm=2\n[b]\nz=3\n", "new lines for old ones"},
        {kTwo, "B", "n=1|", "[a]\nx=1\ny=2\n[b]\nn=1\n", "the last section, in any case of letters"},
        {kTwo, "a", "x=1|y=2|", kTwo, "the same lines"},
        {kTwo, "a", "n=1|n=2|", "[a]\nn=1\nn=2\n[b]\nz=3\n", "the same key twice"},
        {kTwo, "a", "n=1=2|", "[a]\nn=1=2\n[b]\nz=3\n", "= in a value"},
        {kTwo, "a", "n=|", "[a]\nn=\n[b]\nz=3\n", "an empty value"},
        {kTwo, "a", "", "[a]\n[b]\nz=3\n", "no lines: the section stays"},
        {kTwo, "a", nullptr, "[b]\nz=3\n", "null: the section goes"},
        {kTwo, "b", nullptr, "[a]\nx=1\ny=2\n", "null: the last section goes"},
        {kTwo, "c", "n=1|", "[a]\nx=1\ny=2\n[b]\nz=3\n[c]\nn=1\n", "a new section"},
        {kTwo, "c", nullptr, kTwo, "null for no section is no failure"},
        {kTwo, "a", "lonely|n=1|", "[a]\nlonely\nn=1\n[b]\nz=3\n",
         "a line without =", "[a]\nn=1\n[b]\nz=3\n"},
        {"[a]\nx=1\n[A]\nx=2\n", "a", "y=3|", "[a]\ny=3\n[A]\nx=2\n", "the first of two sections",
         "[a]\ny=3\n[A]\n"},
        {"[a]", "a", "y=3|", "[a]\ny=3\n", "a section line without a line end"},
        {"", "a", "y=3|z=4|", "[a]\ny=3\nz=4\n", "an empty file"},
        {"junk\n", "a", "y=3|", "junk\n[a]\ny=3\n", "a file of no sections"},
    };
    const ScratchFolder scratch;
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.reason) + ": " + (row.lines ? row.lines : "(null)"));
        const std::string file = scratch.file("f.ini", withCrLf(row.before));
        std::string lines = row.lines ? row.lines : "";
        std::replace(lines.begin(), lines.end(), '|', '\0');
        EXPECT_TRUE(
            WritePrivateProfileSectionA(row.section, row.lines ? lines.c_str() : nullptr, file.c_str()));
        EXPECT_EQ(readable(bytesOf(file)), readable(withCrLf(expected(row.after, row.wine))));
    }
}

std::string asItIs(std::string_view text) { return std::string(text); }

TEST(ProfileWrites, ReadsAndKeepsEveryLineEnd) {
    for (const char* end : {"\r\n", "\n", "\r", "\r\r\n", "\n\n", "\r\n\x1A\r\n"}) {
        std::string text;
        for (const char* line : {"[s]", "a=1", " b = 2 ", ";c", "[t]", "a=3"})
            text += std::string(line) + end;
        SCOPED_TRACE(readable(end));
        expectReads(text, {{"s", "a", "1", "the first key"},
                           {"s", "b", "2", "the next key"},
                           {"t", "a", "3", "the next section"},
                           {"s", nullptr, "a|b|", "the keys"},
                           {nullptr, nullptr, "s|t|", "the sections"}});
    }
    expectWrites({{"[a]\nx=1\ny=2\n", "a", "x", "5", "[a]\nx=5\ny=2\n", "LF alone", "[a]\r\nx=5\r\ny=2\r\n"},
                  {"[a]\nx=1\n", "a", "y", "5", "[a]\nx=1\ny=5\n", "the file's own", "[a]\r\nx=1\r\ny=5\r\n"},
                  {"[a]\nx=1\n", "b", "y", "5", "[a]\nx=1\n[b]\ny=5\n", "the file's own",
                   "[a]\r\nx=1\r\n[b]\r\ny=5\r\n"},
                  {"[a]\nx=1\r\ny=2\n", "a", "y", "5", "[a]\nx=1\r\ny=5\n", "each line its own",
                   "[a]\r\nx=1\r\ny=5\r\n"},
                  {"[a]\nx=1\ny=2\n", "a", "x", nullptr, "[a]\ny=2\n", "LF alone", "[a]\r\ny=2\r\n"}},
                 asItIs);
}

// The same text in each encoding; the value's second letter is no ASCII.
std::string encoded(std::string_view text, std::string_view encoding) {
    std::string result(encoding == "8"   ? "\xEF\xBB\xBF"
                       : encoding == "L" ? "\xFF\xFE"
                       : encoding == "B" ? "\xFE\xFF"
                                         : "");
    for (const char c : text) {
        if (encoding == "L") {
            result += {c, '\0'};
        } else if (encoding == "B") {
            result += {'\0', c};
        } else if (encoding == "8" && c < 0) {
            result += {'\xC3', static_cast<char>(c - 0x40)};  // of Latin-1's second half
        } else {
            result += c;
        }
    }
    return result;
}

TEST(ProfileWrites, ReadsAndKeepsTheEncodingOfAByteOrderMark) {
    struct Row {
        const char* encoding;
        const char* wineKeeps;  // null: it does
    };
    for (const Row& row : {Row{"A", nullptr}, Row{"8", nullptr}, Row{"L", nullptr}, Row{"B", nullptr}}) {
        SCOPED_TRACE(row.encoding);
        const std::string bytes = encoded("[s]\r\na=\xE4\xF6\r\nb=2\r\n", row.encoding);
        expectReads(bytes, {{"s", "a", "\xE4\xF6", "letters beyond ASCII"},
                            {"s", "b", "2", "the next line"},
                            {nullptr, nullptr, "s|", "the section on the mark's line"}});
        const ScratchFolder scratch;
        const std::string file = scratch.file("f.ini", bytes);
        EXPECT_TRUE(WritePrivateProfileStringA("s", "b", "\xFC", file.c_str()));
        EXPECT_TRUE(WritePrivateProfileStringA("s", "\xC4", "3", file.c_str()));
        EXPECT_EQ(bytesOf(file), encoded("[s]\r\na=\xE4\xF6\r\nb=\xFC\r\n\xC4=3\r\n", row.encoding));
        expectReads(bytesOf(file), {{"S", "\xC4", "3", "a name beyond ASCII"},
                                    {"s", "\xE4", "3", "in any case of letters", kGone}});
    }
}

TEST(ProfileWrites, FailuresSayWhy) {
    const ScratchFolder scratch;
    scratch.folder("folder");
    struct Row {
        const char* name;
        DWORD readError;
        DWORD writeError;  // 0: it is made
    };
    const Row rows[] = {
        {"missing.ini", ERROR_FILE_NOT_FOUND, 0},
        {"nowhere\\f.ini", ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
        {"folder", ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
        {"folder\\", ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
        {"a*b", ERROR_INVALID_NAME, ERROR_INVALID_NAME},
        {"a?b", ERROR_INVALID_NAME, ERROR_INVALID_NAME},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string path = scratch.path(row.name);
        const char* file = path.c_str();
        char buffer[40];
        EXPECT_TRUE(gives([&] { return GetPrivateProfileStringA("s", "k", "df ", buffer, 40, file); },
                          DWORD{2}, row.readError));
        EXPECT_STREQ(buffer, "df");
        EXPECT_TRUE(
            gives([&] { return GetPrivateProfileSectionA("s", buffer, 40, file); }, DWORD{0}, row.readError));
        EXPECT_TRUE(
            gives([&] { return GetPrivateProfileSectionNamesA(buffer, 40, file); }, DWORD{0}, row.readError));
        EXPECT_EQ(GetPrivateProfileIntA("s", "k", 7, file), 7u);
        if (row.writeError != 0) {
            EXPECT_TRUE(gives([&] { return WritePrivateProfileStringA("s", "k", "v", file); }, FALSE,
                              row.writeError));
            EXPECT_TRUE(gives([&] { return WritePrivateProfileSectionA("s", "k=v\0", file); }, FALSE,
                              row.writeError));
        } else {
            EXPECT_TRUE(WritePrivateProfileStringA("s", "k", "v", file));
            EXPECT_EQ(bytesOf(path), "[s]\r\nk=v\r\n");
        }
    }
    for (const char* name : {"", ".", "..", "*", "?"}) {
        const DWORD error = *name == '*' || *name == '?' ? ERROR_INVALID_NAME : ERROR_ACCESS_DENIED;
        char buffer[40];
        EXPECT_TRUE(gives([&] { return GetPrivateProfileStringA("s", "k", "d", buffer, 40, name); }, DWORD{1},
                          error));
        EXPECT_TRUE(gives([&] { return WritePrivateProfileStringA("s", "k", "v", name); }, FALSE, error))
            << name;
    }
}

TEST(ProfileWrites, AReadOnlyFileIsNotWritten) {
    const ScratchFolder scratch;
    const std::string file = scratch.file("f.ini", "[s]\r\nk=v\r\n");
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY);
    const auto write = [&](const char* value) {
        return WritePrivateProfileStringA("s", "k", value, file.c_str());
    };
    // Wine leaves it to the system below, which refuses its administrator nothing.
    if (onWine() && File(file.c_str(), GENERIC_WRITE, kShareAll, OPEN_EXISTING).isOpen()) {
        EXPECT_TRUE(write("w"));
        return;
    }
    EXPECT_TRUE(gives([&] { return write("w"); }, FALSE, ERROR_ACCESS_DENIED));
    EXPECT_TRUE(gives([&] { return write(nullptr); }, FALSE, ERROR_ACCESS_DENIED));
    EXPECT_EQ(bytesOf(file), "[s]\r\nk=v\r\n");
}

TEST(ProfileWrites, LongValuesAreWhole) {
    const std::string value(onWine() ? 30000 : 300000, 'v');  // of which Wine takes less than 32 KB
    const ScratchFolder scratch;
    const std::string file = scratch.file("f.ini", "[s]\r\na=1\r\nk=v\r\nz=2\r\n");
    EXPECT_TRUE(WritePrivateProfileStringA("s", "k", value.c_str(), file.c_str()));
    EXPECT_TRUE(bytesOf(file) == "[s]\r\na=1\r\nk=" + value + "\r\nz=2\r\n");
}

TEST(ProfileWrites, NoSectionIsNoneToWrite) {
    const ScratchFolder scratch;
    const std::string file = scratch.file("f.ini", "[s]\r\nk=v\r\n");
    EXPECT_TRUE(gives([&] { return WritePrivateProfileStringA(nullptr, "k", "w", file.c_str()); }, FALSE,
                      ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(WritePrivateProfileStringA(nullptr, nullptr, nullptr, file.c_str()))
        << "forgets what is kept";
    EXPECT_EQ(bytesOf(file), "[s]\r\nk=v\r\n");
    char buffer[9] = "kept";
    EXPECT_TRUE(gives([&] { return GetPrivateProfileSectionA(nullptr, buffer, 9, file.c_str()); }, DWORD{0},
                      ERROR_INVALID_PARAMETER));
}

}  // namespace
