// Full names, and the folders that have a role.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "korutil/platform/last_error.h"
#include "platform/last_separator.h"
#include "platform/posix/kernel/current_folder.h"
#include "platform/posix/kernel/drive_map.h"
#include "platform/posix/kernel/errno_error.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/text_result.h"
#include "platform/posix/kernel/time.h"
#include "platform/posix/kernel/windows_path.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

using kor::failWith;

bool isFolder(const std::string& native) {
    struct stat status {};
    return stat(native.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The temporary folder as a platform path with a backslash at its end.
std::string temporaryFolder() {
    for (const char* name : {"TMPDIR", "TMP", "TEMP"}) {
        const char* given = std::getenv(name);
        if (!given || *given != '/' || !isFolder(given)) continue;
        if (auto path = kor::windowsPath(given)) {
            if (!kor::endsInSeparator(*path, "\\")) *path += '\\';
            return *path;
        }
    }
    return "Z:\\tmp\\";
}

DWORD systemFolder(const char* path, LPSTR buffer, DWORD size) {
    return kor::withMemory(0, [&] {
        kor::driveFolder('C');  // makes it when it is missing
        return kor::textResult(path, buffer, size);
    });
}

// @param spelled  receives the path with its components as on disk. @return false with the last error set
bool spellOnDisk(LPCSTR name, std::string& spelled) {
    const auto path = kor::resolvePath(name);
    if (!path) return false;
    struct stat status {};
    if (lstat(path->native.c_str(), &status) != 0) return kor::failWithErrnoOf(path->native);
    // The caller's form stays; only its components are taken from the native path, from the end.
    spelled = *kor::utf8FromText(name);
    std::size_t end = spelled.size();
    std::size_t nativeEnd = path->native.size();
    while (end > 0 && nativeEnd > 0) {
        while (end > 0 && (spelled[end - 1] == '\\' || spelled[end - 1] == '/'))
            --end;
        const std::size_t start = spelled.find_last_of("\\/:", end == 0 ? 0 : end - 1) + 1;
        const std::size_t nativeStart = path->native.rfind('/', nativeEnd - 1) + 1;
        const std::string component = spelled.substr(start, end - start);
        if (start >= end || component.find_first_not_of('.') == component.npos) break;
        const std::string actual = path->native.substr(nativeStart, nativeEnd - nativeStart);
        spelled.replace(start, end - start, actual);
        end = start;
        nativeEnd = nativeStart == 0 ? 0 : nativeStart - 1;
        if (start > 0 && spelled[start - 1] == ':') break;
    }
    return true;
}

}  // namespace

KORPLATFORM_API DWORD WINAPI GetFullPathNameA(LPCSTR name, DWORD size, LPSTR buffer, LPSTR* part) {
    return kor::withMemory(0, [&]() -> DWORD {
        const auto text = kor::utf8FromText(name ? name : "");
        if (!text || text->empty()) return static_cast<DWORD>(failWith(ERROR_INVALID_NAME));
        const auto full = kor::absolutePath(*text);
        if (!full) return 0;
        const DWORD length = kor::utf8Result(*full, buffer, size);
        if (length == 0 || length >= size || !part) return length;
        const std::string_view last = std::string_view(*full).substr(full->rfind('\\') + 1);
        const auto lastText = kor::textFromUtf8(last);
        const bool device = full->starts_with("\\\\.\\") && full->find('\\', 4) == full->npos;
        const bool hasPart = lastText && !lastText->empty() && !device;
        *part = hasPart ? buffer + (length - lastText->size()) : nullptr;
        return length;
    });
}

KORPLATFORM_API DWORD WINAPI GetLongPathNameA(LPCSTR name, LPSTR buffer, DWORD size) {
    return kor::withMemory(0, [&]() -> DWORD {
        std::string spelled;
        return spellOnDisk(name, spelled) ? kor::utf8Result(spelled, buffer, size) : 0;
    });
}

KORPLATFORM_API DWORD WINAPI GetShortPathNameA(LPCSTR name, LPSTR buffer, DWORD size) {
    return GetLongPathNameA(name, buffer, size);
}

KORPLATFORM_API DWORD WINAPI GetTempPathA(DWORD size, LPSTR buffer) {
    return kor::withMemory(0, [&]() -> DWORD { return kor::textResult(temporaryFolder(), buffer, size); });
}

KORPLATFORM_API UINT WINAPI GetTempFileNameA(LPCSTR folder, LPCSTR prefix, UINT unique, LPSTR buffer) {
    return kor::withMemory(0, [&]() -> UINT {
        constexpr std::size_t kLongestFolder = MAX_PATH - 14;
        const std::string_view given = folder ? folder : "";
        if (!buffer || given.size() > kLongestFolder)
            return static_cast<UINT>(failWith(ERROR_BUFFER_OVERFLOW));
        const auto path = kor::resolvePath(given.empty() ? "." : folder);
        if (!path) return 0;
        if (!isFolder(path->native)) return static_cast<UINT>(failWith(ERROR_DIRECTORY));
        std::string start(given);
        if (!start.empty() && !kor::endsInSeparator(start, "\\/")) start += '\\';
        start += std::string_view(prefix ? prefix : "").substr(0, 3);

        static std::atomic<UINT> next{GetTickCount()};
        for (UINT tries = 0; tries < 0x10000; ++tries) {
            UINT number = (unique ? unique : next++) & 0xFFFF;
            if (number == 0) number = 1;
            std::array<char, 16> ending{};
            std::snprintf(ending.data(), ending.size(), "%x.tmp", number);
            const std::string name = start + ending.data();
            kor::textResult(name, buffer, MAX_PATH);
            if (unique) return number;
            const HANDLE made = CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
            if (made != INVALID_HANDLE_VALUE) {
                CloseHandle(made);
                return number;
            }
            if (GetLastError() != ERROR_FILE_EXISTS && GetLastError() != ERROR_SHARING_VIOLATION) return 0;
        }
        return static_cast<UINT>(failWith(ERROR_FILE_EXISTS));
    });
}

KORPLATFORM_API UINT WINAPI GetWindowsDirectoryA(LPSTR buffer, UINT size) {
    return systemFolder("C:\\WINDOWS", buffer, size);
}

KORPLATFORM_API UINT WINAPI GetSystemDirectoryA(LPSTR buffer, UINT size) {
    return systemFolder("C:\\WINDOWS\\SYSTEM32", buffer, size);
}
