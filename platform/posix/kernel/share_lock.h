#pragma once
// Share modes as kernel locks that belong to an open file: bytes far behind the end of any file stand for
// "some handle reads", "some handle lets nobody read" and so on. They hold between handles and between
// processes, and the kernel takes them back with the file.

namespace kor {

/// Claims what an open file does and what it lets others do, in bits of kReads, kWrites, kDeletes.
/// @param descriptor  open for reading; a file that cannot be locked is granted everything
/// @return false when another open file stands against it; the descriptor must then be closed
bool claimShare(int descriptor, unsigned access, unsigned share);

/// Whether every open file of this name lets others delete or rename it.
bool deletionIsShared(const char* native);

}  // namespace kor
