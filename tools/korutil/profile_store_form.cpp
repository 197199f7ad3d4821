#include <optional>
#include <vector>

#include "korutil/profile.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/long_text.h"
#include "tools/korutil/profile_form.h"
#include "tools/korutil/profile_scratch.h"
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

void store(Form form, const tree::Content& content, const FileArgument& file, const std::string& section,
           const std::string& key, std::string_view value) {
    SetLastError(0);
    if (write(form, content, section.c_str(), key.c_str(), profileFile(file.path.c_str()))) return;
    const DWORD error = GetLastError();
    throw Failure(file.shown, error || form != Form::kPaths
                                  ? command::reasonOf(error)
                                  : "'" + std::string(value) + "' cannot be converted for this file");
}

// @throws Failure when the value is not read as it was given
void checkStored(Form form, const tree::Content& content, const FileArgument& file,
                 const std::string& section, const std::string& key, std::string_view shown) {
    const Settings settings = Settings::ofFile(file.native);
    const Setting stored = settings.require(section, key);
    if (form != Form::kText) {
        checkAs(form, settings, section, key, stored);
    } else if (stored.value != content.data) {
        throw Failure(shown, entryShown(section, key) + " would be read as '" +
                                 command::shownStart(stored.value) + '\'');
    }
}

// A path depends on the folder of its file, so that a copy elsewhere shows nothing.
void storePaths(const tree::Content& content, const FileArgument& file, const std::string& section,
                const std::string& key, std::string_view value) {
    std::optional<Setting> former;
    if (file.found) former = Settings::ofFile(file.native).find(section, key);
    store(Form::kPaths, content, file, section, key, value);
    try {
        checkStored(Form::kPaths, content, command::existingFile(file.shown), section, key, file.shown);
    } catch (const Failure&) {
        const std::string text = former ? quotedIfNeeded(former->value) : "";
        appWriteProfileString(section.c_str(), key.c_str(), former ? text.c_str() : nullptr,
                              profileFile(file.path.c_str()), nullptr);
        throw;
    }
}

}  // namespace

void storeAs(Form form, const FileArgument& file, const std::string& section, const std::string& key,
             std::string_view value) {
    const tree::Content content = contentOf(form, value);
    if (form == Form::kPaths) return storePaths(content, file, section, key, value);
    {
        const ScratchProfile scratch(file);
        FileArgument copy = file;
        copy.native = scratch.native();
        copy.path = scratch.path();
        store(form, content, copy, section, key, value);
        checkStored(form, content, copy, section, key, file.shown);
    }
    store(form, content, file, section, key, value);
}

}  // namespace kor::profile
