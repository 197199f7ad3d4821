#pragma once
// Values of settings by type, as the library's typed functions store and read them.

#include <array>
#include <string>
#include <string_view>

#include "tools/korutil/arguments.h"
#include "tools/korutil/profile_settings.h"

namespace kor::profile {

enum class Form { kText, kInt, kDouble, kDoubles, kBytes, kPaths };

inline constexpr std::array kFormOptions = {
    command::Option{"int", "", "the value is a whole number of 32 bits"},
    command::Option{"double", "", "the value is a number"},
    command::Option{"doubles", "", "the value is numbers joined by commas"},
    command::Option{"bytes", "", "the value is pairs of hexadecimal digits"},
    command::Option{"paths", "", "the value is a Windows path, or several joined by ;"},
};

/// The form that the options ask for. @throws command::UsageError when they ask for several
Form formOf(const command::Arguments& arguments);

/// A value as it is shown: UTF-8, and JSON.
struct Shown {
    std::string text;
    std::string json;
};

/// Reads a value through the library's function for its form.
/// @param setting  the value that is there
/// @throws command::Failure when the text is not of that form as a whole; it names the text, and what the
///         library makes of it
Shown readAs(Form form, const Settings& settings, const std::string& section, const std::string& key,
             const Setting& setting);

/// Stores a value through the library's function for its form, and sees to it that it is read back.
/// @param value  UTF-8, a text as it is to be read, or a value as readAs shows it
/// @throws command::UsageError when it is not of that form; command::Failure
void storeAs(Form form, const command::FileArgument& file, const std::string& section, const std::string& key,
             std::string_view value);

/// A text of the code page in double quotes, as JSON has it.
std::string jsonText(std::string_view text);

}  // namespace kor::profile
