#pragma once
/// How the C runtime's low-level files are opened: one of the first three, and what else is wanted, joined by
/// `|`. The values are the Windows runtime's on every target.

#ifdef _WIN32
#include <fcntl.h>
#else

inline constexpr int _O_RDONLY = 0x0000;
inline constexpr int _O_WRONLY = 0x0001;
inline constexpr int _O_RDWR = 0x0002;
inline constexpr int _O_APPEND = 0x0008;      ///< every write goes to the end
inline constexpr int _O_RANDOM = 0x0010;      ///< a hint without effect
inline constexpr int _O_SEQUENTIAL = 0x0020;  ///< a hint without effect
inline constexpr int _O_TEMPORARY = 0x0040;   ///< the file is deleted when it is closed
inline constexpr int _O_NOINHERIT = 0x0080;  ///< child processes do not inherit the file (they never do here)
inline constexpr int _O_CREAT = 0x0100;      ///< a file that is not there is made
inline constexpr int _O_TRUNC = 0x0200;      ///< a file that is there becomes empty
inline constexpr int _O_EXCL = 0x0400;       ///< with _O_CREAT: a file that is there is a failure
inline constexpr int _O_SHORT_LIVED = 0x1000;  ///< a hint without effect
inline constexpr int _O_TEXT = 0x4000;         ///< on Windows line ends are translated; no effect here
inline constexpr int _O_BINARY = 0x8000;       ///< bytes as they are, which is all there is here

#endif
