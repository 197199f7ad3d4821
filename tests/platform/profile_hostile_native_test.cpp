// Initialisation files that nobody meant to be one: what they cost is bounded by their size.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/platform/in_child.h"
#include "tests/platform/seeded.h"
#include "tests/support/random.h"
#include "tests/support/scratch.h"

namespace {

using namespace kor::test;

// What a process of its own needed.
struct Cost {
    double seconds = 0;
    double bytes = 0;
};

rusage usage() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return used;
}

double secondsOf(const rusage& used) {
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

// Does every kind of look-up, and two writes, of names that are there and of others.
bool useAll(const std::string& file, const char* section) {
    const char* const path = file.c_str();
    std::vector<char> buffer(1000, '#');
    bool sane = true;
    for (const char* key : {"k", "no such key", "x", ""}) {
        for (const char* of : {section, "no such section", ""})
            sane = sane && GetPrivateProfileStringA(of, key, "", buffer.data(), 1000, path) < 1000;
    }
    sane = sane && GetPrivateProfileStringA(section, nullptr, "", buffer.data(), 1000, path) <= 998;
    sane = sane && GetPrivateProfileSectionNamesA(buffer.data(), 1000, path) <= 998;
    sane = sane && GetPrivateProfileSectionA(section, buffer.data(), 1000, path) <= 998;
    sane = sane && WritePrivateProfileStringA("written", "k", "7", path);
    sane = sane && GetPrivateProfileIntA("written", "k", 0, path) == 7;
    sane = sane && WritePrivateProfileSectionA(section, "k=8\0", path);
    sane = sane && GetPrivateProfileIntA(section, "k", 0, path) == 8;
    return sane && WritePrivateProfileStringA("written", nullptr, nullptr, path);
}

// @param make  gives the file's bytes
template <class Make>
Cost costOf(const char* section, Make make) {
    const ScratchFolder scratch;
    const std::string file = scratch.path("f.ini");
    // In another process: what this one once had and freed, the measured one would have again.
    inChild([&] { return !scratch.file("f.ini", make()).empty(); });
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    inChild([&] {
        useAll(file + ".none", "s");  // what any use costs is not the file's
        const rusage before = usage();
        const bool sane = useAll(file, section);
        const rusage after = usage();
        const Cost cost{secondsOf(after) - secondsOf(before),
                        static_cast<double>(after.ru_maxrss - before.ru_maxrss) * 1024};
        return write(ends[1], &cost, sizeof cost) == sizeof cost && sane;
    });
    Cost cost;
    EXPECT_EQ(read(ends[0], &cost, sizeof cost), static_cast<ssize_t>(sizeof cost));
    close(ends[0]);
    close(ends[1]);
    return cost;
}

std::string repeated(std::string_view piece, std::size_t size) {
    std::string bytes;
    bytes.reserve(size + piece.size());
    while (bytes.size() < size)
        bytes += piece;
    return bytes;
}

std::string randomBytes(std::size_t size) {
    std::mt19937 random(7);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

TEST(ProfileHostile, CostsTimeAndMemoryLikeTheFile) {
    struct Row {
        const char* name;
        std::string (*make)(std::size_t size);
    };
    const Row rows[] = {
        {"one line", [](std::size_t size) { return "[s]\r\nk=" + std::string(size, 'x'); }},
        {"one name", [](std::size_t size) { return "[s]\r\n" + std::string(size, 'x'); }},
        {"one section line", [](std::size_t size) { return "[s" + std::string(size, 'x'); }},
        {"brackets", [](std::size_t size) { return std::string(size, '['); }},
        {"blanks", [](std::size_t size) { return "[s]\n" + std::string(size, ' '); }},
        {"zeros", [](std::size_t size) { return std::string(size, '\0'); }},
        {"line ends", [](std::size_t size) { return "[s]\n" + std::string(size, '\n'); }},
        {"binary", randomBytes},
        {"empty sections", [](std::size_t size) { return repeated("[]\n", size); }},
        {"one section again and again", [](std::size_t size) { return repeated("[s]\nk=1\n", size); }},
        {"open sections", [](std::size_t size) { return repeated("[\n", size); }},
        {"shortest lines", [](std::size_t size) { return "[s]\n" + repeated("a\n", size); }},
        {"shortest keys", [](std::size_t size) { return "[s]\n" + repeated("=\n", size); }},
        {"one key again and again", [](std::size_t size) { return "[s]\n" + repeated("x=1\n", size); }},
        {"UTF-16",
         [](std::size_t size) {
             return "\xFF\xFE" + repeated(std::string("[\0s\0]\0\n\0a\0=\0\xFF\x4E\n\0", 16), size);
         }},
    };
    constexpr std::size_t kSize = KOR_TEST_SANITIZED ? 1 << 17 : 2 << 20;
    constexpr int kTimes = 8;
    for (const Row& row : rows) {
        const std::size_t size = kTimes * kSize;
        const Cost small = costOf("s", [&row] { return row.make(kSize); });
        const Cost large = costOf("s", [&row, size] { return row.make(size); });
        if (KOR_TEST_SANITIZED) continue;  // whose memory is its own
        EXPECT_LT(large.bytes, 2.0 * static_cast<double>(size) + (16 << 20)) << row.name;
        // Twice as much as linear, and a clock's tick, are no growth; the square would be eight times as
        // much.
        EXPECT_LT(large.seconds, 2 * kTimes * small.seconds + 0.1) << row.name;
    }
}

// A gigabyte at KORUTIL_TEST_SCALE=16.
TEST(ProfileHostile, ALongLineIsRead) {
    const auto megabytes = static_cast<std::size_t>(scaled(KOR_TEST_SANITIZED ? 4 : 64));
    const std::size_t size = std::min<std::size_t>(megabytes << 20, 1 << 30);
    const Cost cost = costOf("s", [size] { return "[s]\r\nk=" + std::string(size, 'x') + "\r\nlast=1\r\n"; });
    EXPECT_TRUE(KOR_TEST_SANITIZED || cost.bytes < 2.0 * static_cast<double>(size) + (16 << 20))
        << cost.bytes;
}

TEST(ProfileHostile, TheFirstOfAHundredThousandSectionsCounts) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "[s]\r\nk=" + std::to_string(i) + "\r\n";
    const ScratchFolder scratch;
    const std::string file = scratch.file("f.ini", text);
    EXPECT_EQ(GetPrivateProfileIntA("s", "k", -1, file.c_str()), 0u);
    EXPECT_TRUE(WritePrivateProfileStringA("s", nullptr, nullptr, file.c_str()));
    EXPECT_EQ(GetPrivateProfileIntA("s", "k", -1, file.c_str()), 1u);
    std::vector<char> names(1000000);
    EXPECT_EQ(GetPrivateProfileSectionNamesA(names.data(), 1000000, file.c_str()), 2u * 99999);
}

TEST(ProfileHostile, FilesThatHaveGrownAreNotAllKept) {
    constexpr int kFiles = 24;
    const ScratchFolder scratch;
    inChild([&] {
        const std::string grown = "[s]\n" + std::string(4 << 20, 'x') + "\n";
        const rusage before = usage();
        bool sane = true;
        for (const bool isGrown : {false, true}) {
            for (int i = 0; i < kFiles; ++i) {
                const std::string name = std::to_string(i) + ".ini";
                const std::string file = scratch.file(name, isGrown ? grown : "[s]\nk=1\n");
                sane = sane && GetPrivateProfileIntA("s", "k", 0, file.c_str()) == (isGrown ? 0u : 1u);
            }
        }
        const auto kilobytes = usage().ru_maxrss - before.ru_maxrss;
        EXPECT_TRUE(KOR_TEST_SANITIZED || kilobytes < (16 + 2 * 4 + 8) << 10) << kilobytes;
        return sane && !testing::Test::HasFailure();
    });
}

}  // namespace
