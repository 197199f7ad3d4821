// What every command has in common: options, help, exit statuses, messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/tools/run_korutil.h"

namespace {

using kor::test::Call;
using kor::test::Outcome;
using kor::test::run;
using kor::test::WorkFolder;

constexpr char kSmallTree[] = R"({"id":1,"type":"section","version":0,"children":[
  {"id":2,"type":"long","value":5}
]}
)";

bool isOneLine(const std::string& text) {
    return !text.empty() && text.find('\n') == text.size() - 1 && text.starts_with("korutil: ");
}

TEST(Command, HelpAndVersionGoToStandardOutput) {
    const WorkFolder folder;
    const std::vector<std::vector<std::string>> calls = {{"--help"},
                                                         {"--version"},
                                                         {"tree", "--help"},
                                                         {"tree", "show", "--help"},
                                                         {"tree", "from-json", "--help"},
                                                         {"tree", "set", "--help"},
                                                         {"tree", "delete", "x", "y", "--help"},
                                                         {"tree", "to-profile", "--help"},
                                                         {"profile", "--help"},
                                                         {"profile", "get", "--help"},
                                                         {"path", "expand", "--help"},
                                                         {"errors", "--help"}};
    for (const auto& call : calls) {
        const Outcome outcome = run(folder, call);
        EXPECT_EQ(outcome.status, 0) << call[0];
        EXPECT_FALSE(outcome.out.empty()) << call[0];
        EXPECT_EQ(outcome.err, "") << call[0];
    }
    const std::string list = run(folder, {"--help"}).out;
    for (const char* name : {"tree show", "tree from-profile", "profile set", "path relative", "errors"}) {
        EXPECT_NE(list.find(name), std::string::npos) << name;
    }
    EXPECT_EQ(run(folder, {"--version"}).out.rfind("korutil 1.", 0), 0u);
}

TEST(Command, WrongUsageIsOneLineAndStatus2) {
    const WorkFolder folder;
    const std::vector<std::vector<std::string>> calls = {
        {},
        {"nonsense"},
        {"-h"},
        {"tree"},
        {"--help", "tree"},
        {"--version", "--nonsense"},
        {"tree", "nonsense"},
        {"tree", "--help", "show"},
        {"tree", "show"},
        {"tree", "show", "a", "b"},
        {"tree", "show", "a", "--nonsense"},
        {"tree", "show", "a", "--json=yes"},
        {"tree", "show", "a", "--json", "--json"},
        {"tree", "show", "a", "--offset"},
        {"tree", "show", "a", "--offset", "-1"},
        {"tree", "show", "a", "--offset=12x"},
        {"tree", "show", "a", "--offset=4294967296"},
        {"tree", "show", "--", "a", "--json"},
        {"tree", "set", "a", "1", "long"},
        {"tree", "set", "a", "1", "integer", "5"},
        {"tree", "set", "a", "1", "section", "5"},
        {"tree", "set", "a", "1", "long", "5.5"},
        {"tree", "set", "a", "1", "long", "2147483648"},
        {"tree", "set", "a", "1", "double", "inf"},
        {"tree", "set", "a", "1", "double", "1e999"},
        {"tree", "set", "a", "1", "double", ""},
        {"tree", "set", "a", "1", "point", "5"},
        {"tree", "set", "a", "1", "point", "1,2,3"},
        {"tree", "set", "a", "1", "doubles", "1,,2"},
        {"tree", "set", "a", "1", "doubles", "1,"},
        {"tree", "set", "a", "1", "memory", "ABC"},
        {"tree", "set", "a", "", "long", "5"},
        {"tree", "set", "a", "1/", "long", "5"},
        {"tree", "set", "a", "/1", "long", "5"},
        {"tree", "set", "a", "-1", "long", "5"},
        {"tree", "set", "a", "4294967296", "long", "5"},
        {"tree", "set", "a", "1:long/2", "long", "5"},
        {"tree", "delete", "a", "1:integer"},
        {"tree", "show", "\xFF"},
        {"tree", "to-profile", "a", "b"},
        {"profile"},
        {"profile", "get", "a", "S"},
        {"profile", "get", "a", "", "K"},
        {"profile", "get", "a", "S]", "K"},
        {"profile", "get", "a", "S", "K=1"},
        {"profile", "get", "a", "S", " K"},
        {"profile", "get", "a", "S", "[K"},
        {"profile", "get", "a", "S", "K", "--int", "--bytes"},
        {"profile", "set", "a", "S", "K", "5.5", "--int"},
        {"profile", "set", "a", "S", "K", "x", "--double"},
        {"profile", "set", "a", "S", "K", "1,,2", "--doubles"},
        {"profile", "set", "a", "S", "K", "0", "--bytes"},
        {"profile", "set", "a", "S", "K", "a\nb"},
        {"path", "absolute", "x"},
    };
    for (const auto& call : calls) {
        const Outcome outcome = run(folder, call);
        std::string shown;
        for (const std::string& word : call)
            shown += word + ' ';
        EXPECT_EQ(outcome.status, 2) << shown << outcome.err;
        EXPECT_EQ(outcome.out, "") << shown;
        EXPECT_TRUE(isOneLine(outcome.err)) << shown << outcome.err;
    }
}

TEST(Command, FilesThatCannotBeUsedAreNamedWithTheReason) {
    const WorkFolder folder;
    folder.write("empty", "");
    folder.write("zeros", std::string(64, '\0'));
    folder.write("text", "this is no tree, whatever it may be");
    folder.write("tree.json", kSmallTree);
    folder.write("a\nb", "");
    struct Case {
        std::vector<std::string> arguments;
        std::string err;
    };
    const Case cases[] = {
        {{"tree", "show", "missing"}, "korutil: missing: No such file or directory\n"},
        {{"tree", "show", "missing/x"}, "korutil: missing/x: No such file or directory\n"},
        {{"tree", "show", "."}, "korutil: .: it is a folder\n"},
        {{"tree", "show", "/dev/zero"}, "korutil: /dev/zero: it is no regular file\n"},
        {{"tree", "show", ""}, "korutil: FILE: the name is empty\n"},
        {{"tree", "show", "empty"}, "korutil: empty: it is empty\n"},
        {{"tree", "show", "zeros"}, "korutil: zeros: it is no parameter tree, or is damaged\n"},
        {{"tree", "show", "zeros", "--offset", "64"},
         "korutil: zeros: offset 64 is not inside it (64 bytes)\n"},
        {{"tree", "set", "text", "1", "long", "5"},
         "korutil: text: it is no parameter tree, or was cut off\n"},
        {{"tree", "show", "a\nb"},
         "korutil: a\\x0Ab: the library cannot use this name: a part of it ends in a dot or a blank, or "
         "holds a control "
         "character or one of \\ : * ? \" < > |\n"},
        {{"tree", "from-json", "missing", "x"}, "korutil: missing: No such file or directory\n"},
        {{"tree", "from-json", ".", "x"}, "korutil: .: it is a folder\n"},
        {{"tree", "from-json", "empty", "x"}, "korutil: empty: line 1, column 1: the text ends too early\n"},
        {{"tree", "from-json", "tree.json", "."}, "korutil: .: it is a folder\n"},
        {{"tree", "from-json", "tree.json", "no/x"}, "korutil: no/x: No such file or directory\n"},
        {{"tree", "from-json", "tree.json", "tree.json"}, "korutil: tree.json: it is the JSON file itself\n"},
        {{"tree", "from-json", "tree.json", "/dev/null"}, "korutil: /dev/null: it is no regular file\n"},
        {{"tree", "from-json", "tree.json", "日本"},
         "korutil: 日本: code page 1252 cannot express U+65E5 '日'\n"},
    };
    for (const Case& c : cases) {
        const Outcome outcome = run(folder, c.arguments);
        EXPECT_EQ(outcome.status, 1) << c.err;
        EXPECT_EQ(outcome.out, "") << c.err;
        EXPECT_EQ(outcome.err, c.err);
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a\nb", "empty", "text", "tree.json", "zeros"}));
}

// The library would write to the device, or to nothing, whatever the system calls by that name.
TEST(Command, ANameOfADeviceIsRefused) {
    const WorkFolder folder;
    folder.write("tree.json", kSmallTree);
    folder.write("con.json", kSmallTree);
    for (const std::string name : {"aux.tag", "nul", "PRN.x", "lpt9", "conin$"}) {
        const Outcome outcome = run(folder, {"tree", "from-json", "tree.json", name});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err,
                  "korutil: " + name + ": '" + name + "' is the name of a device for the library\n");
    }
    EXPECT_EQ(run(folder, {"tree", "show", "con.json"}).status, 1);
    EXPECT_EQ(run(folder, {"tree", "from-json", "con.json", "console.aux"}).status, 0);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"con.json", "console.aux", "tree.json"}));
}

TEST(Command, MessagesNameWhatIsMissing) {
    const WorkFolder folder;
    EXPECT_EQ(run(folder, {"tree", "set", "a", "1"}).err,
              "korutil: tree set: TYPE is missing; see korutil tree set --help\n");
    EXPECT_EQ(
        run(folder, {"tree", "show", "--offset", "m.tag"}).err,
        "korutil: tree show: option --offset takes a whole number from 0 to 4294967295, not 'm.tag'; see "
        "korutil tree show --help\n");
    EXPECT_EQ(run(folder, {"tree", "show", "\x1B\xC2\x9B\xC2\xA0"}).err,
              "korutil: \\x1B\\xC2\\x9B\xC2\xA0: No such file or directory\n");
}

TEST(Command, AFolderThatTheCodePageLacksIsNamed) {
    const WorkFolder folder;
    folder.write("a", kSmallTree);
    std::filesystem::create_directory(folder.path("日"));
    std::filesystem::rename(folder.path("a"), folder.path("日/a"));
    EXPECT_EQ(run(folder, {"tree", "show", "日/a"}).err,
              "korutil: " + folder.path("日") + ": code page 1252 cannot express U+65E5 '日'\n");
}

TEST(Command, ACodePageThatIsNotKnownIsRefused) {
    const WorkFolder folder;
    const Outcome outcome = run(
        folder, Call{.arguments = {"tree", "show", "a.tag"}, .environment = {{"KORUTIL_CODEPAGE", "utf8"}}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "korutil: KORUTIL_CODEPAGE: 'utf8' is no code page; use 1252, 932, 936 or 65001\n");
}

TEST(Command, ANameIsWhatTheCodePageCanExpress) {
    const WorkFolder folder;
    folder.write("tree.json", kSmallTree);
    ASSERT_EQ(run(folder, {"tree", "from-json", "tree.json", "Übung µ.tag"}).status, 0);
    EXPECT_EQ(run(folder, {"tree", "show", "Übung µ.tag", "--json"}).out, kSmallTree);
    const Call japanese{.arguments = {"tree", "from-json", "tree.json", "日本.tag"},
                        .environment = {{"KORUTIL_CODEPAGE", "65001"}}};
    EXPECT_EQ(run(folder, japanese).status, 0);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"tree.json", "Übung µ.tag", "日本.tag"}));
}

TEST(Command, OutputThatCannotBeWrittenIsAFailure) {
    const WorkFolder folder;
    const Outcome full = run(folder, Call{.arguments = {"--help"}, .outputFile = "/dev/full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "korutil: standard output: No space left on device\n");

    const Outcome broken = run(folder, Call{.arguments = {"--help"}, .brokenPipe = true});
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.err, "korutil: standard output: Broken pipe\n");

    const Outcome closed = run(folder, Call{.arguments = {"--help"}, .closedOutput = true});
    EXPECT_EQ(closed.status, 1);
    EXPECT_TRUE(isOneLine(closed.err)) << closed.err;
}

TEST(Command, AClosedStandardOutputIsNotTheFileThatIsMade) {
    const WorkFolder folder;
    folder.write("tree.json", kSmallTree);
    const Outcome outcome =
        run(folder, Call{.arguments = {"tree", "from-json", "tree.json", "a.tag"}, .closedOutput = true});
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag", "--json"}).out, kSmallTree);
}

TEST(Errors, ShowsBothMessagesAndTheRing) {
    const WorkFolder folder;
    const Outcome outcome = run(folder, {"errors"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("korutil-missing-file.tag"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("Error 2; No.: 1990001;"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("1. code 2, location 1990001"), std::string::npos) << outcome.out;
    EXPECT_EQ(outcome.out.find('\r'), std::string::npos);
    const std::string json = run(folder, {"errors", "--json"}).out;
    EXPECT_TRUE(json.starts_with(R"({"thrown":{"code":2,"location":1990001,"user":")")) << json;
    EXPECT_NE(json.find(R"("ring":[{"code":2,"location":1990001,)"), std::string::npos) << json;
}

TEST(Errors, RefusesToLieWhenTheFileIsThere) {
    const WorkFolder folder;
    folder.write("korutil-missing-file.tag", "");
    EXPECT_EQ(run(folder, {"errors"}).status, 1);
}

}  // namespace
