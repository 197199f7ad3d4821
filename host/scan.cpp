#include "host/scan.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <string_view>

#include "host/argument_reader.h"
#include "host/conversion.h"
#include "host/scan_number.h"

namespace kor {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

bool isBlank(char character) { return kBlanks.find(character) != std::string_view::npos; }

struct Field {
    Conversion conversion;
    bool store = true;
    bool isSet = false;
    std::bitset<256> set;  // of %[
};

// Reads the set behind "%[" and moves `format` behind its "]". @return false when it does not end
bool readSet(const char*& format, std::bitset<256>& set) {
    const bool inverse = *format == '^';
    if (inverse) ++format;
    bool first = true;
    for (; *format != ']' || first; first = false) {
        if (*format == '\0') return false;
        const auto from = static_cast<unsigned char>(*format++);
        auto to = from;
        if (*format == '-' && format[1] != ']' && format[1] != '\0') {
            to = static_cast<unsigned char>(format[1]);
            format += 2;
        }
        for (unsigned each = std::min(from, to); each <= std::max(from, to); ++each) {
            set.set(each);
        }
    }
    ++format;
    if (inverse) set.flip();
    return true;
}

// Reads a conversion behind its '%'. @return false when there is no valid one
bool readField(const char*& format, Field& field) {
    if (*format == '*') {
        field.store = false;
        ++format;
    }
    field.conversion.width = readCount(format);
    if (field.conversion.width == 0) return false;
    const bool hasSize = readSize(format, field.conversion);
    const char letter = *format;
    if (letter == '\0') return false;
    ++format;
    field.conversion.kind = letter;
    if (std::strchr("diuoxXn", letter)) return true;
    if (std::strchr("eEfFgG", letter)) return !hasSize || field.conversion.isLong;
    if (hasSize) return false;
    field.isSet = letter == '[' || letter == 's';
    if (letter == '[') return readSet(format, field.set);
    if (letter != 's') return std::strchr("cp%", letter) != nullptr;
    field.set.set();
    for (const char each : kBlanks) {
        field.set.reset(static_cast<unsigned char>(each));
    }
    return true;
}

class Scanner {
  public:
    Scanner(std::string_view text, void* arguments) : text_(text), arguments_(arguments) {}

    int scan(const char* format) {
        while (*format) {
            if (isBlank(*format)) {
                skipBlanks();
                ++format;
            } else if (*format != '%') {
                if (!takeLiteral(*format++)) break;
            } else {
                Field field;
                if (!readField(++format, field) || !takeField(field)) break;
            }
        }
        return stored_;
    }

  private:
    void skipBlanks() {
        while (at_ < text_.size() && isBlank(text_[at_]))
            ++at_;
    }

    bool takeLiteral(char literal) {
        if (at_ == text_.size() || text_[at_] != literal) return false;
        ++at_;
        return true;
    }

    bool takeField(const Field& field) {
        const char kind = field.conversion.kind;
        if (kind != 'c' && kind != '[' && kind != 'n') skipBlanks();
        if (kind == '%') return takeLiteral('%');
        if (kind == 'n') return storeInteger(field, at_, false);
        if (kind == 'c') return takeCharacters(field);
        if (field.isSet) return takeString(field);
        return takeNumber(field);
    }

    // The rest of the text that a field may use.
    std::string_view rest(const Field& field) const {
        const std::string_view rest = text_.substr(at_);
        return field.conversion.width < 0 ? rest
                                          : rest.substr(0, static_cast<std::size_t>(field.conversion.width));
    }

    bool takeCharacters(const Field& field) {
        const auto count = static_cast<std::size_t>(std::max(field.conversion.width, 1));
        if (text_.size() - at_ < count) return false;
        return storeText(field, text_.substr(at_, count), false);
    }

    bool takeString(const Field& field) {
        const std::string_view rest = this->rest(field);
        const auto end = std::find_if(rest.begin(), rest.end(), [&](char each) {
            return !field.set[static_cast<unsigned char>(each)];
        });
        const auto length = static_cast<std::size_t>(end - rest.begin());
        return length > 0 && storeText(field, rest.substr(0, length), true);
    }

    bool takeNumber(const Field& field) {
        const char kind = field.conversion.kind;
        if (std::strchr("eEfFgG", kind)) {
            double value = 0;
            const std::size_t length = scanDouble(rest(field), value);
            at_ += length;
            return length > 0 && storeDouble(field, value);
        }
        std::uint64_t value = 0;
        const std::size_t length = scanInteger(rest(field), kind, value);
        at_ += length;
        return length > 0 && storeInteger(field, value, true);
    }

    // The next target; null when there is none, which ends the scan.
    void* nextTarget() { return arguments_.there() ? arguments_.nextPointer() : nullptr; }

    bool storeText(const Field& field, std::string_view text, bool terminate) {
        at_ += text.size();
        if (!field.store) return true;
        char* target = static_cast<char*>(nextTarget());
        if (!target) return false;
        std::memcpy(target, text.data(), text.size());
        if (terminate) target[text.size()] = '\0';
        ++stored_;
        return true;
    }

    bool storeDouble(const Field& field, double value) {
        if (!field.store) return true;
        void* target = nextTarget();
        if (!target) return false;
        const auto single = static_cast<float>(value);
        if (field.conversion.isLong)
            std::memcpy(target, &value, sizeof(value));
        else
            std::memcpy(target, &single, sizeof(single));
        ++stored_;
        return true;
    }

    bool storeInteger(const Field& field, std::uint64_t value, bool counts) {
        if (!field.store) return true;
        void* target = nextTarget();
        if (!target) return false;
        const std::size_t size =
            field.conversion.kind == 'p' ? sizeof(void*) : static_cast<std::size_t>(field.conversion.size);
        std::memcpy(target, &value, size);  // little-endian: the low bytes come first
        if (counts) ++stored_;
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    int stored_ = 0;
    ArgumentReader arguments_;
};

}  // namespace

int scanText(const char* text, UINT maxLength, const char* format, void* arguments) {
    if (!text || !format) return 0;
    return Scanner({text, ::strnlen(text, maxLength)}, arguments).scan(format);
}

}  // namespace kor
