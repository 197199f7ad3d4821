#include "host/format.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/multibyte.h"
#include "host/argument_reader.h"
#include "host/conversion.h"
#include "host/format_number.h"

namespace kor {
namespace {

// Takes whole characters until the buffer is full.
class Sink {
  public:
    explicit Sink(std::span<char> room) : room_(room) {}

    void put(std::string_view text) {
        std::size_t fits = text.size();
        if (fits > room_.size()) {
            fits = 0;
            while (const std::size_t length = characterLength(text.substr(fits))) {
                if (fits + length > room_.size()) break;
                fits += length;
            }
            room_ = room_.first(fits);
        }
        text.copy(room_.data(), fits);
        take(fits);
    }
    void fill(char character, int count) {
        if (count <= 0) return;
        const std::size_t fitting = std::min(static_cast<std::size_t>(count), room_.size());
        std::memset(room_.data(), character, fitting);
        take(fitting);
    }
    std::size_t used() const { return used_; }

  private:
    void take(std::size_t count) {
        room_ = room_.subspan(count);
        used_ += count;
    }

    std::span<char> room_;
    std::size_t used_ = 0;
};

// What one conversion writes: blanks, sign or base, zeros, text, zeros, text, blanks.
struct Piece {
    std::string_view prefix;
    int leadingZeros = 0;
    NumberText text;
    bool mayPadWithZeros = false;
};

void write(Sink& sink, const Conversion& conversion, Piece piece) {
    const std::size_t length = piece.prefix.size() + piece.text.head.size() + piece.text.tail.size();
    const int content = static_cast<int>(std::min<std::size_t>(length, Conversion::kLargest)) +
                        piece.leadingZeros + piece.text.zeros;
    int padding = std::max(conversion.width - content, 0);
    if (piece.mayPadWithZeros && conversion.zero && !conversion.left) {
        piece.leadingZeros += padding;
        padding = 0;
    }
    if (!conversion.left) sink.fill(' ', padding);
    sink.put(piece.prefix);
    sink.fill('0', piece.leadingZeros);
    sink.put(piece.text.head);
    sink.fill('0', piece.text.zeros);
    sink.put(piece.text.tail);
    if (conversion.left) sink.fill(' ', padding);
}

std::string_view sign(bool negative, const Conversion& conversion) {
    return negative ? "-" : conversion.plus ? "+" : conversion.blank ? " " : "";
}

std::uint64_t unsignedOf(LONGLONG value, IntegerSize size) {
    const int unused = 64 - 8 * static_cast<int>(size);
    return static_cast<std::uint64_t>(value) << unused >> unused;
}

LONGLONG signedOf(LONGLONG value, IntegerSize size) {
    const int unused = 64 - 8 * static_cast<int>(size);
    return static_cast<LONGLONG>(static_cast<std::uint64_t>(value) << unused) >> unused;
}

void writeInteger(Sink& sink, const Conversion& conversion, ArgumentReader& arguments) {
    const LONGLONG given =
        conversion.size == IntegerSize::k64 ? arguments.nextLongLong() : arguments.nextInt();
    std::uint64_t value = unsignedOf(given, conversion.size);
    Piece piece;
    if (conversion.kind == 'd' || conversion.kind == 'i') {
        const LONGLONG number = signedOf(given, conversion.size);
        if (number < 0)
            value = 0 - static_cast<std::uint64_t>(number);
        else
            value = static_cast<std::uint64_t>(number);
        piece.prefix = sign(number < 0, conversion);
    } else if (conversion.alternate && value != 0 && conversion.kind != 'u' && conversion.kind != 'o') {
        piece.prefix = conversion.kind == 'x' ? "0x" : "0X";
    }
    char room[24];
    std::string_view digits = integerDigits(value, conversion.kind, room);
    if (conversion.precision == 0 && value == 0) digits = {};
    const int count = static_cast<int>(digits.size());
    piece.leadingZeros = std::max(conversion.precision - count, 0);
    const bool startsWithZero = piece.leadingZeros > 0 || digits.starts_with('0');
    if (conversion.kind == 'o' && conversion.alternate && !startsWithZero) piece.leadingZeros = 1;
    piece.text.head = digits;
    piece.mayPadWithZeros = conversion.precision < 0;
    write(sink, conversion, piece);
}

void writeDouble(Sink& sink, const Conversion& conversion, ArgumentReader& arguments) {
    const double value = arguments.nextDouble();
    char room[kNumberRoom];
    Piece piece;
    piece.prefix = sign(std::signbit(value) && !std::isnan(value), conversion);
    piece.text = doubleDigits(value, conversion, room);
    piece.mayPadWithZeros = std::isfinite(value);
    write(sink, conversion, piece);
}

void writePointer(Sink& sink, const Conversion& conversion, ArgumentReader& arguments) {
    char room[24];
    Piece piece;
    piece.text.head = integerDigits(reinterpret_cast<UINT_PTR>(arguments.nextPointer()), 'X', room);
    piece.leadingZeros = static_cast<int>(2 * sizeof(void*) - piece.text.head.size());
    write(sink, conversion, piece);
}

void writeString(Sink& sink, const Conversion& conversion, ArgumentReader& arguments) {
    const char* text = static_cast<const char*>(arguments.nextPointer());
    if (!text) text = "(null)";
    Piece piece;
    // With a precision the text need not be terminated.
    const std::size_t length = conversion.precision < 0
                                   ? std::strlen(text)
                                   : ::strnlen(text, static_cast<std::size_t>(conversion.precision));
    piece.text.head = {text, length};
    write(sink, conversion, piece);
}

void writeCharacter(Sink& sink, const Conversion& conversion, ArgumentReader& arguments) {
    const char character = static_cast<char>(arguments.nextInt());
    Piece piece;
    piece.text.head = {&character, 1};
    write(sink, conversion, piece);
}

// Takes width and precision that stand in the arguments.
void completeCounts(Conversion& conversion, ArgumentReader& arguments) {
    if (conversion.width == Conversion::kFromArgument) {
        const int width = std::clamp(arguments.nextInt(), -Conversion::kLargest, Conversion::kLargest);
        conversion.left = conversion.left || width < 0;
        conversion.width = std::abs(width);
    }
    if (conversion.precision == Conversion::kFromArgument) {
        conversion.precision = std::clamp(arguments.nextInt(), Conversion::kNone, Conversion::kLargest);
    }
}

void writeConversion(Sink& sink, Conversion& conversion, ArgumentReader& arguments) {
    completeCounts(conversion, arguments);
    switch (conversion.kind) {
        case 'c':
            return writeCharacter(sink, conversion, arguments);
        case 's':
            return writeString(sink, conversion, arguments);
        case 'p':
            return writePointer(sink, conversion, arguments);
        case 'd':
        case 'i':
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            return writeInteger(sink, conversion, arguments);
        default:
            return writeDouble(sink, conversion, arguments);
    }
}

bool formatInto(Sink& sink, const char* format, ArgumentReader& arguments) {
    while (*format) {
        const std::size_t plain = std::strcspn(format, "%");
        sink.put({format, plain});
        format += plain;
        if (*format == '\0') break;
        ++format;
        Conversion conversion = readConversion(format);
        if (conversion.kind == '%') {
            sink.put("%");
        } else if (conversion.kind == 0 || !arguments.there()) {
            return false;
        } else {
            writeConversion(sink, conversion, arguments);
        }
    }
    return true;
}

}  // namespace

int formatText(char* buffer, UINT size, const char* format, void* arguments) {
    if (!buffer || size == 0) return 0;
    buffer[0] = '\0';
    if (!format) return 0;
    Sink sink({buffer, size - 1});
    ArgumentReader reader(arguments);
    const bool done = formatInto(sink, format, reader);
    const std::size_t length = done ? sink.used() : 0;
    buffer[length] = '\0';
    return static_cast<int>(length);
}

int printText(char* buffer, UINT size, const char* format, ...) {
    va_list list;
    va_start(list, format);
    const int length = formatText(buffer, size, format, KORUTIL_ARGUMENTS(list));
    va_end(list);
    return length;
}

}  // namespace kor
