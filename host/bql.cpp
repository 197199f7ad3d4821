#include "host/bql.h"

#include "host/format.h"
#include "host/maker_function.h"
#include "host/scan.h"

namespace kor {
namespace {

constexpr char kLibrary[] = "Bql";

using Formatter = int(KORUTIL_CALL*)(char*, UINT, const char*, void*);
using Scanner = int(KORUTIL_CALL*)(const char*, UINT, const char*, void*);

}  // namespace

int Bql_vszprintf(char* buffer, UINT size, const char* format, void* arguments) {
    const auto maker = makerFunction<Formatter>(kLibrary, "Bql_vszprintf");
    if (!maker) return formatText(buffer, size, format, arguments);
    if (!buffer || size == 0) return 0;
    const int length = maker(buffer, size, format, arguments);
    buffer[size - 1] = '\0';
    return length;
}

int Bql_vszscanf(const char* text, UINT maxLength, const char* format, void* arguments) {
    const auto maker = makerFunction<Scanner>(kLibrary, "Bql_vszscanf");
    return maker ? maker(text, maxLength, format, arguments) : scanText(text, maxLength, format, arguments);
}

}  // namespace kor
