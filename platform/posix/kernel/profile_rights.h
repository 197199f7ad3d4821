#pragma once
// Who may do what with a file.

namespace kor {

/// Gives a new file the owner, the group, the mode and the extended attributes of another one. A group that
/// may not be given costs the new file what it would let others do than before: of the rights of the group
/// and of all others those stay that both had, none where there is an access list; the set-id bits go.
/// @return false with errno set, when the owner cannot be kept
bool takeOverRights(int from, int to);

}  // namespace kor
