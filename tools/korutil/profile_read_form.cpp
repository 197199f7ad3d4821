#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include "korutil/profile.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/profile_form.h"
#include "tools/korutil/tree_value.h"

namespace kor::profile {
namespace {

constexpr std::size_t kLongestDouble = 127;   // characters that appGetProfileDouble reads
constexpr std::size_t kLongestDoubles = 519;  // and appGetProfileDblArray
constexpr DWORD kPathsRoom = 32768;

// Digits of a number's part; how many there are.
std::size_t digitsAt(std::string_view text, std::size_t start) {
    const std::size_t end = text.find_first_not_of("0123456789", start);
    return std::min(end, text.size()) - std::min(start, text.size());
}

// Whether all of a text is a number as settings have it.
bool isNumber(std::string_view text) {
    std::size_t at = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
    for (const std::string_view special : {"1.#INF", "1.#QNAN", "1.#SNAN", "1.#IND"}) {
        if (text.substr(at) == special) return true;
    }
    const std::size_t whole = digitsAt(text, at);
    at += whole;
    std::size_t fraction = 0;
    if (text.substr(at).starts_with('.')) fraction = digitsAt(text, ++at);
    at += fraction;
    if (whole + fraction == 0) return false;
    if (at == text.size()) return true;
    if (text[at] != 'e' && text[at] != 'E') return false;
    if (++at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    const std::size_t exponent = digitsAt(text, at);
    return exponent > 0 && at + exponent == text.size();
}

bool isWhole32(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with("-+")) return false;
    LONG value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && rest == text.data() + text.size();
}

std::string jsonNumber(double value) {
    const std::string text = tree::doubleText(value);
    return tree::isSpecial(value) ? '"' + text + '"' : text;
}

class Reader {
  public:
    Reader(const Settings& settings, const std::string& section, const std::string& key,
           const Setting& setting)
        : settings_(settings), section_(section.c_str()), key_(key.c_str()), setting_(setting) {}

    Shown whole() const {
        const int value = appGetProfileInt(section_, key_, 0, settings_.selector(), nullptr);
        const std::string text = std::to_string(value);
        if (!isWhole32(setting_.value)) refuse("whole number of 32 bits", "the library reads " + text);
        return {text, text};
    }

    Shown real() const {
        const auto read = [&](double other) {
            return appGetProfileDouble(section_, key_, other, settings_.selector(), nullptr);
        };
        const double value = read(0);
        const bool isTaken = value != 0 || read(1) == 0;
        if (!isNumber(setting_.value)) {
            refuse("number", isTaken ? "the library reads " + tree::doubleText(value)
                                     : "the library takes it for missing");
        }
        checkLength(kLongestDouble);
        return {tree::doubleText(value), jsonNumber(value)};
    }

    Shown reals() const {
        const std::string_view text = setting_.value;
        const auto commas = static_cast<std::size_t>(std::count(text.begin(), text.end(), ','));
        std::vector<double> values(std::min(commas + 1, kLongestDoubles));
        const int count =
            appGetProfileDblArray(section_, key_, nullptr, values.data(), static_cast<int>(values.size()),
                                  settings_.selector(), nullptr);
        values.resize(static_cast<std::size_t>(std::max(count, 0)));
        if (!text.empty() && !areNumbers(text))
            refuse("list of numbers joined by commas",
                   "the library reads the first " + std::to_string(values.size()));
        checkLength(kLongestDoubles);
        Shown shown{"", "["};
        const char* separator = "";
        for (const double value : values) {
            shown.text += separator + tree::doubleText(value);
            shown.json += separator + jsonNumber(value);
            separator = ",";
        }
        shown.json += ']';
        return shown;
    }

    Shown bytes() const {
        std::string data(setting_.value.size() / 2, '\0');
        std::string ignored;
        if (!tree::bytesOfHex(setting_.value, ignored) ||
            !appGetProfileStruct(section_, key_, data.data(), static_cast<DWORD>(data.size()),
                                 settings_.selector(), nullptr)) {
            refuse("row of hexadecimal digit pairs", "the library refuses it");
        }
        const std::string text = tree::hexText(data);
        return {text, '"' + text + '"'};
    }

    Shown paths() const {
        if (setting_.value.empty()) return {"", "\"\""};
        std::string buffer(kPathsRoom, '\0');
        const int count =
            appGetProfilePaths(section_, key_, "", buffer.data(), kPathsRoom, settings_.selector(), nullptr);
        if (count == 0)
            refuse("path, or not a list of paths, that can be made absolute", "the library refuses it");
        buffer.resize(buffer.find('\0'));
        return {code_page::toUtf8(buffer), jsonText(buffer)};
    }

  private:
    static bool areNumbers(std::string_view text) {
        for (;;) {
            const std::size_t comma = text.find(',');
            if (!isNumber(text.substr(0, comma))) return false;
            if (comma == std::string_view::npos) return true;
            text.remove_prefix(comma + 1);
        }
    }

    void checkLength(std::size_t longest) const {
        if (setting_.value.size() > longest) {
            throw command::Failure(where(), "the value has " + std::to_string(setting_.value.size()) +
                                                " characters, of which the library reads " +
                                                std::to_string(longest));
        }
    }

    std::string where() const { return setting_.file->shown + ": " + entryShown(section_, key_); }

    [[noreturn]] void refuse(std::string_view form, std::string_view reading) const {
        throw command::Failure(where(), '\'' + code_page::toUtf8(setting_.value) + "' is no " +
                                            std::string(form) + "; " + std::string(reading));
    }

    const Settings& settings_;
    const char* section_;
    const char* key_;
    const Setting& setting_;
};

}  // namespace

Shown readAs(Form form, const Settings& settings, const std::string& section, const std::string& key,
             const Setting& setting) {
    const Reader reader(settings, section, key, setting);
    switch (form) {
        case Form::kInt:
            return reader.whole();
        case Form::kDouble:
            return reader.real();
        case Form::kDoubles:
            return reader.reals();
        case Form::kBytes:
            return reader.bytes();
        case Form::kPaths:
            return reader.paths();
        case Form::kText:
            break;
    }
    return {code_page::toUtf8(setting.value), jsonText(setting.value)};
}

}  // namespace kor::profile
