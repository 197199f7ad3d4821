#pragma once
// The names that new files have until they take their places, and what killed writers leave of them.

#include <string>
#include <string_view>

namespace kor {

/// A hidden name that no other writer uses, short whatever the file's name is.
std::string profileOwnName(std::string_view name);

/// Takes away what writers of a file have left that are dead: their process, on this machine, is gone, or
/// what they left is an hour old. Looks at a file's folder once in the life of the process.
void removeProfileLitter(int folder, std::string_view name);

}  // namespace kor
