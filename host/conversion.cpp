#include "host/conversion.h"

#include <algorithm>
#include <cstring>

namespace kor {
namespace {

constexpr IntegerSize kPointerSize = sizeof(void*) == 8 ? IntegerSize::k64 : IntegerSize::k32;

struct SizePrefix {
    const char* text;
    IntegerSize size;
    bool isLong;
};

// Longer ones first: "I64" is not "I", "hh" not "h".
constexpr SizePrefix kSizes[] = {
    {"I64", IntegerSize::k64, false}, {"I32", IntegerSize::k32, false}, {"hh", IntegerSize::k8, false},
    {"ll", IntegerSize::k64, false},  {"h", IntegerSize::k16, false},   {"l", IntegerSize::k32, true},
    {"j", IntegerSize::k64, false},   {"I", kPointerSize, false},       {"t", kPointerSize, false},
    {"z", kPointerSize, false},
};

void readFlags(const char*& format, Conversion& conversion) {
    for (;; ++format) {
        switch (*format) {
            case '-':
                conversion.left = true;
                break;
            case '+':
                conversion.plus = true;
                break;
            case ' ':
                conversion.blank = true;
                break;
            case '#':
                conversion.alternate = true;
                break;
            case '0':
                conversion.zero = true;
                break;
            default:
                return;
        }
    }
}

int readCountOrStar(const char*& format) {
    if (*format != '*') return readCount(format);
    ++format;
    return Conversion::kFromArgument;
}

bool isOneOf(char letter, const char* letters) {
    return letter != '\0' && std::strchr(letters, letter) != nullptr;
}

// The letter of formatTakes for what a conversion takes; 0 for none.
char argumentOf(const Conversion& conversion) {
    if (isOneOf(conversion.kind, "diuoxX")) return conversion.size == IntegerSize::k64 ? 'l' : 'i';
    if (isOneOf(conversion.kind, "eEfFgG")) return 'd';
    switch (conversion.kind) {
        case 'c':
            return 'i';
        case 's':
            return 's';
        case 'p':
            return 'p';
        default:
            return 0;
    }
}

bool take(const char*& arguments, char wanted) {
    if (*arguments != wanted) return false;
    ++arguments;
    return true;
}

}  // namespace

int readCount(const char*& format) {
    if (*format < '0' || *format > '9') return Conversion::kNone;
    int count = 0;
    for (; *format >= '0' && *format <= '9'; ++format) {
        count = std::min(count * 10 + (*format - '0'), Conversion::kLargest);
    }
    return count;
}

bool readSize(const char*& format, Conversion& conversion) {
    for (const SizePrefix& each : kSizes) {
        const std::size_t length = std::strlen(each.text);
        if (std::strncmp(format, each.text, length) != 0) continue;
        format += length;
        conversion.size = each.size;
        conversion.isLong = each.isLong;
        return true;
    }
    return false;
}

Conversion readConversion(const char*& format) {
    Conversion conversion;
    readFlags(format, conversion);
    conversion.width = readCountOrStar(format);
    if (*format == '.') {
        ++format;
        conversion.precision = readCountOrStar(format);
        if (conversion.precision == Conversion::kNone) conversion.precision = 0;
    }
    const bool hasSize = readSize(format, conversion);
    const char letter = *format;
    const bool isInteger = isOneOf(letter, "diuoxX");
    const bool isDouble = isOneOf(letter, "eEfFgG");
    const bool sizeFits = !hasSize || isInteger || (isDouble && conversion.isLong);
    if (sizeFits && (isInteger || isDouble || isOneOf(letter, "csp%"))) {
        conversion.kind = letter;
        ++format;
    }
    return conversion;
}

bool formatTakes(const char* format, const char* arguments) {
    while (*format) {
        if (*format++ != '%') continue;
        const Conversion conversion = readConversion(format);
        if (conversion.kind == 0) return false;
        if (conversion.width == Conversion::kFromArgument && !take(arguments, 'i')) return false;
        if (conversion.precision == Conversion::kFromArgument && !take(arguments, 'i')) return false;
        const char wanted = argumentOf(conversion);
        if (wanted && !take(arguments, wanted)) return false;
    }
    return true;
}

}  // namespace kor
