#include "platform/posix/user/file_dialog.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "korutil/platform/message_box.h"
#include "platform/last_separator.h"
#include "platform/posix/kernel/display_text.h"
#include "platform/posix/kernel/file.h"
#include "platform/posix/kernel/known_code_page.h"
#include "platform/posix/kernel/native_name.h"
#include "platform/posix/kernel/thread_state.h"
#include "platform/posix/user/terminal.h"

namespace {

constexpr std::string_view kSeparators = "\\/";

BOOL endWith(DWORD code) {
    kor::threadState.dialogError = code;
    return FALSE;
}

std::string_view textOf(LPCSTR text) { return text ? text : std::string_view(); }

// The patterns of the filter's chosen entry; empty when there is none.
std::string_view patternsOf(const OPENFILENAMEA& dialog) {
    const char* name = dialog.lpstrFilter;
    for (DWORD index = std::max<DWORD>(dialog.nFilterIndex, 1); name && *name; --index) {
        const char* patterns = name + std::strlen(name) + 1;
        if (index == 1) return patterns;
        name = patterns + std::strlen(patterns) + 1;
    }
    return {};
}

std::string questionOf(const OPENFILENAMEA& dialog, const char* verb) {
    std::string question = dialog.lpstrTitle ? kor::displayText(dialog.lpstrTitle) : verb;
    const auto patterns = patternsOf(dialog);
    if (!patterns.empty()) question += " (" + kor::displayText(patterns.data()) + ")";
    if (dialog.lpstrInitialDir) {
        const auto native = kor::nativePath(dialog.lpstrInitialDir);
        question += " in " + (native ? *native : kor::displayText(dialog.lpstrInitialDir));
    }
    if (*dialog.lpstrFile) question += " [" + kor::displayText(dialog.lpstrFile) + "]";
    return question + ": ";
}

// A line without blanks around it; nothing at the end of input.
std::optional<std::string> answerTo(const std::string& question) {
    constexpr std::size_t kLongest = 4096;
    const std::lock_guard guard(kor::terminalLock());
    kor::print(question);
    std::string answer;
    if (!kor::readLine(answer, kLongest)) {
        kor::print("\n");
        return std::nullopt;
    }
    answer.erase(0, answer.find_first_not_of(" \t"));
    answer.erase(answer.find_last_not_of(" \t\r") + 1);
    return answer;
}

bool isComplete(std::string_view path) {
    return path.starts_with('\\') || path.starts_with('/') || (path.size() >= 2 && path[1] == ':');
}

// A path in the code page made full from the dialog's folder; nothing when it is none.
std::optional<std::string> fullPath(const OPENFILENAMEA& dialog, std::string path) {
    const auto folder = textOf(dialog.lpstrInitialDir);
    if (!isComplete(path) && !folder.empty()) path = std::string(folder) + '\\' + path;
    char full[4096];
    const DWORD length = GetFullPathNameA(path.c_str(), sizeof full, full, nullptr);
    if (length == 0 || length >= sizeof full) return std::nullopt;
    return std::string(full, length);
}

std::optional<std::string> chosenPath(const OPENFILENAMEA& dialog, const std::string& answer) {
    if (answer.empty()) return fullPath(dialog, dialog.lpstrFile);
    if (answer.starts_with('/')) return kor::windowsPath(answer);
    auto text = kor::textFromUtf8(answer);
    return text ? fullPath(dialog, std::move(*text)) : std::nullopt;
}

std::size_t nameStart(std::string_view path) { return kor::lastSeparator(path, kSeparators) + 1; }

bool isThere(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

bool isFolder(const std::string& path) {
    return isThere(path) && (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY);
}

void addExtension(const OPENFILENAMEA& dialog, std::string& path) {
    const auto extension = textOf(dialog.lpstrDefExt);
    const bool has = path.find('.', nameStart(path)) != path.npos;
    const bool takenAsItStands = (dialog.Flags & OFN_FILEMUSTEXIST) && isThere(path);
    if (!extension.empty() && !has && !takenAsItStands) path.append(".").append(extension);
}

// Why a path may not be chosen; null when it may.
const char* objectionTo(const OPENFILENAMEA& dialog, const std::string& path) {
    if (isFolder(path)) return "This is a folder";
    if ((dialog.Flags & OFN_FILEMUSTEXIST) && !isThere(path)) return "There is no such file";
    if ((dialog.Flags & OFN_PATHMUSTEXIST) && !isFolder(path.substr(0, nameStart(path))))
        return "There is no such folder";
    return nullptr;
}

bool mayReplace(const OPENFILENAMEA& dialog, const std::string& path) {
    if (!(dialog.Flags & OFN_OVERWRITEPROMPT) || !isThere(path)) return true;
    return MessageBoxA(dialog.hwndOwner, "The file is already there. Replace it?", path.c_str(),
                       MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2) == IDYES;
}

// Asks until a path may be chosen; empty when the user gave up.
std::string ask(const OPENFILENAMEA& dialog, const char* verb) {
    const std::string question = questionOf(dialog, verb);
    for (;;) {
        const auto answer = answerTo(question);
        if (!answer || (answer->empty() && !*dialog.lpstrFile)) return {};
        auto path = chosenPath(dialog, *answer);
        if (path) addExtension(dialog, *path);
        const char* objection = path ? objectionTo(dialog, *path) : "This is no name of a file";
        if (objection) {
            kor::print(std::string(objection) + ".\n");
        } else if (mayReplace(dialog, *path)) {
            return *path;
        }
    }
}

BOOL deliver(const std::string& path, OPENFILENAMEA& dialog) {
    if (path.size() >= dialog.nMaxFile) {
        const std::size_t size = path.size() + 1;
        for (std::size_t i = 0; i < 2 && i < dialog.nMaxFile; ++i)
            dialog.lpstrFile[i] = static_cast<char>(size >> (8 * i) & 0xFF);
        return endWith(FNERR_BUFFERTOOSMALL);
    }
    std::memcpy(dialog.lpstrFile, path.c_str(), path.size() + 1);
    const std::size_t name = nameStart(path), dot = path.rfind('.');
    dialog.nFileOffset = static_cast<WORD>(name);
    dialog.nFileExtension = static_cast<WORD>(dot == path.npos || dot < name ? 0 : dot + 1);
    return TRUE;
}

BOOL run(OPENFILENAMEA* dialog, const char* verb) {
    endWith(0);
    if (!dialog || dialog->lStructSize != sizeof(OPENFILENAMEA) || !dialog->lpstrFile || !dialog->nMaxFile)
        return endWith(CDERR_STRUCTSIZE);
    try {
        if (!kor::canAsk()) return FALSE;
        const std::string path = ask(*dialog, verb);
        return path.empty() ? FALSE : deliver(path, *dialog);
    } catch (const std::bad_alloc&) {
        return endWith(CDERR_MEMALLOCFAILURE);
    }
}

}  // namespace

KORPLATFORM_API BOOL WINAPI GetOpenFileNameA(OPENFILENAMEA* dialog) { return run(dialog, "Open"); }

KORPLATFORM_API BOOL WINAPI GetSaveFileNameA(OPENFILENAMEA* dialog) { return run(dialog, "Save as"); }

KORPLATFORM_API DWORD WINAPI CommDlgExtendedError() { return kor::threadState.dialogError; }
