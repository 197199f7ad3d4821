// korutil tree show and from-json.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/random.h"
#include "tests/tools/run_korutil.h"
#include "tests/tools/tree_image.h"

namespace {

using namespace kor::test;

constexpr char kEverything[] = R"({"id":4294967295,"type":"section","version":134217727,"children":[
  {"id":0,"type":"long","value":-2147483648},
  {"id":1,"type":"double","value":0.1},
  {"id":1,"type":"double","value":-0},
  {"id":1,"type":"double","value":1e+300},
  {"id":2,"type":"double","value":"NaN"},
  {"id":2,"type":"double","value":"-Infinity"},
  {"id":2,"type":"double","value":"0xFFF8000000000001"},
  {"id":3,"type":"point","value":[-5,2147483647]},
  {"id":4,"type":"string","value":""},
  {"id":4,"type":"string","value":"a\"\\\n\u0001µ€ü\u0081\u009D"},
  {"id":5,"type":"doubles","value":[]},
  {"id":5,"type":"doubles","value":[1,0.25,"Infinity"]},
  {"id":6,"type":"memory","version":0,"value":""},
  {"id":6,"type":"memory","version":134217727,"value":"00FF7A"},
  {"id":7,"type":"section","version":0,"children":[]},
  {"id":7,"type":"section","version":3,"children":[
    {"id":1,"type":"section","version":0,"children":[
      {"id":1,"type":"long","value":40}
    ]}
  ]},
  {"id":8,"type":"other","word":"0x80000099","value":[4294967295,7]},
  {"id":8,"type":"other","word":"0x80000014","value":[5,6]},
  {"id":8,"type":"other","word":"0x10000011","value":"4142"},
  {"id":8,"type":"other","word":"0x10000088","value":"0102030405"},
  {"id":8,"type":"other","word":"0x60000002","children":[
    {"id":1,"type":"other","word":"0xC0000000","value":[1,2]}
  ]}
]}
)";

TEST(TreeFromJson, WritesTheDocumentedBytes) {
    const WorkFolder folder;
    const std::string json = R"({"children":[{"value":"\u00fc","type":"string","id":2},
        {"id":3,"type":"long","value":-2},{"id":4,"type":"memory","version":5,"value":"aAbB"}],"type":"section","id":1})";
    const Outcome stored = run(folder, Call{.arguments = {"tree", "from-json", "-", "a.tag"}, .input = json});
    ASSERT_EQ(stored.status, 0) << stored.err;
    const Node root{.id = 1,
                    .type = 0x40000000,
                    .children = {{.id = 2, .type = 0x10000011, .data = std::string("\xFC\0", 2)},
                                 {3, 0x80000014, 0xFFFFFFFE, 0},
                                 {.id = 4, .type = 0x20000005, .data = "\xAA\xBB"}}};
    EXPECT_EQ(folder.read("a.tag"), imageOf(root));
}

TEST(TreeFromJson, RefusesWhatATreeCannotHold) {
    const std::pair<std::string, std::string> cases[] = {
        {R"([])", "column 1: a node must be an object, not an array"},
        {R"({"id":-1,"type":"long","value":1})", "column 7: \"id\" must lie between 0 and 4294967295"},
        {R"({"id":1,"type":"int","value":1})",
         "column 16: \"int\" is no type; there are long, double, point, string, "
         "doubles, memory, section and other"},
        {R"({"id":1,"type":"long","value":2147483648})",
         "column 31: a long must lie between -2147483648 and 2147483647"},
        {R"({"id":1,"type":"long","value":1,"x":2})", "column 37: a node of type long has no \"x\""},
        {R"({"id":1,"type":"section","version":134217728})",
         "column 36: \"version\" must lie between 0 and 134217727"},
        {R"({"id":1,"type":"double","value":1e999})",
         "column 33: a double lies outside the range of doubles"},
        {R"({"id":1,"type":"double","value":"nan"})",
         "column 33: a double is a number, \"NaN\", \"Infinity\", "
         "\"-Infinity\" or the bits of a NaN"},
        {R"({"id":1,"type":"point","value":[1]})",
         "column 32: the value of a point is an array of two numbers"},
        {R"({"id":1,"type":"string","value":"a\u0000b"})", "column 33: a string cannot hold a zero"},
        {R"({"id":1,"type":"string","value":"日"})", "column 33: code page 1252 cannot express U+65E5 '日'"},
        {R"({"id":1,"type":"memory","value":"ABC"})",
         "column 33: bytes are written as a string of hexadecimal digit pairs"},
        {R"({"id":1,"type":"other","value":[1,2]})", "column 1: the node has no \"word\""},
        {R"({"id":1,"type":"other","word":"0x80000000","value":[1,-2]})",
         "column 55: a data word must lie between 0 and 4294967295"},
    };
    const WorkFolder folder;
    folder.write("a.tag", "what was there");
    for (const auto& [node, reason] : cases) {
        folder.write("a.json", "{\"id\":1,\"type\":\"section\",\"children\":[\n" + node + "]}");
        const Outcome outcome = run(folder, {"tree", "from-json", "a.json", "a.tag"});
        EXPECT_EQ(outcome.status, 1) << node;
        EXPECT_EQ(outcome.err, "korutil: a.json: line 2, " + reason + '\n') << node;
    }
    folder.write("a.json", R"({"id":1,"type":"long","value":1})");
    EXPECT_EQ(run(folder, {"tree", "from-json", "a.json", "a.tag"}).err,
              "korutil: a.json: line 1, column 1: the outermost node must be a section\n");
    EXPECT_EQ(folder.read("a.tag"), "what was there");
}

TEST(TreeFromJson, StoresWhatCanBeReadAgainAndNothingDeeper) {
    const auto nested = [](int levels) {
        std::string text;
        for (int i = 0; i < levels; ++i)
            text += R"({"id":1,"type":"section","children":[)";
        for (int i = 0; i < levels; ++i)
            text += "]}";
        return text;
    };
    const WorkFolder folder;
    const auto store = [&](int levels) {
        return run(folder, Call{.arguments = {"tree", "from-json", "-", "a.tag"}, .input = nested(levels)});
    };
    EXPECT_EQ(store(1001).status, 0) << "the root and a thousand levels below it";
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag"}).status, 0);
    const Outcome refused = store(1002);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "korutil: a.tag: the tree is nested too deeply to be stored\n");
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag"}).status, 0) << "the file is still the old one";
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.tag"});
}

TEST(TreeJson, EscapesStandForBytesThatAMultiByteCodePageDoesNotDefine) {
    struct Case {
        const char *page, *value;
        std::string stored;  // empty: refused
        const char* shown;
    };
    const Case cases[] = {
        {"1252", R"(\u00e9é\u0081)", "\xE9\xE9\x81", R"(éé\u0081)"},
        {"65001", R"(\u00e9é€)", "\xE9\xC3\xA9\xE2\x82\xAC", R"(\u00E9é€)"},
        {"65001", R"(\u00c3\u00a9)", "",
         "bytes written as escapes join to other characters in code page 65001"},
        {"936", R"(\u00e9é)", "", "bytes written as escapes join to other characters in code page 936"},
    };
    const WorkFolder folder;
    for (const Case& c : cases) {
        const auto call = [&](std::vector<std::string> arguments) {
            return run(folder, Call{.arguments = std::move(arguments),
                                    .environment = {{"KORUTIL_CODEPAGE", c.page}}});
        };
        const std::string front =
            "{\"id\":1,\"type\":\"section\",\"version\":0,\"children\":[\n  "
            "{\"id\":2,\"type\":\"string\",\"value\":\"";
        folder.write("a.json", front + c.value + "\"}\n]}\n");
        const Outcome stored = call({"tree", "from-json", "a.json", "a.tag"});
        EXPECT_EQ(stored.status, c.stored.empty() ? 1 : 0) << c.value;
        if (c.stored.empty()) {
            EXPECT_NE(stored.err.find(c.shown), std::string::npos) << stored.err;
            continue;
        }
        EXPECT_EQ(folder.read("a.tag").substr(32, c.stored.size() + 1), c.stored + '\0');
        EXPECT_EQ(call({"tree", "show", "a.tag", "--json"}).out, front + c.shown + "\"}\n]}\n");
    }
}

TEST(TreeJson, EveryTreeThatAFileCanHoldComesBack) {
    std::string everyByte;
    for (int i = 1; i < 256; ++i)
        everyByte += static_cast<char>(i);
    const std::pair<const char*, std::string> pages[] = {
        {"1252", everyByte},
        {"65001", std::string("a\xC3\xA9\xE2\x82\xAC\xFF\x80") + "\n\""},
        {"932", everyByte},
        {"936", everyByte}};
    const WorkFolder folder;
    auto generator = kor::test::generator();
    for (int i = 0; i < kor::test::scaled(60); ++i) {
        const auto& [page, strings] = pages[static_cast<std::size_t>(i) % std::size(pages)];
        const std::string image = imageOf(kor::test::randomTree(generator, strings));
        folder.write("a.tag", image);
        const auto call = [&, name = page](std::vector<std::string> arguments) {
            return run(folder,
                       Call{.arguments = std::move(arguments), .environment = {{"KORUTIL_CODEPAGE", name}}});
        };
        const Outcome shown = call({"tree", "show", "a.tag", "--json"});
        ASSERT_EQ(shown.status, 0) << shown.err;
        folder.write("a.json", shown.out);
        const Outcome stored = call({"tree", "from-json", "a.json", "b.tag"});
        ASSERT_EQ(stored.status, 0) << stored.err << shown.out;
        ASSERT_EQ(folder.read("b.tag"), image) << "case " << i << ", code page " << page << shown.out;
        EXPECT_EQ(call({"tree", "show", "a.tag", "--all"}).status, 0);
    }
}

TEST(TreeShow, EverythingComesBackByteForByteAndIsAligned) {
    const WorkFolder folder;
    folder.write("a.json", kEverything);
    const Outcome stored = run(folder, {"tree", "from-json", "a.json", "a.tag"});
    ASSERT_EQ(stored.status, 0) << stored.err;
    EXPECT_EQ(stored.out + stored.err, "");
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag", "--json"}).out, kEverything);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.json", "a.tag"}));
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag"}).out,
              R"(a.tag: parameter tree of 24 entries in 5 sections, 452 bytes

id          type       version  bytes  value
4294967295  section  134217727         21 entries
  0         long                       -2147483648
  1         double                     0.1
  1         double                     -0
  1         double                     1e+300
  2         double                     NaN
  2         double                     -Infinity
  2         double                     0xFFF8000000000001
  3         point                      (-5, 2147483647)
  4         string                  0  ""
  4         string                 11  "a\"\\\n\u0001µ€ü\u0081\u009D"
  5         doubles                 0
  5         doubles                24  1, 0.25, Infinity
  6         memory           0      0
  6         memory   134217727      3  00FF7A
  7         section          0         0 entries
  7         section          3         1 entry
    1       section          0         1 entry
      1     long                       40
  8         other                      type word 0x80000099: 0xFFFFFFFF 0x00000007
  8         long                       no proper long: 0x00000005 0x00000006
  8         string                  2  no proper text: 4142
  8         doubles                 5  no whole doubles: 01020304 05
  8         other                      type word 0x60000002: 1 entry
    1       other                      type word 0xC0000000: 0x00000001 0x00000002
)");
}

TEST(TreeShow, CutsLongValuesUnlessAskedForAllAndNeedsNoRightToWrite) {
    const WorkFolder folder;
    std::string image = imageOf({.id = 1,
                                 .type = 0x40000000,
                                 .children = {{.id = 3, .type = 0x20000000, .data = std::string(25, 'A')}}});
    image.resize(image.size() - 3);  // other writers need not pad
    folder.write("a.tag", image);
    ASSERT_EQ(::chmod(folder.path("a.tag").c_str(), 0444), 0);
    const std::string cut = run(folder, {"tree", "show", "a.tag"}).out;
    EXPECT_NE(cut.find("  41414141 41414141 41414141 41414141 41414141 41414141 ...\n"), std::string::npos)
        << cut;
    const std::string all = run(folder, {"tree", "show", "--all", "a.tag"}).out;
    EXPECT_NE(all.find(" 41414141 41414141 41\n"), std::string::npos) << all;
    EXPECT_EQ(folder.read("a.tag"), image);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.tag"});
}

TEST(TreeShow, FindsATreeInsideALargerFile) {
    const WorkFolder folder;
    Node root{.id = 7, .type = 0x40000001, .children = {{3, 0x80000014, 5, 0}}};
    std::string image = imageOf(root);
    image[12] = static_cast<char>(16 + 20);  // the position of the table, in a file with 20 bytes in front
    folder.write("a.tag", std::string(20, 'x') + image + "behind");
    for (const char* offset : {"20", "0x14"}) {
        const Outcome outcome = run(folder, {"tree", "show", "a.tag", "--offset", offset});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_TRUE(outcome.out.starts_with(
            "a.tag: parameter tree of 1 entry in 1 section, 32 bytes at offset 20; 6 more bytes follow\n"))
            << outcome.out;
    }
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag"}).status, 1);
}

// Whatever stands in a file, the command ends, shows it or says in one line why not, and never grows without
// bound.
TEST(TreeShow, SurvivesBrokenFiles) {
    const WorkFolder folder;
    auto generator = kor::test::generator();
    const auto below = [&](std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(generator);
    };
    for (int i = 0; i < kor::test::scaled(120); ++i) {
        std::string image = imageOf(kor::test::randomTree(generator, "abc\x81"));
        if (i % 3 == 0) {
            image.resize(below(image.size()));
        } else {
            for (std::size_t flips = 1 + below(4); flips > 0; --flips) {
                image[below(image.size())] = static_cast<char>(i % 2 ? below(256) : 16 * below(16));
            }
        }
        folder.write("a.tag", image);
        const std::vector<std::string> call = {"tree", "show", "a.tag", i % 2 ? "--json" : "--all"};
        const Outcome outcome = run(folder, call);
        const bool refused = outcome.status == 1 && outcome.err.starts_with("korutil: a.tag: ") &&
                             outcome.err.find('\n') == outcome.err.size() - 1;
        EXPECT_TRUE(refused || (outcome.status == 0 && outcome.err.empty()))
            << "case " << i << ", status " << outcome.status << ": " << outcome.err;
        EXPECT_LE(outcome.out.size(), 1000 + 200 * image.size()) << "case " << i;
    }
}

// Blocks go through in pieces; here they end inside, at and behind the end of one.
TEST(TreeJson, LargeBlocksAreWhole) {
    const WorkFolder folder;
    auto generator = kor::test::generator();
    Node root{.id = 1, .type = 0x40000000};
    for (const std::size_t size : {65'536u, 65'544u, 200'000u}) {
        std::string data(size, '\0');
        for (char& c : data)
            c = static_cast<char>('0' + generator() % 64);
        for (const std::uint32_t type : {0x20000000u, 0x10000088u})
            root.children.push_back({.id = 2, .type = type, .data = data});
        data.back() = '\0';
        root.children.push_back({.id = 2, .type = 0x10000011, .data = data});
    }
    folder.write("a.tag", imageOf(root));
    folder.write("a.json", run(folder, {"tree", "show", "a.tag", "--json"}).out);
    EXPECT_EQ(run(folder, {"tree", "from-json", "a.json", "b.tag"}).err, "");
    EXPECT_TRUE(folder.read("b.tag") == folder.read("a.tag"));
}

// The file has a hole, so that the block takes no room.
TEST(TreeShow, ABlockAboveTwoGigabytesIsNotCutSilently) {
    constexpr std::uint32_t kSize = 0x80000010;
    const WorkFolder folder;
    for (const std::uint32_t type : {0x20000000u, 0x10000011u}) {
        std::string image = imageOf({.id = 1, .type = 0x40000000, .children = {{.id = 2, .type = type}}});
        for (int i = 0; i < 4; ++i)
            image[static_cast<std::size_t>(24 + i)] = static_cast<char>(kSize >> 8 * i & 0xFF);
        folder.write("a.tag", image);
        std::filesystem::resize_file(folder.path("a.tag"), image.size() + std::uintmax_t{kSize});
        const Outcome shown = run(folder, {"tree", "show", "a.tag"});
        EXPECT_EQ(shown.status, 0) << shown.err;
        EXPECT_NE(shown.out.find("2147483664  00000000 "), std::string::npos) << shown.out;
        EXPECT_EQ(run(folder, {"tree", "show", "a.tag", "--all"}).err,
                  "korutil: a.tag: the block with id 2 is too large for --all; use --json\n");
    }
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag", "--json"}).err,
              "korutil: a.tag: the string with id 2 is too large for JSON\n");
}

TEST(TreeShow, RefusesBlocksThatLieOnEachOther) {
    const WorkFolder folder;
    std::string image = imageOf({.id = 1,
                                 .type = 0x40000000,
                                 .children = {{.id = 2, .type = 0x20000000, .data = std::string(64, 'A')},
                                              {.id = 3, .type = 0x20000000, .data = std::string(64, 'B')}}});
    image.replace(16 + 16 + 12, 4, image, 16 + 12, 4);
    image.resize(image.size() - 64);
    folder.write("a.tag", image);
    EXPECT_EQ(run(folder, {"tree", "show", "a.tag", "--json"}).err,
              "korutil: a.tag: it is no parameter tree, or is damaged\n");
}

}  // namespace
