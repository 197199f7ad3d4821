#include "files/read_only.h"

namespace kor {

bool removeReadOnly(const char* path, BOOL(WINAPI* remove)(LPCSTR)) {
    // The attributes of a link are its own here.
    const DWORD attributes = GetFileAttributesA(path);
    const bool readOnly = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
    if (!readOnly || !SetFileAttributesA(path, attributes & ~FILE_ATTRIBUTE_READONLY)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    if (remove(path)) return true;
    const DWORD code = GetLastError();
    SetFileAttributesA(path, attributes);
    SetLastError(code);
    return false;
}

}  // namespace kor
