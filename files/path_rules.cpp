// What a path is, and the small changes to it.
#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "files/path_form.h"
#include "framework/multibyte.h"
#include "korutil/path.h"
#include "korutil/warning.h"
#include "platform/last_separator.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"

namespace kor {
namespace {

// Required as it is: "ept" is one of them, com5 to com9 are not.
constexpr std::string_view kReservedNames[] = {"con",  "prn",  "ept",  "nul",  "aux",  "clock$", "com1",
                                               "com2", "com3", "com4", "lpt1", "lpt2", "lpt3",   "lpt4",
                                               "lpt5", "lpt6", "lpt7", "lpt8", "lpt9"};

char lowerLetter(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; }

// The names are plain ASCII, so no other letter's case matters.
bool isReservedName(std::string_view name) {
    return std::any_of(
        std::begin(kReservedNames), std::end(kReservedNames), [name](std::string_view reserved) {
            return std::equal(name.begin(), name.end(), reserved.begin(), reserved.end(),
                              [](char ours, char theirs) { return lowerLetter(ours) == theirs; });
        });
}

bool endsInBackslash(std::string_view path) { return endsInSeparator(path, "\\"); }

void cutLast(char* path) { path[std::strlen(path) - 1] = '\0'; }

}  // namespace
}  // namespace kor

int KORUTIL_CALL sysIsAbsPath(const char* path) { return path && kor::isAbsolutePath(path); }

int KORUTIL_CALL sysIsUNCPath(const char* path) { return path && kor::isNetworkPath(path); }

int KORUTIL_CALL sysIsRootDir(const char* path) { return path && kor::isRootFolder(path); }

int KORUTIL_CALL sysIsReservedFileName(const char* path) {
    if (!path) return 0;
    const std::string_view text(path, strnlen(path, kPathRoom - 1));
    std::size_t start = 0;
    bool dotSeen = false;
    // A component counts up to its first dot.
    for (std::size_t at = 0; at <= text.size();) {
        const char next = at < text.size() ? text[at] : '\\';
        const bool ends = next == '\\' || (next == '.' && !dotSeen);
        if (ends && !dotSeen && kor::isReservedName(text.substr(start, at - start))) return 1;
        dotSeen = next != '\\' && (dotSeen || next == '.');
        at += std::max<std::size_t>(1, kor::characterLength(text.substr(at)));
        if (next == '\\') start = at;
    }
    return 0;
}

int KORUTIL_CALL sysIsValidFileNameChar(UINT character) {
    constexpr std::string_view kForbidden = "\"*/:;<>?\\|";
    return character > 0x7F || kForbidden.find(static_cast<char>(character)) == kForbidden.npos;
}

int KORUTIL_CALL sysContainsWildCards(const char* path) {
    if (!path) return 0;
    const std::string_view text(path);
    // No byte below 0x40 is ever the second one of a character.
    return text.find_first_of("*?", text.starts_with("\\\\?\\") ? 4 : 0) != text.npos;
}

int KORUTIL_CALL sysGetFileExt(const char* path, const char** extension) {
    if (extension) *extension = nullptr;
    if (!path || !extension) return 0;
    const std::string_view text(path);
    const std::size_t dot = text.rfind('.');
    if (dot == text.npos || kor::lastSeparator(text.substr(dot), "\\") != text.npos) return 0;
    *extension = path + dot;
    return 1;
}

int KORUTIL_CALL sysAppendBackslash(char* path) {
    if (!path) return 0;
    const std::string_view text(path);
    if (!text.empty() && !kor::endsInBackslash(text)) std::memcpy(path + text.size(), "\\", 2);
    return 1;
}

int KORUTIL_CALL sysDeleteBackslash(char* path) {
    if (!path) return 0;
    if (kor::endsInBackslash(path)) kor::cutLast(path);
    return 1;
}

int KORUTIL_CALL sysMakeCommdlgDir(char* folder) {
    return sysIsRootDir(folder) ? sysAppendBackslash(folder) : sysDeleteBackslash(folder);
}

int KORUTIL_CALL sysConcatPath(char* path, const char* text) {
    if (!path || !text) return 0;
    const std::size_t length = std::strlen(path);
    if (length + std::strlen(text) >= kPathRoom) {
        try {
            sysPathTooLong((std::string(path) + text).c_str(), kPathRoom);
        } catch (const std::bad_alloc&) {
            sysPathTooLong(path, kPathRoom);
        }
    }
    // Required: the text is appended in every case.
    std::memmove(path + length, text, std::strlen(text) + 1);
    return 1;
}

int KORUTIL_CALL sysPathTooLong(const char* path, DWORD limit) {
    return utlWarning(kor::resourceModule(), nullptr, kor::textNumber(kor::text::kPathTooLong),
                      MB_ICONEXCLAMATION, path ? path : "", limit);
}
