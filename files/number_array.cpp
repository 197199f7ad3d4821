// Arrays of numbers as comma-separated text.
#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <limits>

#include "host/bql.h"
#include "korutil/buffered_file.h"

namespace kor {
namespace {

constexpr UINT kNumberRoom = 320;  // the longest double has 309 digits in front of its point

int scan(const char* text, UINT length, const char* format, ...) {
    va_list list;
    va_start(list, format);
    const int values = Bql_vszscanf(text, length, format, KORUTIL_ARGUMENTS(list));
    va_end(list);
    return values;
}

int print(char (&text)[kNumberRoom], const char* format, ...) {
    va_list list;
    va_start(list, format);
    const int length = Bql_vszprintf(text, kNumberRoom, format, KORUTIL_ARGUMENTS(list));
    va_end(list);
    return length;
}

// Scans as far as the comma only, so that the rest of a long text is not measured for each number.
template <typename Number>
bool readNumbers(const char* text, char* array, int count, const char* format) {
    for (int i = 0; i < count; ++i, array += sizeof(Number)) {
        if (!text) return false;
        const char* comma = std::strchr(text, ',');
        const std::size_t length = comma ? static_cast<std::size_t>(comma - text) : std::strlen(text);
        constexpr std::size_t kMost = std::numeric_limits<int>::max();
        Number number{};
        if (scan(text, static_cast<UINT>(std::min(length, kMost)), format, &number) != 1) return false;
        std::memcpy(array, &number, sizeof(number));
        text = comma ? comma + 1 : nullptr;
    }
    return true;
}

// Never touches the byte in front of the text, from which a count of 0 would take a comma.
template <typename Number>
bool writeNumbers(char* text, const char* array, int count, const char* format) {
    char* end = text;
    int written = 0;
    for (; written < count; ++written, array += sizeof(Number)) {
        Number number{};
        std::memcpy(&number, array, sizeof(number));
        char element[kNumberRoom];
        const int length = print(element, format, number);
        if (length <= 0) break;
        std::memcpy(end, element, static_cast<std::size_t>(length));
        end += length;
    }
    end[end > text ? -1 : 0] = '\0';
    return written == count;
}

}  // namespace
}  // namespace kor

using namespace kor;

BOOL KORUTIL_CALL utlReadArray(const char* text, void* array, int count, DWORD size, UINT_PTR) {
    if (count < 0 || (!array && count > 0)) return 0;
    auto* elements = static_cast<char*>(array);
    if (size == sizeof(int)) return readNumbers<int>(text, elements, count, "%d");
    if (size == sizeof(double)) return readNumbers<double>(text, elements, count, "%lf");
    return 0;
}

BOOL KORUTIL_CALL utlWriteArray(char* text, const void* array, int count, DWORD size, UINT_PTR) {
    if (!text) return 0;
    const auto* elements = static_cast<const char*>(array);
    const int there = array ? count : std::min(count, 0);
    *text = '\0';
    if (size == sizeof(int)) return writeNumbers<int>(text, elements, there, "%d,") && there == count;
    if (size == sizeof(double))
        return writeNumbers<double>(text, elements, there, "%.2lf,") && there == count;
    return 0;
}
