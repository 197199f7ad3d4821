// The resource compiler, run as a program.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <string>

#include "platform/posix/kernel/native_name.h"
#include "platform/win32.h"
#include "tests/support/scratch.h"

namespace {

class Korrc : public testing::Test {
  protected:
    Korrc() {
        char native[1024];
        folder_.assign(native, korNativePath(scratch_.path().c_str(), native, sizeof native));
    }

    // The exit status; what the compiler said is in said_.
    int run(const std::string& arguments) {
        const std::string command =
            "cd '" + folder_ + "' && '" KORRC_PROGRAM "' " + arguments + " >said.out 2>&1";
        const int status = system(command.c_str());
        said_ = kor::test::bytesOf(scratch_.path("said.out"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    int compile(const std::string& texts, const std::string& pieces = "") {
        scratch_.file("1033.txt", texts);
        scratch_.file("pieces.txt", pieces);
        return run("--name Test --version 1.2.3 --texts 1033.txt --pieces pieces.txt --library out.dll");
    }

    kor::test::ScratchFolder scratch_;
    std::string folder_, said_;
};

}  // namespace

TEST_F(Korrc, NamesFileAndLineOfABadText) {
    struct {
        const char *texts, *where, *reason;
    } const cases[] = {
        {"1\tone\n\n# note\n1\ttwo\n", "1033.txt:4: ", "line 1 already"},
        {"1\tone\n2\tb\\x\n", "1033.txt:2: ", "escape"},
        {"1\t\xC3\x28\n", "1033.txt:1: ", "UTF-8"},
        {"1\t\xED\xA0\x80\n", "1033.txt:1: ", "UTF-8"},
        {"1\tcut \xE2\x82\n", "1033.txt:1: ", "UTF-8"},
        {"1\t\n", "1033.txt:1: ", "empty"},
        {"1 one\n", "1033.txt:1: ", "tab"},
        {"65536\tone\n", "1033.txt:1: ", "number"},
        {" 1\tone\n", "1033.txt:1: ", "number"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(compile(each.texts), 1) << each.texts;
        EXPECT_EQ(said_.find(std::string("korrc: ") + each.where), 0u) << said_;
        EXPECT_NE(said_.find(each.reason), std::string::npos) << said_;
        EXPECT_EQ(GetFileAttributesA(scratch_.path("out.dll").c_str()), INVALID_FILE_ATTRIBUTES);
    }
    EXPECT_EQ(compile("1\t" + std::string(65536, 'x')), 1);
    EXPECT_NE(said_.find("1033.txt:1: "), std::string::npos) << said_;
}

TEST_F(Korrc, NamesFileAndLineOfABadPiece) {
    struct {
        const char *pieces, *where, *reason;
    } const cases[] = {
        {"window 1\n", "pieces.txt:1: ", "window"},
        {"dialog 1 10 10 0\n", "pieces.txt:1: ", "no end"},
        {"dialog 1 10 10 7\nend\n", "pieces.txt:1: ", "no text 7"},
        {"dialog 1 10 10 0\n\n    button 1 1 1 1 1 7\nend\n", "pieces.txt:3: ", "no text 7"},
        {"dialog 1 10 10 0\n    slider 1 1 1 1 1\nend\n", "pieces.txt:2: ", "slider"},
        {"dialog 1 10 10 0 0\nend\n", "pieces.txt:1: ", "too much"},
        {"cursor 1 32 0\nend\n", "pieces.txt:1: ", "31"},
        {"cursor 1 0 0\n    #x\nend\n", "pieces.txt:2: ", "character"},
        {"numbers 10 1 5\nnumbers 10 1 5\n", "pieces.txt:2: ", "twice"},
        {"data 10 1 missing.bin\n", "missing.bin: ", "opened"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(compile("1\tone\n", each.pieces), 1) << each.pieces;
        EXPECT_EQ(said_.find(std::string("korrc: ") + each.where), 0u) << said_;
        EXPECT_NE(said_.find(each.reason), std::string::npos) << said_;
    }
}

TEST_F(Korrc, RefusesWrongUse) {
    scratch_.file("1033.txt", "1\tone\n");
    scratch_.file("english.txt", "1\tone\n");
    const std::string most = "--name Test --texts 1033.txt --library out.dll ";
    EXPECT_EQ(run(""), 2);
    EXPECT_EQ(run(most), 2) << "no version";
    EXPECT_EQ(run(most + "--version 1.2.3 --colour red"), 2);
    for (const char* version : {"1.2", "1.2.3.4", "1.2.x", "1.2.70000"})
        EXPECT_NE(run(most + "--version " + version), 0) << version;
    EXPECT_EQ(run(most + "--version 1.2.3 --texts 1033.txt"), 1) << "one language twice";
    EXPECT_EQ(run("--name Test --version 1.2.3 --texts english.txt --library out.dll"), 1);
    EXPECT_EQ(run("--name Test --version 1.2.3 --texts 1036.txt --library out.dll"), 1);
    EXPECT_EQ(said_, "korrc: 1036.txt: cannot be opened\n");
    EXPECT_EQ(run("--name Test --version 1.2.3 --texts 1033.txt --library none/out.dll"), 1);
}

TEST_F(Korrc, TakesWindowsLineEndsAndAByteOrderMark) {
    ASSERT_EQ(compile("\xEF\xBB\xBF# note\r\n5\tfive\\r\\n\\t\\\\\r\n6\t\xF0\x9F\x94\xAC\r\n"), 0) << said_;
    const HMODULE library = LoadLibraryA(scratch_.path("out.dll").c_str());
    ASSERT_NE(library, nullptr);
    char text[20];
    EXPECT_EQ(LoadStringA(library, 5, text, sizeof text), 8);
    EXPECT_STREQ(text, "five\r\n\t\\");
    const HRSRC block = FindResourceA(library, MAKEINTRESOURCEA(1), RT_STRING);
    const auto* units = static_cast<const WORD*>(LockResource(LoadResource(library, block)));
    EXPECT_EQ(SizeofResource(library, block), 16 * 2 + 8 * 2 + 2 * 2u);
    EXPECT_EQ(units[14], 2) << "a pair of surrogates";
    EXPECT_EQ(units[15], 0xD83D);
    EXPECT_EQ(units[16], 0xDD2C);
    FreeLibrary(library);
}

TEST_F(Korrc, WritesTheSameBytesEachTime) {
    const std::string arguments =
        "--name Test --version 1.2.3 --texts '" KORRC_TEXTS "/1053.txt' --texts '" KORRC_TEXTS
        "/1033.txt' --pieces '" KORRC_TEXTS "/pieces.txt' ";
    for (const char* form : {"library", "table", "res"}) {
        ASSERT_EQ(run(arguments + "--" + form + " first.out"), 0) << said_;
        ASSERT_EQ(run(arguments + "--" + form + " second.out"), 0) << said_;
        const std::string first = kor::test::bytesOf(scratch_.path("first.out"));
        EXPECT_FALSE(first.empty());
        EXPECT_EQ(first, kor::test::bytesOf(scratch_.path("second.out"))) << form;
    }
}
