#include "tests/runtime/recording_log.h"

#include <cstdio>

#include "korutil/platform/arguments.h"
#include "platform/win32.h"

namespace {

constexpr int kCapacity = 16;
RecordedLine lines[kCapacity];
int written = 0;
int taken = 0;

}  // namespace

KORUTIL_API int KORUTIL_CALL dbgPrintLog(DWORD flags, const char* format, void* arguments) {
    if (written == kCapacity) return 0;
    RecordedLine& line = lines[written++];
    line.flags = flags;
    GetCurrentDirectoryA(sizeof line.folder, line.folder);
    line.errorMode = SetErrorMode(0);
    SetErrorMode(line.errorMode);
    // An `l` means 32 bits in the log's formats, as no letter does here.
    char plain[128] = "";
    for (char* to = plain; *format && to < plain + sizeof plain - 1; ++format) {
        if (*format != 'l') *to++ = *format;
    }
    va_list copy;
    KORUTIL_COPY_ARGUMENTS(copy, arguments);
    std::vsnprintf(line.text, sizeof line.text, plain, copy);
    va_end(copy);
    SetLastError(ERROR_GEN_FAILURE);
    return 1;
}

BOOL KORUTIL_CALL korTakeRecordedLine(RecordedLine* line) {
    if (taken == written) return FALSE;
    *line = lines[taken++];
    if (taken == written) taken = written = 0;
    return TRUE;
}
