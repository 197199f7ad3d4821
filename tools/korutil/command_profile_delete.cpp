#include "korutil/profile.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/profile_settings.h"

namespace kor::command {
namespace {

constexpr std::string_view kHelp =
    "The key's line goes, everything else stays byte for byte, in one atomic step. Where the key stands on\n"
    "several lines, the first goes, and the value that is read from then on is told on standard error.\n";

ExitStatus run(const Arguments& arguments, Output&) {
    const std::string section = profile::sectionNamed(arguments.operand(1));
    const std::string key = profile::keyNamed(arguments.operand(2));
    const FileArgument file = existingFile(arguments.operand(0));
    const profile::Settings settings = profile::Settings::ofFile(arguments.operand(0));
    settings.require(section, key);
    if (!appWriteProfileString(section.c_str(), key.c_str(), nullptr, settings.selector(), nullptr))
        throw Failure(file.shown, reasonOf(GetLastError()));
    if (const auto next = settings.find(section, key)) {
        reportLine(file.shown + ": " + profile::entryShown(section, key) +
                   " stands there once more and is now read as '" + code_page::toUtf8(next->value) + '\'');
    }
    return kDone;
}

}  // namespace

const Command kProfileDelete = {
    "profile delete", "FILE SECTION KEY", 3, "Deletes one key of a settings file", kHelp, {}, run};

}  // namespace kor::command
