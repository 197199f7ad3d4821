// The functions that read initialisation files.
#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>

#include "korutil/platform/last_error.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/profile.h"
#include "platform/posix/kernel/profile_cache.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::ProfileCache;
using kor::ProfileContents;
using kor::ProfileLine;
using Reading = kor::ProfileCache::Reading;

DWORD putText(std::string_view text, LPSTR buffer, DWORD size) {
    const auto length = static_cast<DWORD>(std::min<std::size_t>(text.size(), size - 1));
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    if (length < text.size()) SetLastError(ERROR_MORE_DATA);
    return length;
}

// A caller's buffer of at least one byte that takes texts with a zero each, and another zero at the end.
class ListBuffer {
  public:
    ListBuffer(LPSTR buffer, DWORD size) : buffer_(buffer), size_(size) {}

    /// The parts are one text.
    void add(std::initializer_list<std::string_view> parts) {
        for (const std::string_view part : parts)
            append(part);
        append({"", 1});
    }

    bool isEmpty() const { return used_ == 0 && !isCut_; }
    bool isCut() const { return isCut_; }

    /// @return what the functions return
    DWORD finish() {
        // The list's last zero counts as cut off where it is in the buffer's last byte: as the system does
        // it.
        isCut_ = isCut_ || (used_ > 0 && used_ + 1 == size_);
        if (isCut_) SetLastError(ERROR_MORE_DATA);
        const DWORD length = isCut_ ? size_ - std::min<DWORD>(size_, 2) : used_;
        std::memset(buffer_ + length, 0, std::min<DWORD>(size_ - length, isCut_ || length == 0 ? 2 : 1));
        return length;
    }

  private:
    void append(std::string_view part) {
        const auto count = static_cast<DWORD>(std::min<std::size_t>(part.size(), size_ - 1 - used_));
        if (count != 0) std::memcpy(buffer_ + used_, part.data(), count);
        used_ += count;
        isCut_ = isCut_ || count < part.size();
    }

    LPSTR buffer_;
    DWORD size_;
    DWORD used_ = 0;
    bool isCut_ = false;
};

// The lines of a section. @return false when it is not there
template <typename Visit>
bool visitSection(ProfileContents& contents, LPCSTR section, Visit&& visit) {
    const kor::ProfileText& text = contents.text();
    std::string holder;
    const auto where = contents.section(text.fromCaller(section, holder));
    if (!where) return false;
    const std::string_view view = text.view();
    for (std::size_t begin = where->body; begin < where->end;) {
        const kor::ProfileLineSpan span = kor::profileLineAt(view, begin);
        const ProfileLine line = kor::readProfileLine(view.substr(begin, span.end - begin));
        if (line.kind == kor::ProfileLineKind::key && !visit(line)) break;
        begin = span.next;
    }
    return true;
}

// Nothing when there are none.
std::optional<DWORD> sectionNames(LPSTR buffer, DWORD size, LPCSTR file) {
    const Reading reading(file);
    if (!reading.contents()) return std::nullopt;
    ListBuffer list(buffer, size);
    const kor::ProfileText& text = reading.contents()->text();
    std::string holder;
    auto next = kor::nextProfileSection(text.view(), 0, text.leadBytes());
    for (; next && !list.isCut();
         next = kor::nextProfileSection(text.view(), next->span.next, text.leadBytes())) {
        // An empty name would be the list's end.
        if (!next->name.empty()) list.add({text.toCaller(next->name, holder)});
    }
    SetLastError(ERROR_SUCCESS);
    if (list.isEmpty()) return std::nullopt;
    return list.finish();
}

// The blanks at its end are not the default's, other white space is: as the system does it.
DWORD putDefault(LPCSTR text, LPSTR buffer, DWORD size) {
    const std::string_view given = text ? text : "";
    return putText(given.substr(0, given.find_last_not_of(' ') + 1), buffer, size);
}

// Nothing when there are none: a section without keys is one that is not there.
std::optional<DWORD> keyNames(LPCSTR section, LPSTR buffer, DWORD size, LPCSTR file) {
    const Reading reading(file);
    if (!reading.contents()) return std::nullopt;
    ListBuffer list(buffer, size);
    std::string holder;
    visitSection(*reading.contents(), section, [&](const ProfileLine& line) {
        if (line.hasValue && !line.name.empty())
            list.add({reading.contents()->text().toCaller(line.name, holder)});
        return !list.isCut();
    });
    SetLastError(ERROR_SUCCESS);
    if (list.isEmpty()) return std::nullopt;
    return list.finish();
}

// Nothing when the file cannot be read.
std::optional<DWORD> sectionLines(LPCSTR section, LPSTR buffer, DWORD size, LPCSTR file) {
    const Reading reading(file);
    if (!reading.contents()) return std::nullopt;
    ListBuffer list(buffer, size);
    const kor::ProfileText& text = reading.contents()->text();
    std::string names;
    std::string values;
    visitSection(*reading.contents(), section, [&](const ProfileLine& line) {
        const std::string_view name = text.toCaller(line.name, names);
        if (line.hasValue) {
            list.add({name, "=", text.toCaller(line.value, values)});
        } else if (!name.empty()) {
            list.add({name});
        }
        return !list.isCut();
    });
    SetLastError(ERROR_SUCCESS);
    return list.finish();
}

// The value of a key without its quotes; nothing when there is none. The holder may keep it.
std::optional<std::string_view> valueOf(const Reading& reading, LPCSTR section, LPCSTR key,
                                        std::string& holder) {
    if (!reading.contents()) return std::nullopt;
    const kor::ProfileText& text = reading.contents()->text();
    std::string sectionHolder;
    std::string keyHolder;
    SetLastError(ERROR_SUCCESS);
    const auto line =
        reading.contents()->key(text.fromCaller(section, sectionHolder), text.fromCaller(key, keyHolder));
    if (!line || !line->hasValue) return std::nullopt;
    return text.toCaller(kor::withoutProfileQuotes(line->value), holder);
}

struct NumberForm {
    std::string_view prefix;
    UINT base;
};

// Digits until one that is none. What is more than 32 bits is lost: as the system does it.
UINT numberOf(std::string_view text) {
    constexpr NumberForm kForms[] = {{"0x", 16}, {"0o", 8}, {"0b", 2}};
    text = kor::withoutLeadingProfileBlanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    UINT base = 10;
    for (const NumberForm& form : kForms) {
        if (!text.starts_with(form.prefix)) continue;
        base = form.base;
        text.remove_prefix(form.prefix.size());
        break;
    }
    UINT number = 0;
    for (const char character : text) {
        const char small = static_cast<char>(character | 0x20);
        UINT digit = base;
        if (character >= '0' && character <= '9') digit = static_cast<UINT>(character - '0');
        if (small >= 'a' && small <= 'f') digit = static_cast<UINT>(small - 'a' + 10);
        if (digit >= base) break;
        number = number * base + digit;
    }
    return negative ? 0u - number : number;
}

}  // namespace

KORPLATFORM_API DWORD WINAPI GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR defaultValue,
                                                      LPSTR buffer, DWORD size, LPCSTR file) {
    if (!buffer || size == 0) return 0;
    const auto read = kor::withMemory(std::nullopt, [&]() -> std::optional<DWORD> {
        if (!section) return sectionNames(buffer, size, file);
        if (!key) return keyNames(section, buffer, size, file);
        const Reading reading(file);
        std::string holder;
        const auto value = valueOf(reading, section, key, holder);
        if (!value) return std::nullopt;
        return putText(*value, buffer, size);
    });
    return read ? *read : putDefault(defaultValue, buffer, size);
}

KORPLATFORM_API UINT WINAPI GetPrivateProfileIntA(LPCSTR section, LPCSTR key, INT defaultValue, LPCSTR file) {
    return kor::withMemory(static_cast<UINT>(defaultValue), [&]() -> UINT {
        if (!section || !key) return 0;
        const Reading reading(file);
        std::string holder;
        const auto value = valueOf(reading, section, key, holder);
        return value && !value->empty() ? numberOf(*value) : static_cast<UINT>(defaultValue);
    });
}

KORPLATFORM_API DWORD WINAPI GetPrivateProfileSectionA(LPCSTR section, LPSTR buffer, DWORD size,
                                                       LPCSTR file) {
    if (!section || !buffer) return static_cast<DWORD>(kor::failWith(ERROR_INVALID_PARAMETER));
    if (size == 0) return 0;
    const auto read =
        kor::withMemory(std::nullopt, [&] { return sectionLines(section, buffer, size, file); });
    return read ? *read : ListBuffer(buffer, size).finish();
}

KORPLATFORM_API DWORD WINAPI GetPrivateProfileSectionNamesA(LPSTR buffer, DWORD size, LPCSTR file) {
    if (!buffer || size == 0) return 0;
    const auto read = kor::withMemory(std::nullopt, [&] { return sectionNames(buffer, size, file); });
    return read ? *read : ListBuffer(buffer, size).finish();
}

KORPLATFORM_API DWORD WINAPI GetProfileStringA(LPCSTR section, LPCSTR key, LPCSTR defaultValue, LPSTR buffer,
                                               DWORD size) {
    return GetPrivateProfileStringA(section, key, defaultValue, buffer, size, nullptr);
}

KORPLATFORM_API UINT WINAPI GetProfileIntA(LPCSTR section, LPCSTR key, INT defaultValue) {
    return GetPrivateProfileIntA(section, key, defaultValue, nullptr);
}
