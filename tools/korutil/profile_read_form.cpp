#include <algorithm>
#include <cmath>
#include <vector>

#include "korutil/profile.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/long_text.h"
#include "tools/korutil/profile_form.h"
#include "tools/korutil/profile_number.h"
#include "tools/korutil/tree_value.h"

namespace kor::profile {
namespace {

constexpr std::size_t kLongestDouble = 127;   // characters that appGetProfileDouble reads
constexpr std::size_t kLongestDoubles = 519;  // and appGetProfileDblArray
constexpr DWORD kPathsRoom = 32768;

class Reader {
  public:
    Reader(bool asJson, const Settings& settings, const std::string& section, const std::string& key,
           const Setting& setting)
        : asJson_(asJson),
          settings_(settings),
          section_(section.c_str()),
          key_(key.c_str()),
          setting_(setting) {}

    std::string whole() const {
        const int value = appGetProfileInt(section_, key_, 0, settings_.selector(), nullptr);
        const std::string text = std::to_string(value);
        if (!isWhole32(setting_.value)) refuse("whole number of 32 bits", "the library reads " + text);
        return text;
    }

    std::string real() const {
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
        return number(value);
    }

    std::string reals() const {
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
        std::string shown;
        for (const double value : values)
            shown += (shown.empty() ? "" : ",") + number(value);
        return asJson_ ? '[' + shown + ']' : shown;
    }

    // @param digits  the value; freed before there is room for its bytes
    std::string bytes(std::string& digits) const {
        if (!tree::isHex(digits)) refuse("row of hexadecimal digit pairs", "the library refuses it");
        const std::size_t size = digits.size() / 2;
        std::string().swap(digits);
        std::string data(size, '\0');
        if (!appGetProfileStruct(section_, key_, data.data(), static_cast<DWORD>(data.size()),
                                 settings_.selector(), nullptr))
            throw command::Failure(where(), "the library refuses it");
        return data;
    }

    std::string paths() const {
        if (setting_.value.empty()) return asJson_ ? "\"\"" : "";
        std::string buffer(kPathsRoom, '\0');
        const int count =
            appGetProfilePaths(section_, key_, "", buffer.data(), kPathsRoom, settings_.selector(), nullptr);
        if (count == 0)
            refuse("path, or not a list of paths, that can be made absolute", "the library refuses it");
        buffer.resize(buffer.find('\0'));
        return asJson_ ? jsonText(buffer) : code_page::toUtf8(buffer);
    }

  private:
    std::string number(double value) const {
        const std::string text = tree::doubleText(value);
        return asJson_ && tree::isSpecial(value) ? '"' + text + '"' : text;
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
        throw command::Failure(where(), '\'' + command::shownStart(setting_.value) + "' is no " +
                                            std::string(form) + "; " + std::string(reading));
    }

    bool asJson_;
    const Settings& settings_;
    const char* section_;
    const char* key_;
    const Setting& setting_;
};

}  // namespace

void writeAs(command::Output& output, std::string_view before, Form form, bool asJson,
             const Settings& settings, const std::string& section, const std::string& key, Setting setting) {
    const Reader reader(asJson, settings, section, key, setting);
    const std::string_view quote = asJson ? "\"" : "";
    const auto write = [&](const std::string& text) { output.write(std::string(before) + text); };
    switch (form) {
        case Form::kInt:
            return write(reader.whole());
        case Form::kDouble:
            return write(reader.real());
        case Form::kDoubles:
            return write(reader.reals());
        case Form::kBytes: {
            constexpr std::size_t kPieceSize = 16 * 1024;
            const std::string data = reader.bytes(setting.value);
            write(std::string(quote));
            for (std::size_t at = 0; at < data.size(); at += kPieceSize)
                output.write(tree::hexText(std::string_view(data).substr(at, kPieceSize)));
            return output.write(quote);
        }
        case Form::kPaths:
            return write(reader.paths());
        case Form::kText:
            write("");
            return asJson ? command::writeJsonText(output, setting.value)
                          : command::writeText(output, setting.value);
    }
}

void checkAs(Form form, const Settings& settings, const std::string& section, const std::string& key,
             Setting setting) {
    const Reader reader(false, settings, section, key, setting);
    switch (form) {
        case Form::kInt:
            reader.whole();
            break;
        case Form::kDouble:
            reader.real();
            break;
        case Form::kDoubles:
            reader.reals();
            break;
        case Form::kBytes:
            reader.bytes(setting.value);
            break;
        case Form::kPaths:
            reader.paths();
            break;
        case Form::kText:
            break;
    }
}

}  // namespace kor::profile
