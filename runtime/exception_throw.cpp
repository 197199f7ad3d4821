// The functions that place an error and throw it.

#include "framework/bounded_text.h"
#include "host/format.h"
#include "korutil/error.h"
#include "korutil/platform/arguments.h"
#include "platform/win32.h"
#include "resources/ids.h"
#include "runtime/error_ring.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"

namespace kor {
namespace {

constexpr char kDivisionByZeroText[] =
    "Division by zero\n\nPlease note error number and inform your dealer.\nError no.: %d";

constexpr UINT kModeWrite = 2;
constexpr UINT kFileTextRoom = 520;
constexpr UINT kFileNameReserve = 10;  // with less room than this a file name is not begun

struct FileText {
    DWORD systemCode;
    DWORD storageCode;
    UINT text;
    UINT textForWriting;
};

constexpr FileText kFileTexts[] = {
    {2, 0x80030002, text::kFileNotFound, text::kFileNotFound},
    {5, 0x80030005, text::kFileReadDenied, text::kFileWriteDenied},
    {8, 0x80030008, text::kFileNoMemory, text::kFileNoMemory},
};

UINT fileTextFor(DWORD code, UINT mode) {
    for (const FileText& each : kFileTexts) {
        if (code != each.systemCode && code != each.storageCode) continue;
        return mode == kModeWrite ? each.textForWriting : each.text;
    }
    return text::kFileFailed;
}

void makeFileText(char (&buffer)[kFileTextRoom], DWORD code, const char* fileName, UINT mode) {
    const UINT id = fileTextFor(code, mode);
    if (id == text::kFileNotFound && fileName) {
        char format[kFileTextRoom];
        printText(buffer, sizeof(buffer), loadOwnText(id, format, "s"), fileName);
        return;
    }
    char room[kFileTextRoom];
    const std::string_view text = loadOwnText(id, room);
    BoundedText message(buffer, sizeof(buffer));
    message.append(text);
    if (fileName && text.size() + kFileNameReserve < sizeof(buffer)) message.append("\n").append(fileName);
}

// Number 0 is no text.
[[noreturn]] void throwWithTexts(UINT code, UINT number, UINT errorText, UINT debugText) {
    appThrowException(code, number, errorText ? textNumber(errorText) : nullptr, nullptr,
                      debugText ? textNumber(debugText) : nullptr, nullptr, 0, resourceModule());
}

}  // namespace
}  // namespace kor

using namespace kor;

void KORUTIL_CALL appThrowException(UINT code, UINT number, const char* errorText, void* errorArguments,
                                    const char* debugText, void* debugArguments, UINT helpContext,
                                    HINSTANCE instance) {
    CGeneralError* error =
        makeError(code, number, errorText, errorArguments, debugText, debugArguments, helpContext, instance);
    placeMadeError(error);
    throw new CKorException(*error);
}

void KORUTIL_CALL appThrowUserBreak() { throwWithTexts(kErrorUserBreak, 0, text::kUserBreak, 0); }

void KORUTIL_CALL appThrowArgumentError(UINT number) {
    throwWithTexts(kErrorArgument, number, text::kInvalidArgument, 0);
}

void KORUTIL_CALL appThrowDivZero(UINT number) {
    UINT_PTR arguments[] = {number};
    ArgumentsInMemory list;
    appThrowException(kErrorDivisionByZero, number, nullptr, nullptr, kDivisionByZeroText,
                      list.over(arguments), 0, nullptr);
}

void KORUTIL_CALL appThrowInternalError(UINT code, UINT number) {
    throwWithTexts(code, number, 0, text::kInternalError);
}

void KORUTIL_CALL appThrowLastError(UINT number) {
    throwWithTexts(GetLastError(), number, 0, text::kInternalError);
}

void KORUTIL_CALL appThrowFileError(LONG resultCode, UINT number, const char* fileName, UINT mode) {
    const auto code = static_cast<DWORD>(resultCode);
    char message[kFileTextRoom];
    makeFileText(message, code, fileName, mode);
    appThrowException(code, number, message, nullptr, nullptr, nullptr, 0, nullptr);
}
