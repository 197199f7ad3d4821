#include <vector>

#include "korutil/profile.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/profile_form.h"
#include "tools/korutil/tree_value.h"

namespace kor::profile {
namespace {

using command::Failure;
using command::FileArgument;

bool isBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

// What has to stand in the file for a text to be read: blanks at its ends and a pair of quotes are taken off.
std::string quotedIfNeeded(std::string text) {
    if (text.empty()) return text;
    const bool isQuoted =
        text.size() > 1 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
    return isQuoted || isBlank(text.front()) || isBlank(text.back()) ? '"' + text + '"' : text;
}

tree::Content contentOf(Form form, std::string_view value) {
    switch (form) {
        case Form::kInt:
            return tree::contentOfText(tree::Type::kLong, value, "VALUE");
        case Form::kDouble:
            return tree::contentOfText(tree::Type::kDouble, value, "VALUE");
        case Form::kDoubles:
            return tree::contentOfText(tree::Type::kDoubles, value, "VALUE");
        case Form::kBytes:
            return tree::contentOfText(tree::Type::kMemory, value, "VALUE");
        case Form::kText:
        case Form::kPaths:
            break;
    }
    if (value.find_first_of("\r\n") != std::string_view::npos)
        throw command::UsageError("a value cannot hold a line break");
    return {0, {}, code_page::fromUtf8(value, "VALUE")};
}

BOOL write(Form form, const tree::Content& content, const char* section, const char* key, UINT_PTR selector) {
    switch (form) {
        case Form::kInt:
            return appWriteProfileInt(section, key, static_cast<int>(content.words[0]), selector, nullptr);
        case Form::kDouble:
            return appWriteProfileDouble(section, key, tree::doubleOf(content.words), selector, nullptr);
        case Form::kDoubles: {
            std::vector<double> values(content.data.size() / 8);
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = tree::elementOf(content.data, i);
            return appWriteProfileDblArray(section, key, values.data(), static_cast<int>(values.size()),
                                           selector, nullptr);
        }
        case Form::kBytes:
            return appWriteProfileStruct(section, key, content.data.data(),
                                         static_cast<DWORD>(content.data.size()), selector, nullptr);
        case Form::kPaths:
            return appWriteProfilePaths(section, key, content.data.c_str(), selector, nullptr);
        case Form::kText:
            break;
    }
    return appWriteProfileString(section, key, quotedIfNeeded(content.data).c_str(), selector, nullptr);
}

}  // namespace

void storeAs(Form form, const FileArgument& file, const std::string& section, const std::string& key,
             std::string_view value) {
    const tree::Content content = contentOf(form, value);
    SetLastError(0);
    if (!write(form, content, section.c_str(), key.c_str(), profileFile(file.path.c_str()))) {
        const DWORD error = GetLastError();
        throw Failure(file.shown, error || form != Form::kPaths
                                      ? command::reasonOf(error)
                                      : "'" + std::string(value) + "' cannot be converted for this file");
    }
    const Settings settings = Settings::ofFile(file.shown);
    const Setting stored = settings.require(section, key);
    readAs(form, settings, section, key, stored);
    if (form == Form::kText && stored.value != content.data) {
        throw Failure(file.shown, entryShown(section, key) + " was stored, but is read as '" +
                                      code_page::toUtf8(stored.value) + '\'');
    }
}

}  // namespace kor::profile
