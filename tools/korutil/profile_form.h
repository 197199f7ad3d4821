#pragma once
// Values of settings by type, as the library's typed functions store and read them.

#include <array>
#include <string>
#include <string_view>

#include "tools/korutil/arguments.h"
#include "tools/korutil/output.h"
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

/// Reads a value through the library's function for its form, and writes it: UTF-8, or JSON.
/// @param before   what is written in front of it
/// @param setting  the value that is there
/// @throws command::Failure, before anything is written, when the text is not of that form as a whole; it
///         names the text, and what the library makes of it
void writeAs(command::Output& output, std::string_view before, Form form, bool asJson,
             const Settings& settings, const std::string& section, const std::string& key, Setting setting);

/// That a value is of a form. @throws command::Failure as writeAs
void checkAs(Form form, const Settings& settings, const std::string& section, const std::string& key,
             Setting setting);

/// Stores a value through the library's function for its form, after it was read back from a copy of the
/// file: what would not be read as it was given is not stored.
/// @param value  UTF-8, a text as it is to be read, or a value as writeAs shows it
/// @throws command::UsageError when it is not of that form; command::Failure
void storeAs(Form form, const command::FileArgument& file, const std::string& section, const std::string& key,
             std::string_view value);

/// A text of the code page in double quotes, as JSON has it.
std::string jsonText(std::string_view text);

}  // namespace kor::profile
