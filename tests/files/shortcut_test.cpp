// Shell link files, laid out byte by byte by the published description.
#include <gtest/gtest.h>

#include <span>
#include <string>

#include "files/link_file.h"
#include "korutil/file_system.h"
#include "platform/win32.h"
#include "tests/support/random.h"
#include "tests/support/scratch.h"

namespace {

using kor::test::ScratchFolder;

std::string number(std::size_t value, int size) {
    std::string bytes;
    for (; size > 0; --size, value >>= 8)
        bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

std::string wide(const std::string& ascii) {
    std::string bytes;
    for (const char c : ascii)
        bytes += {c, '\0'};
    return bytes;
}

std::string header(unsigned flags) {
    std::string bytes = number(76, 4);
    bytes += std::string("\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16) + number(flags, 4);
    return bytes + std::string(76 - bytes.size(), '\0');
}

constexpr unsigned kIdList = 1, kInfo = 2, kName = 4, kRelative = 8, kUnicode = 0x80, kNoInfo = 0x100;
const std::string kList = number(5, 2) + number(3, 2) + "x" + number(0, 2);

// A LinkInfo that tells a path in two pieces.
std::string localInfo(const std::string& base, const std::string& suffix) {
    const std::size_t headerSize = 28, suffixAt = headerSize + base.size() + 1;
    return number(suffixAt + suffix.size() + 1, 4) + number(headerSize, 4) + number(1, 4) + number(0, 4) +
           number(headerSize, 4) + number(0, 4) + number(suffixAt, 4) + base + '\0' + suffix + '\0';
}

// The same in UTF-16, with a text in the code page that must not be used.
std::string wideInfo(const std::string& base) {
    const std::size_t headerSize = 36, baseAt = headerSize + 2, end = baseAt + base.size() * 2 + 2;
    return number(end + 2, 4) + number(headerSize, 4) + number(1, 4) + number(0, 4) + number(headerSize, 4) +
           number(0, 4) + number(headerSize + 1, 4) + number(baseAt, 4) + number(end, 4) + "?" + '\0' +
           wide(base) + number(0, 2) + number(0, 2);
}

std::string networkInfo(const std::string& share, const std::string& suffix) {
    const std::size_t headerSize = 28, size = 20 + share.size() + 1;
    return number(headerSize + size + suffix.size() + 1, 4) + number(headerSize, 4) + number(2, 4) +
           number(0, 8) + number(headerSize, 4) + number(headerSize + size, 4) + number(size, 4) +
           number(0, 4) + number(20, 4) + number(0, 8) + share + '\0' + suffix + '\0';
}

TEST(Shortcut, LeadsToItsPath) {
    const ScratchFolder scratch;
    const std::string inner = scratch.path("x");
    const struct {
        std::string bytes, target;
    } cases[] = {
        {header(kIdList | kInfo) + kList + localInfo("C:\\d\\", "f.tif"), "C:\\d\\f.tif"},
        {header(kInfo) + localInfo("C:\\d\xE4\\f", ""), "C:\\d\xE4\\f"},
        {header(kInfo) + wideInfo("D:\\w"), "D:\\w"},
        {header(kInfo) + networkInfo("\\\\srv\\d", "a\\b"), "\\\\srv\\d\\a\\b"},
        {header(kName | kRelative) + number(1, 2) + "n" + number(4, 2) + "..\\r", scratch.path("r")},
        {header(kName | kRelative | kUnicode) + number(1, 2) + wide("n") + number(3, 2) + wide(".\\r"),
         scratch.path("l\\r")},
        {header(kInfo | kRelative | kNoInfo) + localInfo("C:\\d", "") + number(1, 2) + "r",
         scratch.path("l\\r")}};
    scratch.folder("l");
    for (const auto& c : cases) {
        const std::string link = scratch.file("l\\f.lnk", c.bytes);
        char target[MAX_PATH] = "old";
        const auto size = static_cast<DWORD>(c.target.size() + 1);
        EXPECT_EQ(sysResolveShortcut(link.c_str(), target, size - 1), 0);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_STREQ(target, "old");
        EXPECT_EQ(sysResolveShortcut(link.c_str(), target, size), 1) << c.target << ": " << GetLastError();
        EXPECT_EQ(target, c.target);
    }
}

TEST(Shortcut, RefusesWhatIsNoneOrDamaged) {
    const ScratchFolder scratch;
    char target[MAX_PATH] = "old";
    const auto refused = [&](const std::string& bytes, DWORD error) {
        const std::string link = scratch.file("f.lnk", bytes);
        EXPECT_EQ(sysResolveShortcut(link.c_str(), target, sizeof target), 0) << bytes.size();
        EXPECT_EQ(GetLastError(), error) << bytes.size();
    };
    const std::string info = localInfo("C:\\d\\", "f");
    const std::string good = header(kIdList | kInfo | kRelative) + kList + info + number(1, 2) + "r";
    for (std::size_t size = 0; size < good.size(); size += size < 70 ? 10 : 1)
        refused(good.substr(0, size), ERROR_BAD_FORMAT);
    refused(header(0), ERROR_PATH_NOT_FOUND);
    refused(header(kInfo) + localInfo("..\\d", ""), ERROR_PATH_NOT_FOUND);
    for (const std::size_t size : {27u, 0xFFFFFFFFu})
        refused(header(kInfo) + number(size, 4) + info.substr(4), ERROR_BAD_FORMAT);
    refused(header(kInfo) + info.substr(0, 16) + number(0xFFFFFFF0, 4) + info.substr(20), ERROR_BAD_FORMAT);
    EXPECT_EQ(sysResolveShortcut(scratch.path("none").c_str(), target, sizeof target), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_STREQ(target, "old");
}

TEST(Shortcut, TellsNoMoreThanItsFileHolds) {
    auto random = kor::test::generator();
    const std::string good = header(kIdList | kInfo | kRelative | kUnicode) + kList + wideInfo("C:\\d") +
                             number(2, 2) + wide("rr");
    for (int round = kor::test::scaled(20000); round > 0; --round) {
        std::string bytes = good;
        for (int changes = 3; changes > 0; --changes)
            bytes[20 + random() % (bytes.size() - 20)] = static_cast<char>(random());
        const auto link = kor::readLink(std::as_bytes(std::span(bytes)));
        ASSERT_LE(link ? link->path.size() + link->relative.size() : 0, bytes.size());
    }
}

}  // namespace
