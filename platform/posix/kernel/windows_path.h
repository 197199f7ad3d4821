#pragma once
// The text rules of platform paths; nothing here looks at a disk. All texts are UTF-8.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kor {

/// Tells the folder that a path without one is taken from.
class CurrentFolders {
  public:
    virtual ~CurrentFolders() = default;

    /// The current folder, absolute (`Z:\home\x`, `Z:\`); only its drive (`Z:`) when it has no name.
    virtual std::string current() const = 0;

    /// The same of a drive.
    virtual std::string currentOf(char drive) const = 0;
};

/// Makes a path absolute and plain. A trailing separator is kept. A last component that is a device name
/// gives
/// `\\.\NAME`.
/// @return nothing for an empty path, and for one that starts in a folder without a name
std::optional<std::string> fullPath(std::string_view path, const CurrentFolders& folders);

/// NUL, CON, COM1 and so on, with or without an extension.
bool isDeviceName(std::string_view component);

/// FALSE for an empty component and for one that holds a reserved or a control character.
bool isValidComponent(std::string_view component);

/// The components after the drive of a full path.
std::vector<std::string_view> componentsOf(std::string_view path);

}  // namespace kor
