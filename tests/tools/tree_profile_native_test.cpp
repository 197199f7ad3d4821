// korutil tree to-profile and from-profile.
#include <gtest/gtest.h>

#include "tests/tools/run_korutil.h"

namespace {

using kor::test::Outcome;
using kor::test::run;
using kor::test::WorkFolder;

constexpr char kMap[] = R"({"id":9,"name":"Setup","keys":{
  "1":"Title", "2":"Bits", "3":"Gain", "4":"Marks", "5":"Driver", "6":"Size",
  "7":{"name":"Camera","keys":{"1":"Name","2":{"name":"Sub","keys":{}}}}}})";

constexpr char kTree[] = R"({"id":9,"type":"section","version":3,"children":[
  {"id":1,"type":"string","value":"Ä; x=[1]"},
  {"id":2,"type":"long","value":-16},
  {"id":3,"type":"double","value":0.46},
  {"id":4,"type":"doubles","value":[1,-2.5,1e+20]},
  {"id":5,"type":"memory","version":2,"value":"00FF"},
  {"id":7,"type":"section","version":1,"children":[
    {"id":1,"type":"string","value":""},
    {"id":2,"type":"section","version":0,"children":[]}
  ]}
]}
)";

constexpr char kProfile[] =
    "[Setup]\r\nVersion=3\r\nTitle.Str=\xC4; x=[1]\r\nBits.Int=-16\r\nGain.Flt=0.46\r\n"
    "Marks.FltA=1,-2.5,1e+020\r\nDriver.MVer=2\r\nDriver.Mem=00FF\r\nCamera.Sec=Camera\r\n"
    "[Setup.Camera]\r\nVersion=1\r\nName.Str=\r\nSub.Sec=Sub\r\n[Setup.Camera.Sub]\r\nVersion=0\r\n";

std::vector<std::string> convert(const std::string& direction, const std::string& from,
                                 const std::string& to) {
    return {"tree", direction, from, to, "--keys", "map.json"};
}

// A tree in JSON is stored as t.tag.
void store(const WorkFolder& folder, const std::string& json) {
    folder.write("t.json", json);
    ASSERT_EQ(run(folder, {"tree", "from-json", "t.json", "t.tag"}).err, "");
}

TEST(TreeProfile, GoesThereAndBack) {
    const WorkFolder folder;
    folder.write("map.json", kMap);
    store(folder, kTree);
    const Outcome outcome = run(folder, convert("to-profile", "t.tag", "p.ini"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(folder.read("p.ini"), kProfile);
    EXPECT_EQ(run(folder, convert("from-profile", "p.ini", "back.tag")).err, "");
    EXPECT_EQ(run(folder, {"tree", "show", "back.tag", "--json"}).out, kTree);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"back.tag", "map.json", "p.ini", "t.json", "t.tag"}));
}

TEST(TreeProfile, ReplacesItsSectionsAndNoOthers) {
    const WorkFolder folder;
    folder.write("map.json", kMap);
    store(folder, kTree);
    const std::string other = "; note\r\n[Setups]\r\nTitle.Str=kept\r\n[SETUP.old]\r\nA=1\r\n";
    folder.write("p.ini", other + "[setup]\r\nBits.Int=5\r\nSize.Int=5\r\n");
    EXPECT_EQ(run(folder, convert("to-profile", "t.tag", "p.ini")).err, "");
    EXPECT_EQ(folder.read("p.ini"), other + kProfile);
    folder.write("map2.json", R"({"id":9,"name":"Setup","keys":{"1":{"name":"Camera"},"2":"Bits"}})");
    store(folder, R"({"id":9,"type":"section","children":[]})");
    const Outcome outcome = run(folder, {"tree", "to-profile", "t.tag", "p.ini", "--keys", "map2.json"});
    EXPECT_EQ(outcome.status, 3);
    std::string removed;
    for (const char* key : {"Title.Str", "Gain.Flt", "Marks.FltA", "Driver.MVer", "Driver.Mem"})
        removed +=
            std::string("korutil: p.ini: [Setup] ") + key + ": it was no entry of a tree, and was removed\n";
    EXPECT_EQ(outcome.err,
              removed + "korutil: p.ini: [Setup.Camera]: the tree has no such section; it was removed\n");
    EXPECT_EQ(folder.read("p.ini"), other + "[Setup.Camera.Sub]\r\nVersion=0\r\n[Setup]\r\nVersion=0\r\n");
}

TEST(TreeProfile, TellsWhatIsNotRestored) {
    const WorkFolder folder;
    folder.write("map.json", kMap);
    const std::string text(300, 'x');
    store(folder, R"({"id":9,"type":"section","children":[
        {"id":1,"type":"string","value":")" +
                      text + R"("},{"id":6,"type":"point","value":[1,2]},
        {"id":2,"type":"long","value":1},{"id":2,"type":"double","value":2},{"id":2,"type":"long","value":3},
        {"id":3,"type":"double","value":0.20634920634920634},
        {"id":5,"type":"other","word":"0x10000099","value":"00"},
        {"id":7,"type":"section","children":[{"id":1,"type":"string","value":" a "}]}]})");
    const Outcome outcome = run(folder, convert("to-profile", "t.tag", "p.ini"));
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(
        outcome.err,
        "korutil: p.ini: [Setup] Title.Str: only the first 259 of 300 characters are kept\n"
        "korutil: p.ini: [Setup] Size.Pt: a point is written, but not read back\n"
        "korutil: p.ini: [Setup] Bits.Flt: another entry of this id and kind stands before it; only the "
        "first counts\n"
        "korutil: p.ini: [Setup] Bits.Int: another entry of this id and kind stands before it; only the "
        "first counts\n"
        "korutil: p.ini: [Setup] Driver.?: the type word 0x10000099 has no form in settings\n"
        "korutil: p.ini: [Setup.Camera] Name.Str: is read back as 'a'\n"
        "korutil: p.ini: [Setup]: numbers that lose digits beyond the 15 that are kept: 1\n");
}

TEST(TreeProfile, TellsWhatOfAFileIsNotRead) {
    const WorkFolder folder;
    folder.write("map.json", kMap);
    struct Line {
        std::string text;
        std::string reason;  // of all behind "[Setup] KEY: "; empty when it is read as it stands
    };
    const std::string another = "another entry of this id and kind stands before it; only the first counts";
    const Line lines[] = {
        {"version=1x", "'1x' is read as 1"},
        {"title.STR=\"a\"", ""},
        {"Title.Str=b", another},
        {"Size.Pt=1,2", "a point is not read back"},
        {"None.Int=1", "'None' is not in the key map"},
        {"Title=1", "it is no entry of a tree"},
        {"Bits.Int=12abc", "'12abc' is read as 12"},
        {"Bits.Flt=8", another},
        {"Gain.Flt=zz", "'zz' is read as 0"},
        {"Marks.FltA=1,2,x,4", "'1,2,x,4': only the first 2 numbers are read"},
        {"Driver.MVer=1", ""},
        {"Driver.Mem=0G", "'0G' is no row of hexadecimal digit pairs"},
        {"Driver.mem=0AB", "'0AB': the last digit is one of no pair, and is not read"},
        {"Size.MVer=1", "there is no block of bytes to this version"},
        {"alone", "there is no '='"},
        {"Camera.Sec=Camera", ""},
    };
    std::string file = "[Setup]\n";
    std::string expected;
    const auto told = [&expected](const std::string& what) {
        expected += "korutil: p.ini: [Setup" + what + '\n';
    };
    for (const Line& line : lines) {
        file += line.text + '\n';
        if (!line.reason.empty()) told("] " + line.text.substr(0, line.text.find('=')) + ": " + line.reason);
    }
    told(".Old]: it is not read: no entry with .Sec leads to it");
    told(".Camera]: it stands there several times; only the first is read");
    folder.write("p.ini", file + "[Setup.Camera]\nName.Str=\n[Other]\nA\n[Setup.Old]\nA=1\n[Setup.Camera]\n");
    const Outcome outcome = run(folder, convert("from-profile", "p.ini", "t.tag"));
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.err, expected);

    folder.write("p.ini", "[Setup]\nTitle.Str=" + std::string(16365, 'x') + "\nBits.Int=5\nGain.Flt=1\n");
    expected.clear();
    told("] Bits.Int: it is cut at the 16384 bytes that are read of a section");
    told("] Gain.Flt: it lies behind the 16384 bytes that are read of a section");
    EXPECT_EQ(run(folder, convert("from-profile", "p.ini", "t.tag")).err, expected);

    folder.write("p.ini", "\xEF\xBB\xBF[Setup]\nTitle.Str=\xE6\x97\xA5\n");
    expected.clear();
    told("] Title.Str: code page 1252 cannot express U+65E5 '日'");
    EXPECT_EQ(run(folder, convert("from-profile", "p.ini", "t.tag")).err, expected);
}

TEST(TreeProfile, RefusesAndLeavesTheFileAsItWas) {
    struct Case {
        std::string map;
        std::string tree;
        std::string reason;
    };
    const std::string small = R"({"id":9,"type":"section","children":[{"id":1,"type":"long","value":1}]})";
    const auto map = [](const std::string& keys) { return R"({"id":9,"name":"S","keys":)" + keys + '}'; };
    const Case cases[] = {
        {R"({"id":8,"name":"S"})", small, "t.tag: the tree has the id 9, but the key map is for 8"},
        {map("{}"), small, "t.tag: the key map has no name for entry 1 of section 9"},
        {map(R"({"1":"A"})"),
         R"({"id":9,"type":"section","children":[{"id":1,"type":"string","value":"a\nb"}]})",
         "t.tag: entry 1 of section 9 is a text with a line break, which settings cannot hold"},
        {R"({"name":"S"})", small, "map.json: line 1, column 1: the node has no \"id\""},
        {map(R"([])"), small, "map.json: line 1, column 27: \"keys\" must be an object, not an array"},
        {map(R"({"01":"A"})"), small,
         "map.json: line 1, column 33: \"01\" is no id; there are 1 to 2147483647"},
        {map(R"({"1":""})"), small, "map.json: line 1, column 32: the name \"\" is empty"},
        {map(R"({"1":"a.b"})"), small, "map.json: line 1, column 32: the name \"a.b\" holds a dot"},
        {map(R"({"1":"a]"})"), small, "map.json: line 1, column 32: the name \"a]\" holds ']'"},
        {map(R"({"1":"A","2":"a"})"), small,
         "map.json: line 1, column 40: \"a\" is the name of id 1 in section 9 already"},
        {map(R"({"1":{"name":"A","keys":{"1":"X"}},"2":{"name":"B","keys":{"1":{"name":"C","keys":{"1":"Y"}}}}})"),
         small, "map.json: line 1, column 114: id 1 in section 1 is called \"X\" elsewhere"},
        {map(R"({"1":{"name":"A","x":1}})"), small,
         "map.json: line 1, column 48: a node of a key map has no \"x\""},
    };
    const WorkFolder folder;
    folder.write("p.ini", "[S]\nA=1\n");
    for (const Case& c : cases) {
        folder.write("map.json", c.map);
        store(folder, c.tree);
        const Outcome outcome = run(folder, convert("to-profile", "t.tag", "p.ini"));
        EXPECT_EQ(outcome.status, 1) << c.map;
        EXPECT_EQ(outcome.err, "korutil: " + c.reason + '\n');
    }
    EXPECT_EQ(folder.read("p.ini"), "[S]\nA=1\n");
    folder.write("map.json", kMap);
    EXPECT_EQ(run(folder, convert("from-profile", "p.ini", "n.tag")).err,
              "korutil: p.ini: there is no section [Setup]\n");
    EXPECT_EQ(run(folder, convert("to-profile", "t.tag", "t.tag")).err,
              "korutil: t.tag: it is the tree's file itself\n");
}

}  // namespace
