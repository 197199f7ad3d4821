#pragma once
// Where libraries and files without a folder are looked for.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kor {

/// The folders of the library search in their order, as platform paths: those of the host executable, the
/// current one, the system's, the Windows folder, and those of PATH that a platform path can express.
std::vector<std::string> libraryFolders();

bool hasFolder(std::string_view name);
std::string_view fileNameOf(std::string_view path);
std::string joined(const std::string& folder, std::string_view name);

/// The native path of a library by the name that LoadLibraryA was given; nothing when there is no such file.
std::optional<std::string> findLibrary(std::string_view name);

/// Whether a name for which no library was found names a folder.
bool namesFolder(std::string_view name);

}  // namespace kor
