#pragma once
// The numbers of the library's resources: message texts (resources/<LANGID>.txt), dialogs and cursors
// (resources/pieces.txt).

namespace kor::text {

inline constexpr unsigned kFileNotFound = 2010;  // formatted with the file name
inline constexpr unsigned kFileNoMemory = 2101;
inline constexpr unsigned kFileFailed = 2102;
inline constexpr unsigned kFileReadDenied = 2103;
inline constexpr unsigned kFileWriteDenied = 2104;
inline constexpr unsigned kOutOfMemory = 10002;  // 63 characters at most
inline constexpr unsigned kDebugHeader = 10200;  // formatted with code and location, 40 characters at most
inline constexpr unsigned kUserBreak = 10202;
inline constexpr unsigned kInvalidArgument = 10204;
inline constexpr unsigned kInternalError = 10205;
inline constexpr unsigned kDebugFrame = 10206;  // formatted with the debug message, 100 characters at most
inline constexpr unsigned kReserveExhausted = 10209;
inline constexpr unsigned kButtonOk = 10301;

}  // namespace kor::text

namespace kor::resource {

inline constexpr unsigned kCursor = 105;
inline constexpr unsigned kWarningDialog = 11006;
inline constexpr int kWarningDialogIcon = 20;
inline constexpr int kWarningDialogText = 100;

}  // namespace kor::resource
