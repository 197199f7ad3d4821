// Texts of several lines, each under its number.
#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "framework/multibyte.h"
#include "korutil/profile.h"
#include "platform/profile_limit.h"
#include "services/profile_argument.h"
#include "services/profile_write.h"

namespace kor {
namespace {

constexpr char kLinesKey[] = "Lines";
constexpr std::string_view kStoredTab = "\\t";
constexpr std::string_view kLineBreak = "\r\n";
constexpr std::size_t kFullLine = 254;  // a line that holds so many takes nothing more
constexpr DWORD kLineRoom = 256;        // of a stored line with its terminator
constexpr int kPlainCount = 4096;       // so many lines need no proof that they are there
constexpr DWORD kMostNames = 1u << 30;

// How many keys a section has, as far as memory goes.
int countKeys(const char* section, UINT_PTR selector) {
    for (DWORD room = 1u << 20; room <= kMostNames; room *= 2) {
        const std::unique_ptr<char[]> names(new (std::nothrow) char[room]);
        if (!names) return 0;
        const DWORD length = appGetProfileString(section, nullptr, "", names.get(), room, selector, nullptr);
        if (length < room - 2) {
            return static_cast<int>(std::count(names.get(), names.get() + length, '\0'));
        }
    }
    return 0;
}

// A count that is only claimed must not make us read for ever.
int countLines(const char* section, UINT_PTR selector) {
    const int claimed = appGetProfileInt(section, kLinesKey, 0, selector, nullptr);
    if (claimed <= kPlainCount) return std::max(claimed, 0);
    return std::min(claimed, std::max(kPlainCount, countKeys(section, selector)));
}

// Turns stored tabs back, in place. @return the new length
std::size_t restoreTabs(char* line, std::size_t length) {
    std::string_view rest(line, length);
    char* end = line;
    while (!rest.empty()) {
        const bool tab = rest.starts_with(kStoredTab);
        const std::size_t used = tab ? kStoredTab.size() : characterLength(rest);
        if (tab) {
            *end++ = '\t';
        } else {
            std::memmove(end, rest.data(), used);
            end += used;
        }
        rest.remove_prefix(used);
    }
    return static_cast<std::size_t>(end - line);
}

// Hands each line to `take`, with its line break unless it is the last one, terminated.
template <class Take>
int readLines(const char* section, UINT_PTR selector, Take take) {
    const int count = countLines(section, selector);
    for (int number = 1; number <= count; ++number) {
        char key[16];
        *std::to_chars(key, key + sizeof key - 1, number).ptr = '\0';
        char line[kLineRoom + kLineBreak.size()];
        std::size_t length = appGetProfileString(section, key, "", line, kLineRoom, selector, nullptr);
        length = restoreTabs(line, length);
        if (number < count) length += kLineBreak.copy(line + length, kLineBreak.size());
        line[length] = '\0';
        take(line, length);
    }
    return count;
}

// The lines of a text as the lines of a section.
class SectionLines {
  public:
    explicit SectionLines(std::string_view text) {
        while (!text.empty()) {
            const bool lineEnds = text.front() == '\r';
            if (lineEnds) {
                endLine();
                text.remove_prefix(1);
            } else if (!append(text.substr(0, characterLength(text)))) {
                break;
            }
            text.remove_prefix(characterLength(text));
        }
        if (!line_.empty()) endLine();
        addKey(kLinesKey, std::to_string(count_));
        data_ += '\0';
    }

    /// In place of all that the section holds, in one step where the system takes so much at once.
    bool write(const char* section, const char* file) const {
        if (data_.size() < kLongestProfileSection)
            return WritePrivateProfileSectionA(section, data_.data(), file) != FALSE;
        if (!writeProfileText(section, nullptr, nullptr, file)) return false;
        for (const char* key = data_.data(); *key; key += std::strlen(key) + 1) {
            const char* const sign = std::strchr(key, '=');
            const std::string name(key, sign);
            if (!writeProfileText(section, name.c_str(), sign + 1, file)) return false;
        }
        return true;
    }
    int count() const { return count_; }

  private:
    // A line that is full ends the whole text: what is behind it is not stored, and that is required.
    bool append(std::string_view character) {
        const std::string_view stored = character == "\t" ? kStoredTab : character;
        if (line_.size() >= kFullLine || line_.size() + stored.size() >= kLineRoom) return false;
        line_ += stored;
        return true;
    }
    void endLine() {
        addKey(std::to_string(++count_), line_);
        line_.clear();
    }
    void addKey(std::string_view key, std::string_view value) {
        data_.append(key).append(1, '=').append(value).append(1, '\0');
    }

    std::string data_;
    std::string line_;
    int count_ = 0;
};

std::string textOf(HWND window) {
    const LRESULT length = SendMessageA(window, WM_GETTEXTLENGTH, 0, 0);
    std::string text(static_cast<std::size_t>(std::max<LRESULT>(length, 0)) + 1, '\0');
    const LRESULT got = SendMessageA(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(std::clamp<LRESULT>(got, 0, length)));
    return text;
}

}  // namespace
}  // namespace kor

int KORUTIL_CALL profLoadEdit(HWND editWindow, const char* section, UINT_PTR selector, HINSTANCE module) {
    if (!kor::resolveName(section, kor::NameRole::section, module)) return 0;
    SendMessageA(editWindow, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(""));
    const int count = kor::readLines(section, selector, [editWindow](const char* line, std::size_t) {
        constexpr LONG kEnd = 0x7FFFFFFF;
        SendMessageA(editWindow, EM_SETSEL, static_cast<WPARAM>(kEnd), kEnd);
        SendMessageA(editWindow, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(line));
    });
    SendMessageA(editWindow, EM_SETMODIFY, FALSE, 0);
    return count;
}

int KORUTIL_CALL profLoadToBuf(char* buffer, const char* section, UINT_PTR selector, HINSTANCE module) {
    if (buffer) *buffer = '\0';
    if (!kor::resolveName(section, kor::NameRole::section, module)) return 0;
    return kor::readLines(section, selector, [&buffer](const char* line, std::size_t length) {
        if (!buffer) return;
        std::memcpy(buffer, line, length + 1);
        buffer += length;
    });
}

int KORUTIL_CALL profSaveEdit(HWND editWindow, const char* section, UINT_PTR selector, HINSTANCE module) try {
    if (!kor::resolveName(section, kor::NameRole::section, module) || !section || !*section) return 0;
    if (!SendMessageA(editWindow, EM_GETMODIFY, 0, 0)) return 0;
    const kor::SectionLines lines(kor::textOf(editWindow));
    const bool written =
        kor::writeToProfiles(selector, [&](const char* file) { return lines.write(section, file); });
    return written ? lines.count() : 0;
} catch (const std::bad_alloc&) {
    return 0;
}
