#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "korutil/platform/last_error.h"
#include "korutil/platform/memory.h"
#include "korutil/platform/module.h"
#include "platform/posix/kernel/message_table.h"
#include "platform/posix/kernel/text.h"
#include "platform/posix/kernel/with_memory.h"

namespace {

constexpr std::size_t kLongest = 0xFFFF;
constexpr unsigned kMostInserts = 99;

// The arguments of inserts, fetched as far as they are needed: a list can only be read once and in order.
class Inserts {
  public:
    Inserts(va_list* list, bool isArray)
        : array_(isArray ? reinterpret_cast<const DWORD_PTR*>(list) : nullptr) {
        if (!list || isArray) return;
        va_copy(list_, *list);
        listed_ = true;
    }
    ~Inserts() {
        if (listed_) va_end(list_);
    }
    Inserts(const Inserts&) = delete;
    Inserts& operator=(const Inserts&) = delete;

    bool given() const { return array_ || listed_; }
    DWORD_PTR operator[](unsigned index) {
        if (array_) return array_[index];
        while (fetched_ <= index)
            values_[fetched_++] = va_arg(list_, DWORD_PTR);
        return values_[index];
    }

  private:
    const DWORD_PTR* array_;
    va_list list_;
    bool listed_ = false;
    std::array<DWORD_PTR, kMostInserts> values_{};
    unsigned fetched_ = 0;
};

// A printf form: flags, width and precision as they stand, then the size of a number and its conversion.
struct Form {
    std::string prefix;
    bool is64 = false;
    bool isShort = false;
    char conversion = 's';
};

std::optional<Form> parseForm(std::string_view text) {
    Form form;
    const auto take = [&](std::string_view set) {
        const std::size_t count = std::min(text.find_first_not_of(set), text.size());
        form.prefix += text.substr(0, count);
        text.remove_prefix(count);
        return count;
    };
    constexpr std::string_view kDigits = "0123456789";
    constexpr std::size_t kMostDigits = 3;
    take("-+ #0");
    if (take(kDigits) > kMostDigits) return std::nullopt;
    if (text.starts_with('.')) {
        take(".");
        if (take(kDigits) > kMostDigits) return std::nullopt;
    }
    if (text.starts_with("I64") || text.starts_with("ll")) {
        form.is64 = true;
        text.remove_prefix(text[0] == 'I' ? 3 : 2);
    } else if (text.starts_with('l') || text.starts_with('h')) {
        form.isShort = text[0] == 'h';
        text.remove_prefix(1);
    }
    if (text.size() != 1 || std::string_view("scdiuxX").find(text[0]) == std::string_view::npos)
        return std::nullopt;
    form.conversion = text[0];
    return form;
}

std::string formatInsert(const Form& form, DWORD_PTR argument) {
    const std::string pattern = "%" + form.prefix;
    std::array<char, 2048> number{};
    const auto print = [&](const char* suffix, auto value) {
        std::snprintf(number.data(), number.size(), (pattern + suffix).c_str(), value);
        return std::string(number.data());
    };
    switch (form.conversion) {
        case 's': {
            const char* text = argument ? reinterpret_cast<const char*>(argument) : "(null)";
            if (form.prefix.empty()) return text;
            std::string result(kLongest + 1, '\0');
            const int length = std::snprintf(result.data(), result.size(), (pattern + "s").c_str(), text);
            result.resize(std::min<std::size_t>(static_cast<std::size_t>(std::max(length, 0)), kLongest));
            return result;
        }
        case 'c':
            return print("c", static_cast<int>(argument));
        case 'd':
        case 'i':
            if (form.is64) return print("lld", static_cast<long long>(argument));
            return print("d",
                         form.isShort ? static_cast<std::int16_t>(argument) : static_cast<LONG>(argument));
        default: {
            const std::string suffix(1, form.conversion);
            if (form.is64) return print(("ll" + suffix).c_str(), static_cast<unsigned long long>(argument));
            return print(suffix.c_str(), form.isShort ? LOWORD(argument) : static_cast<DWORD>(argument));
        }
    }
}

// Makes the text from a message line by line: escapes, inserts and the line width.
class Formatter {
  public:
    Formatter(std::string_view message, DWORD flags, va_list* arguments)
        : rest_(message),
          ignoreInserts_((flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0),
          width_(flags & FORMAT_MESSAGE_MAX_WIDTH_MASK),
          inserts_(arguments, (flags & FORMAT_MESSAGE_ARGUMENT_ARRAY) != 0) {}

    /// False for a form that does not exist, an insert without arguments or a text that is too long.
    bool run() {
        while (!rest_.empty() && !ended_) {
            if (rest_[0] == '%') {
                if (rest_.size() == 1 || !escape()) return false;
            } else {
                plain();
            }
            if (text_.size() > kLongest) return false;
        }
        return true;
    }
    const std::string& text() const { return text_; }

  private:
    static constexpr std::size_t kNoLimit = FORMAT_MESSAGE_MAX_WIDTH_MASK;

    void breakLine() {
        text_ += "\r\n";
        lineStart_ = text_.size();
    }

    // A line that fills the width is broken at its last blank; a longer word where the line is full.
    void wrap() {
        const std::size_t length = text_.size() - lineStart_;
        if (width_ == 0 || width_ == kNoLimit || length < width_) return;
        const std::size_t blank = text_.rfind(' ', lineStart_ + width_);
        if (blank != std::string::npos && blank > lineStart_) {
            text_.replace(blank, 1, "\r\n");
            lineStart_ = blank + 2;
        } else if (length > width_) {
            text_.insert(lineStart_ + width_, "\r\n");
            lineStart_ += width_ + 2;
        }
    }

    void append(std::string_view more) {
        for (const char c : more) {
            text_ += c;
            if (c != ' ') wrap();
        }
    }

    void plain() {
        if (rest_.starts_with("\r\n") || rest_[0] == '\n' || rest_[0] == '\r') {
            rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : 1);
            if (width_ == 0) {
                breakLine();
            } else {
                append(" ");
            }
            return;
        }
        append(rest_.substr(0, 1));
        rest_.remove_prefix(1);
    }

    bool escape() {
        const char kind = rest_[1];
        if (ignoreInserts_) {
            append(rest_.substr(0, 2));
            rest_.remove_prefix(2);
            return true;
        }
        if (kind >= '1' && kind <= '9') return insert();
        rest_.remove_prefix(2);
        switch (kind) {
            case '0':
                ended_ = true;
                break;
            case 'n':
                breakLine();
                break;
            case 'r':
                text_ += '\r';
                break;
            case 't':
                append("\t");
                break;
            default:
                append(std::string_view(&kind, 1));
        }
        return true;
    }

    bool insert() {
        rest_.remove_prefix(1);
        unsigned number = 0;
        for (int digits = 0; digits < 2 && !rest_.empty() && rest_[0] >= '0' && rest_[0] <= '9'; ++digits) {
            number = number * 10 + static_cast<unsigned>(rest_[0] - '0');
            rest_.remove_prefix(1);
        }
        std::optional<Form> form = Form{};
        if (rest_.starts_with('!')) {
            const std::size_t end = rest_.find('!', 1);
            if (end != std::string_view::npos) {
                form = parseForm(rest_.substr(1, end - 1));
                rest_.remove_prefix(end + 1);
            }
        }
        if (!form || !inserts_.given()) return false;
        append(formatInsert(*form, inserts_[number - 1]));
        return true;
    }

    std::string_view rest_;
    bool ignoreInserts_;
    std::size_t width_;
    Inserts inserts_;
    std::string text_;
    std::size_t lineStart_ = 0;
    bool ended_ = false;
};

DWORD failed(DWORD error) {
    SetLastError(error);
    return 0;
}

// @param buffer  the caller's, or where the address of a new block goes
DWORD store(const std::string& text, DWORD flags, LPSTR buffer, DWORD size) {
    std::size_t room = size;
    if (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) {
        room = std::max<std::size_t>(text.size() + 1, size);
        void* block = LocalAlloc(LMEM_ZEROINIT, room);
        std::memcpy(static_cast<void*>(buffer), &block, sizeof block);
        if (!block) return failed(ERROR_NOT_ENOUGH_MEMORY);
        buffer = static_cast<LPSTR>(block);
    }
    if (room <= text.size()) {
        return failed(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<DWORD>(text.size());
}

}  // namespace

DWORD WINAPI FormatMessageA(DWORD flags, LPCVOID source, DWORD message, DWORD, LPSTR buffer, DWORD size,
                            va_list* arguments) {
    return kor::withMemory(0, [&]() -> DWORD {
        if (!buffer) return failed(ERROR_INVALID_PARAMETER);
        if (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) std::memset(static_cast<void*>(buffer), 0, sizeof(void*));
        const bool fromString = (flags & FORMAT_MESSAGE_FROM_STRING) != 0;
        const bool fromTable = (flags & (FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_FROM_HMODULE)) != 0;
        if ((!fromString && !fromTable) || (fromString && !source)) return failed(ERROR_INVALID_PARAMETER);
        const char* text = fromString                             ? static_cast<const char*>(source)
                           : (flags & FORMAT_MESSAGE_FROM_SYSTEM) ? kor::systemMessage(message)
                                                                  : nullptr;
        if (!text) return failed(ERROR_MR_MID_NOT_FOUND);
        Formatter formatter(text, flags, arguments);
        if (!formatter.run()) return failed(ERROR_INVALID_PARAMETER);
        if (formatter.text().empty()) return failed(ERROR_NO_WORK_DONE);
        return store(formatter.text(), flags, buffer, size);
    });
}
