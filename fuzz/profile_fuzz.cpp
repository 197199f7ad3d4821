// Reads arbitrary bytes as an initialisation file, by every function, and changes it: what was written reads
// back, and everything else stays, byte for byte.
//
// The first 4 bytes say what is changed: the kind of change, the section, the key and the value.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/win32.h"

// Nothing here needs to outlive the machine.
extern "C" int fsync(int) { return 0; }

namespace {

using Names = std::vector<std::string>;

constexpr std::size_t kControlSize = 4;
constexpr std::size_t kMostSections = 8;
constexpr std::size_t kMostKeys = 8;
const char* const kValues[] = {"v", "", "two words", "a=b", "\"", "'open", ";c", "[x]", "\xE4", "0x1F"};
const char* const kNewNames[] = {"k", "new", "two words", "\xC4"};

void require(bool holds, int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "line %d does not hold\n", line);
    std::abort();
}

std::string nativeFile;
std::string file;  // the same as a platform path

void makeFolder() {
    if (!file.empty()) return;
    const char* const temporary = std::getenv("TMPDIR");
    nativeFile = std::string(temporary ? temporary : "/tmp") + "/profile_fuzz-XXXXXX";
    require(mkdtemp(nativeFile.data()) != nullptr);
    setenv("KORUTIL_HOME", nativeFile.c_str(), 1);
    nativeFile += "/f.ini";
    file = "Z:" + nativeFile;
    std::atexit([] {
        unlink(nativeFile.c_str());
        rmdir(nativeFile.substr(0, nativeFile.rfind('/')).c_str());
    });
}

std::string fileBytes() {
    static char bytes[1 << 16];
    const int opened = open(nativeFile.c_str(), O_RDONLY);
    const ssize_t size = read(opened, bytes, sizeof bytes);
    close(opened);
    require(size >= 0);
    return std::string(bytes, static_cast<std::size_t>(size));
}

// Reads into a buffer that is large enough, and into one that is not: the shorter result is the start of the
// longer one.
bool cutsToo = true;

template <class Call>
std::string result(Call call, DWORD terminators) {
    static char whole[1 << 16];
    const DWORD length = call(whole, sizeof whole);
    require(length + terminators <= sizeof whole && whole[length] == '\0');
    if (!cutsToo) return std::string(whole, length);
    for (const DWORD size : {terminators + 1, length / 2 + terminators}) {
        std::vector<char> part(size, '#');
        const DWORD cut = call(part.data(), size);
        require(cut <= length && cut + std::min(terminators, size) <= size);
        require(std::equal(part.begin(), part.begin() + cut, whole) && part[cut] == '\0');
    }
    return std::string(whole, length);
}

std::string value(const std::string& section, const std::string& key, const char* other = "") {
    return result(
        [&](char* buffer, DWORD size) {
            return GetPrivateProfileStringA(section.c_str(), key.c_str(), other, buffer, size, file.c_str());
        },
        1);
}

Names split(const std::string& list) {
    Names names;
    for (std::size_t begin = 0; begin < list.size(); begin += names.back().size() + 1)
        names.emplace_back(list.c_str() + begin);
    return names;
}

Names sections() {
    return split(result(
        [](char* buffer, DWORD size) { return GetPrivateProfileSectionNamesA(buffer, size, file.c_str()); },
        2));
}

Names lines(const std::string& section) {
    return split(result(
        [&](char* buffer, DWORD size) {
            return GetPrivateProfileSectionA(section.c_str(), buffer, size, file.c_str());
        },
        2));
}

Names keys(const std::string& section) {
    Names names;
    for (const std::string& line : lines(section)) {
        if (line.find('=') != line.npos) names.push_back(line.substr(0, line.find('=')));
    }
    return names;
}

// The first sections with their lines.
std::vector<std::pair<std::string, Names>> contents() {
    std::vector<std::pair<std::string, Names>> all;
    for (const std::string& section : sections()) {
        if (all.size() < kMostSections) all.emplace_back(section, lines(section));
    }
    return all;
}

void readAll() {
    for (const auto& [section, lines] : contents()) {
        Names names = keys(section);
        require(names.size() <= lines.size());
        names.resize(std::min(names.size(), kMostKeys));
        for (const std::string& key : names) {
            value(section, key);
            GetPrivateProfileIntA(section.c_str(), key.c_str(), 0, file.c_str());
        }
    }
}

// Between the two, one line has changed, or one has gone, or a line and a section line have come.
void requireOneChange(std::string_view before, std::string_view after) {
    if (before.starts_with("\xFF\xFE") || before.starts_with("\xFE\xFF")) return;
    const auto [was, is] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    before.remove_prefix(static_cast<std::size_t>(was - before.begin()));
    after.remove_prefix(static_cast<std::size_t>(is - after.begin()));
    const auto [wasEnd, isEnd] = std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend());
    before.remove_suffix(static_cast<std::size_t>(wasEnd - before.rbegin()));
    after.remove_suffix(static_cast<std::size_t>(isEnd - after.rbegin()));
    const auto lineEnds = [](std::string_view text) {
        std::size_t count = 0;
        for (std::size_t i = 0; i < text.size(); ++i)
            count += text[i] == '\n' || (text[i] == '\r' && !text.substr(i + 1).starts_with('\n')) ? 1 : 0;
        return count;
    };
    require(lineEnds(before) <= 1 && lineEnds(after) <= 3);
}

// Changes one section. What the others hold stays; one that has the same lines may be the same, by another
// name.
template <class Change>
void change(const std::string& section, Change change) {
    const auto before = contents();
    const Names own = lines(section);
    require(change());
    const auto after = contents();
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i)
        require(after[i].first == before[i].first &&
                (after[i].second == before[i].second || before[i].second == own));
}

// Whether a name reads back as it is written.
bool isPlain(const std::string& name) { return !name.empty() && name.find_first_of("=[];\n\r") == name.npos; }

void setValue(const std::string& section, const std::string& key, const char* to) {
    const std::string bytes = fileBytes();
    const Names before = lines(section);
    change(section,
           [&] { return WritePrivateProfileStringA(section.c_str(), key.c_str(), to, file.c_str()); });
    requireOneChange(bytes, fileBytes());
    if (!isPlain(section) || !isPlain(key)) return;
    require(value(section, key, "none") == to);
    const Names after = lines(section);
    require(after.size() == before.size() || after.size() == before.size() + 1);
    int changed = 0;
    for (std::size_t i = 0; i < before.size(); ++i)
        changed += before[i] != after[i] ? 1 : 0;
    require(changed <= (after.size() == before.size() ? 1 : 0));
}

void removeKey(const std::string& section, const std::string& key) {
    const std::string bytes = fileBytes();
    Names before = lines(section);
    change(section,
           [&] { return WritePrivateProfileStringA(section.c_str(), key.c_str(), nullptr, file.c_str()); });
    requireOneChange(bytes, fileBytes());
    const Names after = lines(section);
    if (isPlain(section) && isPlain(key)) require(after.size() + 1 == before.size());
    if (after.size() == before.size()) return;
    before.erase(std::mismatch(after.begin(), after.end(), before.begin()).second);
    require(after == before);
}

void removeSection(const std::string& section) {
    const Names before = sections();
    require(WritePrivateProfileStringA(section.c_str(), nullptr, nullptr, file.c_str()));
    const std::size_t after = sections().size();
    require(after == before.size() || after + 1 == before.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kControlSize) return 0;
    makeFolder();
    const int made = open(nativeFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    require(write(made, data + kControlSize, size - kControlSize) ==
            static_cast<ssize_t>(size - kControlSize));
    close(made);

    cutsToo = true;
    readAll();
    cutsToo = false;
    const auto pick = [](const Names& names, std::uint8_t choice) {
        return choice < names.size() ? names[choice] : kNewNames[choice % std::size(kNewNames)];
    };
    const std::string section = pick(sections(), data[1]);
    const std::string key = pick(keys(section), data[2]);
    setValue(section, key, kValues[data[3] % std::size(kValues)]);
    switch (data[0] % 4) {
        case 0:
            setValue(section, key, "again");
            break;
        case 1:
            removeKey(section, key);
            break;
        case 2:
            removeSection(section);
            break;
        default:
            change(section,
                   [&] { return WritePrivateProfileSectionA(section.c_str(), "a=1\0b\0", file.c_str()); });
            require(!isPlain(section) || lines(section) == Names({"a=1", "b"}));
            break;
    }
    readAll();
    return 0;
}
