// korutil profile and korutil path.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <span>

#include "tests/tools/run_korutil.h"

namespace {

using kor::test::Call;
using kor::test::Outcome;
using kor::test::run;
using kor::test::WorkFolder;

struct Case {
    std::vector<std::string> arguments;
    int status;
    std::string out;
    std::string err;
};

std::string shownCall(const std::vector<std::string>& words) {
    std::string shown;
    for (const std::string& word : words)
        shown += word + ' ';
    return shown;
}

void expectAll(const WorkFolder& folder, std::span<const Case> cases) {
    for (const Case& c : cases) {
        const Outcome outcome = run(folder, c.arguments);
        EXPECT_EQ(outcome.status, c.status) << shownCall(c.arguments);
        EXPECT_EQ(outcome.out, c.out) << shownCall(c.arguments);
        EXPECT_EQ(outcome.err, c.err.empty() ? "" : "korutil: " + c.err + '\n') << shownCall(c.arguments);
    }
}

constexpr char kLab[] =
    "; installation\r\n[Camera]\r\nExposure = 120\r\nGain=0.46\r\nName=\"Kamera \xC4\"\r\nEmpty=\r\n"
    "exposure=7\r\nMarks=1.5,2.5,,3\r\nSteps=1,-2e3,.5\r\nHex=0aFF\r\nOdd=01ABF\r\nTwelve=12abc\r\n"
    "Dark=..\\dark.tif\r\nBig=4294967295\r\n[Stage]\r\nSpeed=3\r\n[camera]\r\nHidden=1\r\n";
constexpr char kUser[] = "[CAMERA]\nexposure=250\nGain=\nOwn=1\n";

TEST(ProfileCommand, SetMixesNoCodePages) {
    const WorkFolder folder;
    folder.write("u.ini", "[S]\nu=M\xC3\xBCller\n");
    const Case cases[] = {
        {{"profile", "set", "u.ini", "S", "w",
          "Gr\xC3\xB6\xC3\x9F"
          "e"},
         1,
         "",
         "u.ini: it looks like UTF-8 without a byte-order mark, and the text would be stored in the code "
         "page: "
         "save it with the mark, or set KORUTIL_CODEPAGE=65001"},
        {{"profile", "set", "u.ini", "S", "w", "plain"}, 0, "", ""},
    };
    expectAll(folder, cases);
    EXPECT_EQ(folder.read("u.ini"), "[S]\nu=M\xC3\xBCller\nw=plain\n");
}

TEST(ProfileCommand, GetShowsWhatTheLibraryReads) {
    const WorkFolder folder;
    folder.write("lab.ini", kLab);
    folder.write("user.ini", kUser);
    const auto get = [](std::string key, std::vector<std::string> options = {}) {
        std::vector<std::string> words = {"profile", "get", "lab.ini", "camera", std::move(key)};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    };
    const auto both = [](std::string key, std::vector<std::string> options = {}) {
        std::vector<std::string> words = {"profile",      "get",           "user.ini", "Camera",
                                          std::move(key), "--application", "lab.ini",  "--origin"};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    };
    const Case cases[] = {
        {get("EXPOSURE"), 0, "120\n", ""},
        {get("name"), 0, "Kamera Ä\n", ""},
        {get("Empty"), 0, "\n", ""},
        {get("Exposure", {"--int"}), 0, "120\n", ""},
        {get("Exposure", {"--double", "--json"}), 0,
         "{\"section\":\"camera\",\"key\":\"Exposure\",\"value\":120,\"file\":\"lab.ini\"}\n", ""},
        {get("Name", {"--json"}), 0,
         "{\"section\":\"camera\",\"key\":\"Name\",\"value\":\"Kamera Ä\",\"file\":\"lab.ini\"}\n", ""},
        {get("Steps", {"--doubles"}), 0, "1,-2000,0.5\n", ""},
        {get("Empty", {"--doubles"}), 0, "\n", ""},
        {get("Hex", {"--bytes"}), 0, "0AFF\n", ""},
        {get("none"), 1, "", "lab.ini: section [camera] has no key 'none'"},
        {{"profile", "get", "lab.ini", "none", "x"}, 1, "", "lab.ini: there is no section [none]"},
        {get("Twelve", {"--int"}), 1, "",
         "lab.ini: [camera] Twelve: '12abc' is no whole number of 32 bits; the library reads 12"},
        {get("Big", {"--int"}), 1, "",
         "lab.ini: [camera] Big: '4294967295' is no whole number of 32 bits; the library reads -1"},
        {get("Twelve", {"--double"}), 1, "",
         "lab.ini: [camera] Twelve: '12abc' is no number; the library reads 12"},
        {get("Name", {"--double"}), 1, "",
         "lab.ini: [camera] Name: 'Kamera Ä' is no number; the library takes it for missing"},
        {get("Marks", {"--doubles"}), 1, "",
         "lab.ini: [camera] Marks: '1.5,2.5,,3' is no list of numbers joined by commas; the library reads "
         "the "
         "first 2"},
        {get("Odd", {"--bytes"}), 1, "",
         "lab.ini: [camera] Odd: '01ABF' is no row of hexadecimal digit pairs; the library refuses it"},
        {both("Exposure", {"--int"}), 0, "250\tuser.ini\n", ""},
        {both("Name"), 0, "Kamera Ä\tlab.ini\n", ""},
        {both("Gain"), 0, "\tuser.ini\n", ""},  // an empty value does not fall back
        {both("Empty"), 0, "\tlab.ini\n", ""},
        {both("none"), 1, "", "user.ini and lab.ini: section [Camera] has no key 'none'"},
    };
    expectAll(folder, cases);
    EXPECT_EQ(run(folder, {"profile", "get", "lab.ini", "Camera", "Dark", "--paths"}).out, [&] {
        std::string parent = std::filesystem::path(folder.path("")).parent_path().parent_path();
        std::replace(parent.begin(), parent.end(), '/', '\\');
        return "Z:" + parent + "\\dark.tif\n";
    }());
    EXPECT_EQ(folder.read("lab.ini"), kLab);
    // Longer than the pieces in which it is written.
    std::string longText;
    while (longText.size() < 60000)
        longText += "Ä日\\";
    folder.write("long.ini", "\xEF\xBB\xBF[S]\nA=" + longText + "\n");
    const std::vector<std::pair<std::string, std::string>> utf8 = {{"KORUTIL_CODEPAGE", "65001"}};
    EXPECT_EQ(
        run(folder, Call{.arguments = {"profile", "get", "long.ini", "S", "A"}, .environment = utf8}).out,
        longText + '\n');
}

TEST(ProfileCommand, ListsAndSections) {
    const WorkFolder folder;
    folder.write("lab.ini", "[Camera]\nGain=0.46\nEmpty=\nName=\xC4\ngain=2\n[Stage]\n[camera]\nHidden=1\n");
    folder.write("user.ini", kUser);
    folder.write("odd.ini", "[S]\nA=\1C:\\x01\\xyz\n");
    const Case cases[] = {
        {{"profile", "list", "lab.ini", "camera"}, 0, "Gain=0.46\nEmpty=\nName=Ä\n", ""},
        {{"profile", "list", "user.ini", "Camera", "--application", "lab.ini", "--origin"},
         0,
         "key       value  from\nexposure  250    user.ini\nGain             user.ini\nOwn       1      "
         "user.ini\n"
         "Empty            lab.ini\nName      Ä      lab.ini\n",
         ""},
        {{"profile", "list", "missing.ini", "Camera", "--application", "lab.ini"},
         0,
         "Gain=0.46\nEmpty=\nName=Ä\n",
         ""},
        {{"profile", "list", "user.ini", "camera", "--json"},
         0,
         "{\"section\":\"camera\",\"entries\":[\n  "
         "{\"key\":\"exposure\",\"value\":\"250\",\"file\":\"user.ini\"},\n"
         "  {\"key\":\"Gain\",\"value\":\"\",\"file\":\"user.ini\"},\n"
         "  {\"key\":\"Own\",\"value\":\"1\",\"file\":\"user.ini\"}\n]}\n",
         ""},
        {{"profile", "list", "lab.ini", "none"}, 1, "", "lab.ini: there is no section [none]"},
        {{"profile", "list", "odd.ini", "S"}, 0, "A=\\x01C:\\x5Cx01\\xyz\n", ""},
        {{"profile", "sections", "lab.ini"}, 0, "Camera\nStage\n", ""},
        {{"profile", "sections", "user.ini", "--application", "lab.ini", "--json"},
         0,
         "[\"CAMERA\",\"Stage\"]\n",
         ""},
        {{"profile", "list", "missing.ini", "Camera"}, 1, "", "missing.ini: No such file or directory"},
    };
    expectAll(folder, cases);
}

TEST(ProfileCommand, SetStoresWhatIsReadAndChangesNothingElse) {
    const WorkFolder folder;
    struct Stored {
        std::vector<std::string> words;  // behind FILE
        std::string line;                // what then stands in the file
        std::string read;
    };
    const Stored cases[] = {
        {{"120", "--int"}, "k=120", "120"},
        {{"-0.5", "--double"}, "k=-0.5", "-0.5"},
        {{"1e20", "--double"}, "k=1e+020", "1e+020"},
        {{"1,2.5,-3e-7", "--doubles"}, "k=1,2.5,-3e-007", "1,2.5,-3e-007"},
        {{"", "--doubles"}, "k=", ""},
        {{"01abFF", "--bytes"}, "k=01ABFF", "01ABFF"},
        {{"text µ"}, "k=text \xB5", "text µ"},
        {{" blanks "}, "k=\" blanks \"", " blanks "},
        {{"\"quoted\""}, "k=\"\"quoted\"\"", "\"quoted\""},
        {{"a=b ; c"}, "k=a=b ; c", "a=b ; c"},
    };
    for (const Stored& c : cases) {
        folder.write("a.ini", "; note\r\n\r\n[S] \r\nk=old\r\nOther=1\r\n");
        std::vector<std::string> words = {"profile", "set", "a.ini", "s", "K"};
        words.insert(words.end(), c.words.begin(), c.words.end());
        const Outcome outcome = run(folder, words);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::string file = folder.read("a.ini");
        const std::size_t start = file.find("[S] \r\n") + 6;
        const std::string line = file.substr(start, file.find("\r\n", start) - start);
        EXPECT_EQ(line, c.line) << shownCall(words);
        EXPECT_EQ(file.replace(start, line.size(), "*"), "; note\r\n\r\n[S] \r\n*\r\nOther=1\r\n");
        EXPECT_EQ(run(folder, {"profile", "get", "a.ini", "S", "k"}).out, c.read + '\n') << shownCall(words);
    }
}

TEST(ProfileCommand, PathsAreStoredRelativeAndListsAbsolute) {
    const WorkFolder folder;
    std::string here = "Z:" + folder.path("");
    std::replace(here.begin(), here.end(), '/', '\\');
    EXPECT_EQ(run(folder, {"profile", "set", "a.ini", "S", "One", here + "x\\a.tif", "--paths"}).err, "");
    EXPECT_EQ(run(folder, {"profile", "set", "a.ini", "S", "Two", "x\\a.tif;C:\\b.tif", "--paths"}).err, "");
    EXPECT_EQ(run(folder, {"profile", "list", "a.ini", "S"}).out,
              "One=x\\a.tif\nTwo=" + here + "x\\a.tif;C:\\b.tif\n");
    EXPECT_EQ(run(folder, {"profile", "get", "a.ini", "S", "One", "--paths"}).out, here + "x\\a.tif\n");
}

TEST(ProfileCommand, DeleteTellsWhatIsReadFromThenOn) {
    const WorkFolder folder;
    folder.write("a.ini", "[S]\nA=1\n; note\na=2\nB=3\n");
    const Case cases[] = {
        {{"profile", "delete", "a.ini", "S", "A"},
         0,
         "",
         "a.ini: [S] A stands there once more and is now read as '2'"},
        {{"profile", "delete", "a.ini", "s", "a"}, 0, "", ""},
        {{"profile", "delete", "a.ini", "S", "A"}, 1, "", "a.ini: section [S] has no key 'A'"},
        {{"profile", "delete", "b.ini", "S", "A"}, 1, "", "b.ini: No such file or directory"},
    };
    expectAll(folder, cases);
    EXPECT_EQ(folder.read("a.ini"), "[S]\n; note\nB=3\n");
}

TEST(ProfileCommand, WhatCannotBeWrittenIsAFailure) {
    const WorkFolder folder;
    folder.write("a.ini", kUser);
    EXPECT_EQ(run(folder, {"profile", "set", "a.ini", "S", "日", "x"}).err,
              "korutil: KEY: code page 1252 cannot express U+65E5 '日'\n");
    EXPECT_EQ(run(folder, {"profile", "set", "日.ini", "S", "K", "x"}).err,
              "korutil: 日.ini: code page 1252 cannot express U+65E5 '日'\n");
    EXPECT_EQ(run(folder, {"profile", "set", "no/a.ini", "S", "K", "x"}).err,
              "korutil: no/a.ini: No such file or directory\n");
    ::chmod(folder.path("a.ini").c_str(), 0444);
    const Outcome readOnly = run(folder, {"profile", "set", "a.ini", "S", "K", "x"});
    EXPECT_EQ(readOnly.status, 1);
    EXPECT_TRUE(readOnly.err.starts_with("korutil: a.ini: Access is denied")) << readOnly.err;
    EXPECT_EQ(folder.read("a.ini"), kUser);
    ::chmod(folder.path("a.ini").c_str(), 0644);
    std::string many = "1";
    while (many.size() < 520)
        many += ",1";
    // What cannot be read back leaves the value that is there.
    EXPECT_EQ(run(folder, {"profile", "set", "a.ini", "camera", "Own", many, "--doubles"}).status, 1);
    EXPECT_EQ(folder.read("a.ini"), kUser);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.ini"});
}

TEST(ProfileCommand, DiffComparesWhatIsRead) {
    const WorkFolder folder;
    folder.write("a.ini", "[S]\nA=1\nB=2\nb=9\n[T]\nX=\n");
    folder.write("same.ini", "; other\r\n[t]\r\nx=\"\"\r\n[s]\r\n b = '2' \r\nA=1\r\n[T]\r\nZ=5\r\n");
    folder.write("other.ini", "[S]\nA=2\nC=\n[U]\nA=1\n");
    const Case cases[] = {
        {{"profile", "diff", "a.ini", "a.ini"}, 0, "", ""},
        {{"profile", "diff", "a.ini", "same.ini"},
         0,
         "a.ini and same.ini hold the same settings, written differently\n",
         ""},
        {{"profile", "diff", "a.ini", "other.ini"},
         1,
         "[S]\n-A=1\n+A=2\n-B=2\n+C=\n[T]\n-X=\n[U]\n+A=1\n",
         ""},
        {{"profile", "diff", "a.ini", "same.ini", "--json"}, 0, "[]\n", ""},
        {{"profile", "diff", "same.ini", "other.ini", "--json"},
         1,
         "[\n  {\"section\":\"t\",\"key\":\"x\",\"a\":\"\",\"b\":null},\n"
         "  {\"section\":\"s\",\"key\":\"b\",\"a\":\"2\",\"b\":null},\n"
         "  {\"section\":\"s\",\"key\":\"A\",\"a\":\"1\",\"b\":\"2\"},\n"
         "  {\"section\":\"s\",\"key\":\"C\",\"a\":null,\"b\":\"\"},\n"
         "  {\"section\":\"U\",\"key\":\"A\",\"a\":null,\"b\":\"1\"}\n]\n",
         ""},
        {{"profile", "diff", "a.ini", "none.ini"}, 2, "", "none.ini: No such file or directory"},
    };
    expectAll(folder, cases);
    const std::string unicode = "\xEF\xBB\xBF[S]\nA=\xE6\x97";
    folder.write("a.ini", unicode + "\xA5\n");
    folder.write("b.ini", unicode + "\xA6\n");
    const Case unlike[] = {{{"profile", "diff", "a.ini", "a.ini"}, 0, "", ""},
                           {{"profile", "diff", "a.ini", "b.ini"},
                            2,
                            "",
                            "a.ini: code page 1252 cannot express U+65E5 '日'; the files cannot be compared"},
                           {{"profile", "check", "none.ini"}, 2, "", "none.ini: No such file or directory"}};
    expectAll(folder, unlike);
}

TEST(ProfileCommand, CheckNamesWhatIsNotReadAsWritten) {
    const std::string long260(260, 'x');
    struct File {
        std::string bytes;
        std::string findings;  // each "LINE: REASON\n"
    };
    const File files[] = {
        {"", ""},
        {"; c\r\n[S]\r\nA=1\r\nB=a b\r\n\r\n[T]\r\nA=\"\r\n", ""},
        {"A=1\n[S]\n", "1: it stands before the first section\n"},
        {"[S]\nA\n=1\n#A=1\na=1\n",
         "2: there is no '='\n3: there is no key before '='\n4: '#' begins no comment; the line is a "
         "setting\n"
         "5: key 'a' stands on line 2 of this section already; this one is not read\n"},
        {"[S\n[T] x\n[]\n",
         "1: there is no ']'; the section's name is the rest of the line\n"
         "2: what stands behind ']' is not read\n3: the section has no name\n"},
        {"[S]\nA=1\na=2\n[T]\nA=3\n[s]\nB=1\nB=2\n",
         "3: key 'a' stands on line 2 of this section already; this one is not read\n"
         "6: section 's' stands on line 1 already; nothing below this one is read\n"},
        {"[ S ]\n A = 'x' \n",
         "1: the blanks around the section's name are not part of it\n"
         "2: the blanks before the key, before '=', behind '=', at the end are not read\n"
         "2: the quotes around the value are not read\n"},
        {"[S]\nA=5 ; five\nB=#fff\nC=a;b\n",
         "2: what stands behind ';' is no comment, but read with the value\n"},
        {"[S]\nA=" + long260 + "\nB=" + std::string(130, '1') + "\nC=" + std::string(135, '1') + "\n" +
             long260 + "=1\n",
         "2: the value has 260 characters; many readers take 259\n"
         "4: the number has 135 characters; many readers take 127\n"
         "5: the key has 260 characters; many readers take 259\n"},
        {std::string("[S]\nA=x\0y\n", 10), "2: it holds a zero byte; what stands behind it is not read\n"},
        {"[S]\nA=1\rB=2\nB=3\n",
         "2: a carriage return without a line feed ends the line\n"
         "3: key 'B' stands on line 2 of this section already; this one is not read\n"},
        {"[S]\rA=1\r", ""},
        {"[S]\nA=\x81\n", "2: 0x81 is no character of code page 1252\n"},
        {"[S]\nA=\xC3\xA4\n",
         "2: the file looks like UTF-8, but without a byte-order mark it is not read as that: 'A=Ã¤'\n"},
        {"\xEF\xBB\xBF[S]\nA=\xC3\xA4\nB=\xE6\x97\xA5\nC=\xFF\n",
         "3: code page 1252 cannot express U+65E5 '日'\n4: 0xFF is not UTF-8\n"},
        {std::string("\xFF\xFE[\0S\0]\0\n\0A\0=\0\xE4\0\n\0B\0=\0\xE5\x65\n\0", 26),
         "3: code page 1252 cannot express U+65E5 '日'\n"},
    };
    const WorkFolder folder;
    for (const File& file : files) {
        folder.write("a.ini", file.bytes);
        std::string expected;
        for (std::size_t start = 0; start < file.findings.size();) {
            const std::size_t end = file.findings.find('\n', start) + 1;
            expected += "a.ini:" + file.findings.substr(start, end - start);
            start = end;
        }
        const Outcome outcome = run(folder, {"profile", "check", "a.ini"});
        EXPECT_EQ(outcome.out, expected) << file.bytes;
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, expected.empty() ? 0 : 1);
    }
    folder.write("a.ini", "[\x83\x5D]\nA=\x83\x5C\n");  // second bytes that look like ] and a backslash
    const std::vector<std::pair<std::string, std::string>> japanese = {{"KORUTIL_CODEPAGE", "932"}};
    EXPECT_EQ(run(folder, Call{.arguments = {"profile", "check", "a.ini"}, .environment = japanese}).out, "");
    EXPECT_EQ(
        run(folder, Call{.arguments = {"profile", "get", "a.ini", "ゾ", "A"}, .environment = japanese}).out,
        "ソ\n");
    folder.write("a.ini", "[ S ]\nA = 'x'\nB\n");
    EXPECT_EQ(run(folder, {"profile", "check", "a.ini", "--ignore-layout", "--json"}).out,
              "[\n  {\"line\":3,\"reason\":\"there is no '='\"}\n]\n");
}

TEST(PathCommand, ShowsWhatTheLibraryMakesOfAPath) {
    const WorkFolder folder;
    const std::string base = "c:\\a\\b\\file";
    const Case cases[] = {
        {{"path", "relative", "c:\\a\\b\\c.txt", "--base", "c:\\a\\x\\y"}, 0, "..\\b\\c.txt\n", ""},
        {{"path", "relative", "d:\\Ä.txt", "--base", base}, 0, "d:\\Ä.txt\n", ""},
        {{"path", "absolute", "..\\d.txt", "--base", base}, 0, "c:\\a\\d.txt\n", ""},
        {{"path", "relative", "x;;y", "--base", base}, 0, "c:\\a\\b\\x;c:\\a\\b\\y\n", ""},
        {{"path", "absolute", "x;..\\..\\..\\y", "--base", base},
         0,
         "c:\\a\\b\\x\n",
         "x;..\\..\\..\\y: 1 of 2 paths cannot be converted and are left out"},
        {{"path", "absolute", "..\\..\\..\\..\\y", "--base", base},
         1,
         "",
         "..\\..\\..\\..\\y: it cannot be converted for this base"},
        {{"path", "absolute", "x", "--base", "b"},
         1,
         "",
         "b: the base is no absolute path, like c:\\folder\\file"},
        {{"path", "beautify", "C:\\WINNT\\SYSTEM32\\FILE.DAT"}, 0, "C:\\Winnt\\System32\\File.dat\n", ""},
        {{"path", "expand", "c:\\x"}, 0, "c:\\x\n", ""},
        {{"path", "beautify", "日"}, 1, "", "PATH: code page 1252 cannot express U+65E5 '日'"},
        {{"path", "beautify", std::string(260, 'X')}, 1, "", "PATH: the path is too long for the library"},
    };
    expectAll(folder, cases);
    folder.write("HKEY_LOCAL_MACHINE.reg",
                 "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\software\\Quorvex\\Lumetra\\3.0\\Directories]\r\n"
                 "\"Images\"=\"D:\\\\images\"\r\n");
    const Call expand{.arguments = {"path", "expand", "<images>\\a\\b.tif"},
                      .environment = {{"KORUTIL_REGISTRY", folder.path("")}}};
    EXPECT_EQ(run(folder, expand).out, "D:\\images\\a\\b.tif\n");
    EXPECT_EQ(run(folder, {"path", "expand", "%none%\\a"}).status, 1);
}

}  // namespace
