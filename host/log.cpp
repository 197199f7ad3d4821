#include "host/log.h"

#include <memory>
#include <new>

#include "host/bql.h"
#include "host/maker_function.h"
#include "platform/win32.h"

namespace kor {
namespace {

constexpr UINT kLineSize = 8192;

int writeLine(const char* format, void* arguments) {
    if (!arguments) {
        OutputDebugStringA(format);
        return 1;
    }
    const std::unique_ptr<char[]> line(new (std::nothrow) char[kLineSize]);
    if (!line || Bql_vszprintf(line.get(), kLineSize, format, arguments) <= 0) return 0;
    OutputDebugStringA(line.get());
    return 1;
}

}  // namespace

int printLog(DWORD flags, const char* format, ...) {
    va_list list;
    va_start(list, format);
    const int result = dbgPrintLog(flags, format, KORUTIL_ARGUMENTS(list));
    va_end(list);
    return result;
}

}  // namespace kor

int KORUTIL_CALL dbgPrintLog(DWORD flags, const char* format, void* arguments) {
    if (!format) return 0;
    const auto maker = kor::makerFunction<decltype(&dbgPrintLog)>("KorBase", "dbgPrintLog");
    return maker ? maker(flags, format, arguments) : kor::writeLine(format, arguments);
}
