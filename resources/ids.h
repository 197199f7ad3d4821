#pragma once
// The numbers of the library's resources: message texts (resources/<LANGID>.txt), dialogs and cursors
// (resources/pieces.txt).

namespace kor::text {

inline constexpr unsigned kFileNotFound = 2010;  // formatted with the file name
inline constexpr unsigned kFileNoMemory = 2101;
inline constexpr unsigned kFileFailed = 2102;
inline constexpr unsigned kFileReadDenied = 2103;
inline constexpr unsigned kFileWriteDenied = 2104;
inline constexpr unsigned kFileCannotDecode = 2105;
inline constexpr unsigned kFileCannotEncode = 2106;
inline constexpr unsigned kFileEntryAdjusted = 2107;
inline constexpr unsigned kFileFormat = 2108;
inline constexpr unsigned kFileInUse = 2109;
inline constexpr unsigned kFileReadOnly = 2110;
inline constexpr unsigned kFileWithoutName = 2120;  // 260 characters at most
inline constexpr unsigned kOutOfMemory = 10002;  // 63 characters at most
inline constexpr unsigned kPathTooLong = 10006;  // formatted with the path and the limit
inline constexpr unsigned kDebugHeader = 10200;  // formatted with code and location, 40 characters at most
inline constexpr unsigned kUserBreak = 10202;
inline constexpr unsigned kInvalidArgument = 10204;
inline constexpr unsigned kInternalError = 10205;
inline constexpr unsigned kDebugFrame = 10206;  // formatted with the debug message, 100 characters at most
inline constexpr unsigned kReserveExhausted = 10209;
inline constexpr unsigned kStringMissing = 10210;  // formatted with its number, 255 characters at most
inline constexpr unsigned kButtonOk = 10301;

}  // namespace kor::text

namespace kor::resource {

inline constexpr unsigned kCursor = 105;
inline constexpr unsigned kWarningDialog = 11006;
inline constexpr int kWarningDialogIcon = 20;
inline constexpr int kWarningDialogText = 100;

}  // namespace kor::resource
