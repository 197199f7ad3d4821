// The dialog that loads or saves a file.
#include <array>
#include <new>
#include <string>
#include <string_view>

#include "files/file_kind.h"
#include "files/text_buffer.h"
#include "framework/multibyte.h"
#include "korutil/path.h"
#include "platform/file_dialog.h"
#include "runtime/process_state.h"

namespace kor {
namespace {

constexpr DWORD kFlags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST;

// The dialog's form of a filter: each piece ends in a zero, and one more ends them all.
std::string dialogFilter(std::string_view filter) {
    std::string pieces;
    for (std::size_t length; !filter.empty(); filter.remove_prefix(length)) {
        length = characterLength(filter);
        if (filter[0] == '|') {
            pieces += '\0';
        } else {
            pieces.append(filter.substr(0, length));
        }
    }
    return pieces + '\0' + '\0';
}

std::string filterOf(const FileIoDescription& kind, const std::string& extension) {
    if (kind.filter) return dialogFilter(textOf(kind, kind.filter));
    const std::string pattern = "*." + (extension.empty() ? "*" : extension);
    return dialogFilter(pattern + '|' + pattern);
}

// The texts and the record of one run of the system's dialog.
class Dialog {
  public:
    Dialog(const FileIoDescription& kind, const char* defaultName)
        : folder_(folderOf(kind)),
          extension_(textOf(kind, kind.extension)),
          filter_(filterOf(kind, extension_)) {
        folder_ += '\0';  // room for a root's backslash
        sysMakeCommdlgDir(folder_.data());
        const std::string name = textOf(kind, defaultName ? defaultName : kind.defaultName);
        copyWhole(name, path_.data(), static_cast<DWORD>(path_.size()));
    }

    // @return kFileIoLoaded, kFileIoSaved, kFileIoCancelled; 0 when the dialog could not be shown
    WORD run(int mode) {
        OPENFILENAMEA record{};
        record.lStructSize = sizeof record;
        record.hwndOwner = processState().mainWindow;
        record.lpstrFilter = filter_.data();
        record.nFilterIndex = 1;
        record.lpstrFile = path_.data();
        record.nMaxFile = static_cast<DWORD>(path_.size());
        record.lpstrInitialDir = folder_[0] ? folder_.c_str() : nullptr;
        record.lpstrDefExt = extension_.empty() ? nullptr : extension_.c_str();
        const bool loads = mode == kFileIoLoad;
        record.Flags = kFlags | (loads ? OFN_FILEMUSTEXIST : OFN_OVERWRITEPROMPT);
        if (loads ? GetOpenFileNameA(&record) : GetSaveFileNameA(&record))
            return loads ? kFileIoLoaded : kFileIoSaved;
        return CommDlgExtendedError() == 0 ? kFileIoCancelled : 0;
    }

    const char* path() const { return path_.data(); }

  private:
    std::string folder_;
    std::string extension_;
    std::string filter_;
    std::array<char, kPathRoom> path_{};
};

WORD runDialog(const FileIoDescription& kind, int mode, const char* defaultName, char* buffer, DWORD size) {
    Dialog dialog(kind, defaultName);
    const WORD result = dialog.run(mode);
    if (result != kFileIoLoaded && result != kFileIoSaved) return result;
    if (buffer && size != 0 && !copyWhole(dialog.path(), buffer, size)) *buffer = '\0';
    const FileIoFunction function = mode == kFileIoLoad ? kind.load : kind.save;
    if (function) function(dialog.path(), kind.user);
    return result;
}

}  // namespace
}  // namespace kor

WORD KORUTIL_CALL io_FileEx(const FileIoDescription* description, int mode, const char* defaultName,
                            char* buffer, DWORD size) {
    if (!description || (mode != kFileIoLoad && mode != kFileIoSave)) return 0;
    // The caller's function may throw what it likes; nothing of the dialog's stays then.
    try {
        return kor::runDialog(*description, mode, defaultName, buffer, size);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

WORD KORUTIL_CALL io_File(const FileIoDescription* description, int mode, const char* defaultName) {
    return io_FileEx(description, mode, defaultName, nullptr, 0);
}
