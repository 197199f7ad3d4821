#include <utility>

#include "tools/korutil/command_table.h"
#include "tools/korutil/profile_form.h"
#include "tools/korutil/profile_options.h"

namespace kor::command {
namespace {

constexpr std::array kOptions = {
    profile::kFormOptions[0],
    profile::kFormOptions[1],
    profile::kFormOptions[2],
    profile::kFormOptions[3],
    profile::kFormOptions[4],
    kApplicationOption,
    kOriginOption,
    kJsonOption,
};

constexpr std::string_view kHelp =
    "Shows a value as the library reads it: names without regard to case, of several lines of one name the\n"
    "first, without the blanks around the value and one pair of quotes. An empty value is an empty line; a\n"
    "key that is not there is told on standard error, with exit status 1.\n"
    "\n"
    "With a type, a text that is not of that type as a whole is refused, with what the library would make\n"
    "of it. Paths are shown absolute, seen from the folder of the file that holds them.\n"
    "\n"
    "With --application, FILE is a user's file, which may be missing, and lies over the installation's: a\n"
    "key that FILE has counts, also when its value is empty.\n";

ExitStatus run(const Arguments& arguments, Output& output) {
    const profile::Form form = profile::formOf(arguments);
    const std::string section = profile::sectionNamed(arguments.operand(1));
    const std::string key = profile::keyNamed(arguments.operand(2));
    const profile::Settings settings = settingsOf(arguments);
    profile::Setting setting = settings.require(section, key);
    const FileArgument& file = *setting.file;
    const std::string fileShown = fileAsJson(setting);
    const bool asJson = arguments.has("json");
    const std::string before = asJson ? "{\"section\":" + profile::jsonText(section) +
                                            ",\"key\":" + profile::jsonText(key) + ",\"value\":"
                                      : "";
    profile::writeAs(output, before, form, asJson, settings, section, key, std::move(setting));
    if (asJson)
        output.write(",\"file\":" + fileShown + '}');
    else if (arguments.has("origin"))
        output.write('\t' + oneLine(file.shown));
    output.write("\n");
    return kDone;
}

}  // namespace

const Command kProfileGet = {"profile get", "FILE SECTION KEY", 3,  "Shows one value of a settings file",
                             kHelp,         kOptions,           run};

}  // namespace kor::command
