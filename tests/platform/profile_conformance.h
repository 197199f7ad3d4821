#pragma once
// Tables of calls for initialisation files, the same on both targets. In the texts of files "\n" stands for
// CR LF; in lists "|" stands for the zero behind a name.

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/seeded.h"
#include "tests/support/scratch.h"

namespace kor::test::profile {

// Wine stands in for Windows here. Where it is known to differ, a row says what it does instead: once it does
// as Windows, the row fails and is to be corrected.
inline bool onWine() {
    const HMODULE system = GetModuleHandleA("ntdll.dll");
    return system && GetProcAddress(system, "wine_get_version");
}

inline const char* expected(const char* windows, const char* wine) {
    return wine && onWine() ? wine : windows;
}

inline std::string withCrLf(std::string_view text) {
    std::string result;
    for (const char character : text)
        result += character == '\n' ? std::string("\r\n") : std::string(1, character);
    return result;
}

inline std::string readable(std::string_view bytes) {
    std::string result;
    for (const char c : bytes)
        result += c == '\0' ? "|" : c == '\r' ? "<CR>" : c == '\n' ? "<LF>" : std::string(1, c);
    return result;
}

// A buffer that shows what was written to it, and behind its end.
class Buffer {
  public:
    explicit Buffer(DWORD size) : size_(size), bytes_(size + kGuard, kPoison) {}

    char* data() { return bytes_.data(); }
    std::string_view text() const { return {bytes_.data(), size_}; }
    bool guardStands() const {
        return std::all_of(bytes_.begin() + size_, bytes_.end(), [](char c) { return c == kPoison; });
    }
    static constexpr char kPoison = '\xA5';

  private:
    static constexpr std::size_t kGuard = 16;
    DWORD size_;
    std::vector<char> bytes_;
};

struct Result {
    std::size_t length;
    std::string bytes;
    bool unknown = false;
};
inline const Result kUnknown{0, "", true};

// The sizes around which a result of this length comes out differently.
inline std::vector<DWORD> sizesAround(std::size_t length) {
    std::vector<DWORD> sizes;
    for (std::size_t size = 0; size <= length + 3; ++size) {
        if (size < 24 || size + 3 > length) sizes.push_back(static_cast<DWORD>(size));
    }
    sizes.push_back(static_cast<DWORD>(length + 100));
    return sizes;
}

// The first size at which a call leaves something else than it should, if any.
template <class Call, class Wanted>
void expectAtEverySize(std::size_t length, Call call, Wanted wanted) {
    for (const DWORD size : sizesAround(length)) {
        const Result result = wanted(size);
        if (result.unknown) continue;
        Buffer buffer(size);
        const DWORD given = call(buffer.data(), size);
        const std::string_view left = buffer.text().substr(0, result.bytes.size());
        EXPECT_TRUE(given == result.length && left == result.bytes && buffer.guardStands())
            << "size " << size << ": " << given << " " << readable(left) << " instead of " << result.length
            << " " << readable(result.bytes)
            << (buffer.guardStands() ? "" : ", and written behind the buffer");
        if (given != result.length || left != result.bytes || !buffer.guardStands()) return;
    }
}

// One text: cut at size - 1, with a zero. `call(buffer, size)` reads it.
template <class Call>
void expectText(Call call, std::string_view text, bool quoted = false) {
    expectAtEverySize(text.size(), call, [&](DWORD size) -> Result {
        if (size == 0) return {0, ""};
        if (quoted && onWine() && size == text.size() + 1) return kUnknown;  // a byte is missing
        const std::string_view part = text.substr(0, size - 1);
        return {part.size(), std::string(part) + '\0'};
    });
}

// Texts with a zero behind each and one more at the end: cut at size - 2, with two zeros. A buffer that is
// filled to its last byte counts as too small.
template <class Call>
void expectList(Call call, std::string list) {
    std::replace(list.begin(), list.end(), '|', '\0');
    expectAtEverySize(list.size(), call, [&](DWORD size) -> Result {
        if (size < 3 && onWine()) return kUnknown;  // gives the default's text, or writes behind the buffer
        const bool fits = list.empty() || size > list.size() + 1;
        const std::size_t length = fits ? list.size() : size < 2 ? 0 : size - 2;
        const bool second = !fits || list.empty();
        // Which is missing on Wine.
        std::string bytes = list.substr(0, length) + std::string(second && !onWine() ? 2 : 1, '\0');
        bytes.resize(std::min<std::size_t>(bytes.size(), size));
        return {length, bytes};
    });
}

struct Read {
    const char* section;  // null: the names of all sections
    const char* key;      // null: the names of all keys
    const char* value;
    const char* reason;
    const char* wine = nullptr;
};

inline constexpr char kDefault[] = "dflt";

inline void expectReads(const std::string& bytes, std::initializer_list<Read> rows, bool quoted = false) {
    const ScratchFolder scratch;
    const std::string file = scratch.file("f.ini", bytes);
    for (const Read& row : rows) {
        SCOPED_TRACE(std::string(row.reason) + ": [" + (row.section ? row.section : "(null)") + "] " +
                     (row.key ? row.key : "(null)"));
        const auto call = [&](char* buffer, DWORD size) {
            return GetPrivateProfileStringA(row.section, row.key, kDefault, buffer, size, file.c_str());
        };
        const std::string value = expected(row.value, row.wine);
        if ((row.section && row.key) || value == kDefault) {
            expectText(call, value, quoted);
        } else {
            expectList(call, value);
        }
    }
}

inline constexpr const char* kGone = kDefault;

}  // namespace kor::test::profile
