// The calls that warn the user.

#include "korutil/warning.h"

#include <cstring>
#include <memory>
#include <new>

#include "host/bql.h"
#include "host/conversion.h"
#include "host/format.h"
#include "korutil/error.h"
#include "platform/win32.h"
#include "runtime/process_state.h"
#include "runtime/text_argument.h"
#include "runtime/warning_display.h"

namespace kor {
namespace {

constexpr UINT kMessageRoom = 8192;
constexpr UINT kTextRoom = 4096;
constexpr UINT kCaptionRoom = 256;
constexpr UINT kFileTextRoom = 256;

BOOL enabled = 1;

using Message = std::unique_ptr<char[]>;

// Room for a message; when there is none, the user is told.
Message makeMessage() {
    Message message(new (std::nothrow) char[kMessageRoom]);
    if (!message) OutOfMemoryError();
    return message;
}

// A record of which the text is still to be set.
UtlWarningRecord makeRecord(UINT_PTR kind, HINSTANCE instance, HWND parent, const char* textOrId,
                            UINT style) {
    UtlWarningRecord record{};
    record.kind = kind;
    record.parent = parent ? parent : defaultParent();
    record.caption = processState().caption;
    record.style = style;
    record.instance = instance;
    record.textId = isTextNumber(textOrId) ? reinterpret_cast<UINT_PTR>(textOrId) : 0;
    return record;
}

int showFormatted(UtlWarningRecord& record, const char* textOrId, void* arguments) {
    char loaded[kTextRoom];
    const char* format = resolveText(textOrId, static_cast<HINSTANCE>(record.instance), loaded);
    const Message message = makeMessage();
    if (!message || !format || Bql_vszprintf(message.get(), kMessageRoom, format, arguments) <= 0) return 0;
    record.text = message.get();
    record.arguments = arguments;
    return displayWarning(record);
}

// The text about a file. @return whether there is one
bool makeFileMessage(char* message, const char* text, const char* fileName) {
    if (std::strstr(text, "%s"))
        return formatTakes(text, "s") && printText(message, kMessageRoom, text, fileName) > 0;
    return printText(message, kMessageRoom, "%s '%s'", text, fileName) > 0;
}

}  // namespace
}  // namespace kor

using namespace kor;

BOOL KORUTIL_CALL utlWarningsEnabled() { return enabled; }

BOOL KORUTIL_CALL utlEnableWarnings(BOOL enable) {
    const BOOL previous = enabled;
    enabled = enable;
    return previous;
}

CUtlEnableWarnings::CUtlEnableWarnings(BOOL enable) : m_bPrevious(utlEnableWarnings(enable)) {}

CUtlEnableWarnings::~CUtlEnableWarnings() { utlEnableWarnings(m_bPrevious); }

int utlWarning(HINSTANCE instance, HWND parent, const char* textOrId, UINT style, ...) {
    if (!enabled) return 1;
    const CKorAlertIfInactive alert;
    UtlWarningRecord record = makeRecord(kWarningText, instance, parent, textOrId, style);
    va_list list;
    va_start(list, style);
    const int result = showFormatted(record, textOrId, KORUTIL_ARGUMENTS(list));
    va_end(list);
    return result;
}

int utlWarningEx(HINSTANCE instance, HWND parent, const char* textOrId, const char* captionOrId, UINT style,
                 UINT flags, ...) {
    if (!enabled && !(flags & kWarningAlways)) return 1;
    if (flags & kWarningAlert) appAlertIfInactive(0);
    const CKorAlertIfInactive alert;
    UtlWarningRecord record = makeRecord(kWarningExtended, instance, parent, textOrId, style);
    char loaded[kCaptionRoom];
    const char* caption = resolveText(captionOrId, instance, loaded);
    if (caption) record.caption = caption;
    va_list list;
    va_start(list, flags);
    void* arguments = flags & kWarningArgumentList ? va_arg(list, void*) : KORUTIL_ARGUMENTS(list);
    const int result = showFormatted(record, textOrId, arguments);
    va_end(list);
    return result;
}

int KORUTIL_CALL utlFileWarning(HINSTANCE instance, HWND parent, UINT textId, const char* fileName,
                                UINT style) {
    if (!enabled) return 1;
    const CKorAlertIfInactive alert;
    const char* textOrId = textNumber(textId);
    UtlWarningRecord record = makeRecord(kWarningFile, instance, parent, textOrId, style);
    char loaded[kFileTextRoom];
    const char* text = resolveText(textOrId, instance, loaded);
    const Message message = makeMessage();
    if (!message || !makeFileMessage(message.get(), text ? text : "", fileName ? fileName : "")) return 0;
    record.text = message.get();
    return displayWarning(record);
}

int KORUTIL_CALL utlDisplayErrorMsg(DWORD systemErrorCode) {
    if (!enabled || systemErrorCode == 0) return 1;
    char* text = nullptr;
    FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        systemErrorCode, MAKELANGID(0, 1), reinterpret_cast<char*>(&text), 0, nullptr);
    if (!text) {
        OutOfMemoryError();  // whatever the cause: required
        return 0;
    }
    const std::unique_ptr<char, decltype(&LocalFree)> owner(text, &LocalFree);
    char caption[kCaptionRoom];
    printText(caption, sizeof(caption), "GetLastError()=%lu", systemErrorCode);
    UtlWarningRecord record = makeRecord(kWarningSystemError, nullptr, nullptr, nullptr, MB_ICONINFORMATION);
    record.text = text;
    record.caption = caption;
    return displayWarning(record);
}

int KORUTIL_CALL utlFunctionNotImplemented() {
    if (!enabled) return 1;
    UtlWarningRecord record =
        makeRecord(kWarningNotImplemented, nullptr, nullptr, nullptr, MB_ICONEXCLAMATION);
    record.text = "This function is not yet implemented";
    return displayWarning(record);
}
