// korutil tree set and delete: what is changed, and that the file is the old or the new one, whatever
// happens.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "tests/support/random.h"
#include "tests/tools/run_korutil.h"
#include "tests/tools/tree_image.h"

namespace {

using namespace kor::test;

constexpr char kTree[] = R"({"id":1,"type":"section","version":0,"children":[
  {"id":10,"type":"long","value":5},
  {"id":10,"type":"double","value":0.5},
  {"id":20,"type":"section","version":1,"children":[
    {"id":3,"type":"memory","version":9,"value":"AABB"},
    {"id":3,"type":"memory","version":8,"value":"CC"},
    {"id":4,"type":"string","value":"old"}
  ]},
  {"id":20,"type":"section","version":2,"children":[]},
  {"id":30,"type":"other","word":"0x80000099","value":[1,2]}
]}
)";

class TreeEdit : public testing::Test {
  protected:
    TreeEdit() {
        folder.write("a.json", kTree);
        EXPECT_EQ(run(folder, {"tree", "from-json", "a.json", "a.tag"}).status, 0);
        image = folder.read("a.tag");
    }

    std::string json() const { return run(folder, {"tree", "show", "a.tag", "--json"}).out; }

    Outcome set(std::vector<std::string> words) const {
        words.insert(words.begin(), {"tree", "set", "a.tag"});
        return run(folder, words);
    }

    static std::string changed(const std::string& from, const std::string& to) {
        std::string text = kTree;
        return text.replace(text.find(from), from.size(), to);
    }

    WorkFolder folder;
    std::string image;
};

TEST_F(TreeEdit, AChangedEntryKeepsItsPlace) {
    struct Case {
        std::vector<std::string> words;
        std::string from, to;
    };
    const Case cases[] = {
        {{"10", "long", "-40"}, R"("long","value":5})", R"("long","value":-40})"},
        {{"0xA", "double", "-1e-3"}, R"("value":0.5})", R"("value":-0.001})"},
        {{"20/4", "string", "Öl µ"}, R"("old")", R"("Öl µ")"},
        {{"20/4", "string", ""}, R"("old")", R"("")"},
        {{"20/4", "string", "--", "--json"}, R"("old")", R"("--json")"},
        {{"20/3", "memory", "00 ff"}, R"("value":"AABB")", R"("value":"00FF")"},
        {{"10:long", "point", "3, -4"}, R"("long","value":5})", R"("point","value":[3,-4]})"},
        {{"20/7", "doubles", ""},
         "\"old\"}\n",
         "\"old\"},\n    {\"id\":7,\"type\":\"doubles\",\"value\":[]}\n"},
        {{"30:other", "doubles", "1,NaN,-2.5"},
         R"("other","word":"0x80000099","value":[1,2])",
         R"("doubles","value":[1,"NaN",-2.5])"},
    };
    for (const Case& c : cases) {
        folder.write("a.tag", image);
        const Outcome outcome = set(c.words);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out + outcome.err, "");
        EXPECT_EQ(json(), changed(c.from, c.to)) << c.words[0];
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.json", "a.tag"}));
}

TEST_F(TreeEdit, DeletesOneEntryOrASectionWithAllBelow) {
    const auto remove = [&](const char* path) { return run(folder, {"tree", "delete", "a.tag", path}); };
    ASSERT_EQ(remove("20/3:memory").status, 0) << "the first of two";
    EXPECT_EQ(json(), changed("    {\"id\":3,\"type\":\"memory\",\"version\":9,\"value\":\"AABB\"},\n", ""));
    for (const char* path : {"10:double", "20:section", "20", "30", "10"})
        ASSERT_EQ(remove(path).status, 0) << path;
    EXPECT_EQ(json(), "{\"id\":1,\"type\":\"section\",\"version\":0,\"children\":[]}\n");
}

TEST_F(TreeEdit, RefusalsNameTheFileAndLeaveIt) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"set", "a.tag", "21/1", "long", "5"}, "there is no section 21"},
        {{"set", "a.tag", "10:string", "long", "5"}, "there is no entry 10:string"},
        {{"set", "a.tag", "20:section", "long", "5"}, "20:section is a section, which holds no value"},
        {{"delete", "a.tag", "11"}, "there is no entry 11"},
        {{"delete", "a.tag", "10"}, "several entries are called 10; name one by its type, 10:TYPE"},
    };
    for (auto [words, reason] : cases) {
        words.insert(words.begin(), "tree");
        const Outcome outcome = run(folder, words);
        EXPECT_EQ(outcome.status, 1) << reason;
        EXPECT_EQ(outcome.err, "korutil: a.tag: " + reason + '\n');
    }
    EXPECT_EQ(set({"20/4", "string", "日"}).err,
              "korutil: a.tag: VALUE: code page 1252 cannot express U+65E5 '日'\n");
    EXPECT_EQ(folder.read("a.tag"), image);
}

TEST_F(TreeEdit, AFileThatHoldsMoreThanTheTreeIsRefused) {
    const Node root{.id = 1,
                    .type = 0x40000000,
                    .children = {{.id = 2, .type = 0x20000000, .data = "SHARED88"},
                                 {.id = 3, .type = 0x20000000, .data = "FOREIGN8"}}};
    const std::string whole = imageOf(root);
    std::string shared = whole;  // the second block lies on the first one, and nobody has its bytes
    shared[44] = shared[28];
    std::string gap = whole;  // two bytes of the first block, and then more than the pad bytes
    gap[24] = 2;
    std::string moved = whole;  // the table is the second one in the file
    moved.insert(16, 16, 'x');
    for (const std::size_t position : {12, 28 + 16, 44 + 16})
        moved[position] = static_cast<char>(moved[position] + 16);
    const std::pair<std::string, std::string> cases[] = {
        {whole + 'x', "the byte at 64 does not belong to the parameter tree"},
        {shared, "the byte at 48 is used twice in the parameter tree"},
        {gap, "the byte at 52 does not belong to the parameter tree"},
        {moved, "the byte at 16 does not belong to the parameter tree"},
    };
    for (const auto& [bytes, reason] : cases) {
        folder.write("a.tag", bytes);
        EXPECT_EQ(run(folder, {"tree", "show", "a.tag"}).status, 0) << reason;
        EXPECT_EQ(set({"10", "long", "6"}).err, "korutil: a.tag: it cannot be changed: " + reason + '\n');
        EXPECT_EQ(folder.read("a.tag"), bytes);
    }
}

// Readers follow the positions; other writers need not have the blocks in the order of the entries, nor pad.
TEST_F(TreeEdit, BlocksMayStandInAnyOrder) {
    Node root{.id = 1,
              .type = 0x40000000,
              .children = {{.id = 2, .type = 0x20000000, .data = "first"},
                           {.id = 3, .type = 0x20000000, .data = "second"}}};
    std::string swapped = imageOf(root).substr(0, 48);
    swapped[28] = 48 + 6;
    swapped[44] = 48;
    folder.write("a.tag", swapped + "secondfirst");
    EXPECT_EQ(set({"10", "long", "6"}).status, 0);
    root.children.push_back({10, 0x80000014, 6, 0});
    EXPECT_EQ(folder.read("a.tag"), imageOf(root));
}

TEST_F(TreeEdit, KeepsModeOwnerAndSymbolicLink) {
    const std::string path = folder.path("a.tag");
    const bool isRoot = ::geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(::chown(path.c_str(), 12345, 23456), 0);
    }
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    std::filesystem::create_directory(folder.path("links"));
    std::filesystem::create_symlink("../a.tag", folder.path("links/b"));
    ASSERT_EQ(run(folder, {"tree", "set", "links/b", "10", "long", "6"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("links/b")));
    struct stat after {};
    ASSERT_EQ(::lstat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_mode, S_IFREG | 0640u);
    EXPECT_TRUE(!isRoot || (after.st_uid == 12345 && after.st_gid == 23456));
    const mode_t mask = ::umask(027);
    EXPECT_EQ(run(folder, {"tree", "from-json", "a.json", "links/new"}).status, 0);
    ::umask(mask);
    ASSERT_EQ(::stat(folder.path("links/new").c_str(), &after), 0);
    EXPECT_EQ(after.st_mode & 07777, 0640u) << "a new file gets the usual mode";
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.json", "a.tag", "links"}));
}

TEST_F(TreeEdit, AReadOnlyFileAndADanglingLinkAreRefused) {
    ASSERT_EQ(::chmod(folder.path("a.tag").c_str(), 0444), 0);
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"tree", "set", "a.tag", "10", "long", "6"},
          {"tree", "from-json", "a.json", "a.tag"}}) {
        const Outcome outcome = run(folder, words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "korutil: a.tag: it is read-only\n");
    }
    EXPECT_EQ(folder.read("a.tag"), image);
    std::filesystem::create_symlink("nowhere", folder.path("link"));
    EXPECT_EQ(run(folder, {"tree", "from-json", "a.json", "link"}).err,
              "korutil: link: it is a symbolic link to a missing file\n");
}

TEST_F(TreeEdit, WithoutTheRightToWriteNothingIsTouched) {
    if (::geteuid() != 0) GTEST_SKIP() << "another user's file can only be made by root";
    std::filesystem::permissions(folder.path("."), std::filesystem::perms(0755));
    const Outcome outcome =
        run(folder, Call{.arguments = {"tree", "set", "a.tag", "10", "long", "6"}, .user = 65534});
    if (outcome.status == 127) GTEST_SKIP() << "the command lies where another user may not go";
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "korutil: a.tag: Permission denied\n");
    EXPECT_EQ(folder.read("a.tag"), image);
}

TEST_F(TreeEdit, AFailedWriteLeavesTheOldFileAndNothingElse) {
    const std::string large(2 * 40'000, 'A');
    const Outcome outcome = run(folder, Call{.arguments = {"tree", "set", "a.tag", "20/3", "memory", large},
                                             .fileSizeLimit = 10'000});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.err.starts_with("korutil: a.tag: ")) << outcome.err;
    EXPECT_EQ(folder.read("a.tag"), image);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.json", "a.tag"}));
    std::filesystem::create_hard_link(folder.path("a.tag"), folder.path("former.tag"));
    EXPECT_EQ(set({"20/3", "memory", large}).status, 0) << "without the limit it can be written";
    EXPECT_EQ(folder.read("former.tag"), image) << "replaced, and not written over";
}

// Whenever the process dies, the file is the old one or the new one; told to end, it leaves nothing else
// behind.
TEST_F(TreeEdit, ADyingProcessLeavesTheOldFileOrTheNewOne) {
    const std::string large(2 * 50'000, 'A');
    ASSERT_EQ(set({"20/3", "memory", large}).status, 0);
    const std::string after = folder.read("a.tag");
    auto generator = kor::test::generator();
    std::uniform_int_distribution<unsigned> delay(0, 20'000);
    for (int i = 0; i < kor::test::scaled(60); ++i) {
        const bool isTold = i % 2 == 0;
        folder.write("a.tag", image);
        run(folder, Call{.arguments = {"tree", "set", "a.tag", "20/3", "memory", large},
                         .signal = isTold ? SIGTERM : SIGKILL,
                         .delay = delay(generator)});
        const std::string now = folder.read("a.tag");
        EXPECT_TRUE(now == image || now == after) << "case " << i << ": " << now.size() << " bytes";
        for (const std::string& name : folder.names()) {
            if (name == "a.json" || name == "a.tag") continue;
            EXPECT_FALSE(isTold) << name;
            std::filesystem::remove(folder.path(name));
        }
    }
}

TEST_F(TreeEdit, NothingThatWasDoneIsLostToAnotherWriter) {
    constexpr int kEach = 20;
    const auto write = [this](int first) {
        for (int id = first; id < first + kEach; ++id) {
            while (set({std::to_string(id), "long", "1"}).status != 0) {
            }
        }
    };
    std::thread other([&write] { write(1000); });
    write(2000);
    other.join();
    const std::string after = json();
    for (int id = 1000; id < 2000 + kEach; id = id == 1000 + kEach - 1 ? 2000 : id + 1)
        EXPECT_NE(after.find("\"id\":" + std::to_string(id)), std::string::npos) << id;
}

}  // namespace
