#include <algorithm>
#include <vector>

#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"
#include "tools/korutil/long_text.h"
#include "tools/korutil/profile_form.h"
#include "tools/korutil/profile_options.h"
#include "tools/korutil/utf8.h"

namespace kor::command {
namespace {

constexpr std::array kListOptions = {kApplicationOption, kOriginOption, kJsonOption};
constexpr std::array kSectionsOptions = {kApplicationOption, kJsonOption};
constexpr std::size_t kWidestColumn = 40;

constexpr std::string_view kListHelp =
    "Shows every key of a section with its value as the library reads it, as KEY=VALUE; of several lines of\n"
    "one name the first. With --origin it is a table that also has the file of each value. With\n"
    "--application, FILE is a user's file, which may be missing: what it has counts, the rest comes from\n"
    "the installation's file.\n";

constexpr std::string_view kSectionsHelp =
    "Shows the names of the sections, one a line; of several sections of one name the first.\n";

// Calls `use` with each key of a section and its setting.
template <class Use>
void forSettings(const profile::Settings& settings, const std::string& section, Use use) {
    for (const std::string& key : settings.keys(section)) {
        const auto setting = settings.find(section, key);
        if (setting) use(key, *setting);  // else a line that is no setting, or one that went meanwhile
    }
}

// How many characters a text is shown with, or enough to fill a column.
std::size_t widthOf(std::string_view bytes) {
    constexpr std::size_t kEnoughBytes = 4 * kWidestColumn;
    return std::min(utf8::count(oneLine(code_page::toUtf8(bytes.substr(0, kEnoughBytes)))), kWidestColumn);
}

void writeCell(Output& output, std::string_view bytes, std::size_t width) {
    writeLine(output, bytes);
    output.write(std::string(width - std::min(width, widthOf(bytes)) + 2, ' '));
}

void writeTable(const profile::Settings& settings, const std::string& section, Output& output) {
    std::size_t keyWidth = 5;
    std::size_t valueWidth = 5;
    forSettings(settings, section, [&](const std::string& key, const profile::Setting& setting) {
        keyWidth = std::max(keyWidth, widthOf(key));
        valueWidth = std::max(valueWidth, widthOf(setting.value));
    });
    const auto line = [&](std::string_view key, std::string_view value, std::string_view file) {
        writeCell(output, key, keyWidth);
        writeCell(output, value, valueWidth);
        output.write(oneLine(file) + '\n');
    };
    line("key", "value", "from");
    forSettings(settings, section, [&](const std::string& key, const profile::Setting& setting) {
        line(key, setting.value, setting.file->shown);
    });
}

void writeText(const profile::Settings& settings, const std::string& section, Output& output) {
    forSettings(settings, section, [&](const std::string& key, const profile::Setting& setting) {
        writeLine(output, key);
        output.write("=");
        writeLine(output, setting.value);
        output.write("\n");
    });
}

void writeJson(const profile::Settings& settings, const std::string& section, Output& output) {
    output.write("{\"section\":" + profile::jsonText(section) + ",\"entries\":[");
    const char* separator = "\n  ";
    forSettings(settings, section, [&](const std::string& key, const profile::Setting& setting) {
        output.write(separator + std::string("{\"key\":"));
        writeJsonText(output, key);
        output.write(",\"value\":");
        writeJsonText(output, setting.value);
        output.write(",\"file\":" + fileAsJson(setting) + '}');
        separator = ",\n  ";
    });
    output.write("\n]}\n");
}

ExitStatus runList(const Arguments& arguments, Output& output) {
    const std::string section = profile::sectionNamed(arguments.operand(1));
    const profile::Settings settings = settingsOf(arguments);
    if (!settings.hasSection(section))
        throw Failure(settings.shown(), "there is no section [" + code_page::toUtf8(section) + ']');
    if (arguments.has("json")) {
        writeJson(settings, section, output);
        return kDone;
    }
    if (arguments.has("origin"))
        writeTable(settings, section, output);
    else
        writeText(settings, section, output);
    return kDone;
}

ExitStatus runSections(const Arguments& arguments, Output& output) {
    const profile::Settings settings = settingsOf(arguments);
    const bool asJson = arguments.has("json");
    const char* separator = "";
    if (asJson) output.write("[");
    for (const std::string& name : settings.sections()) {
        if (asJson) {
            output.write(separator);
            writeJsonText(output, name);
        } else {
            writeLine(output, name);
            output.write("\n");
        }
        separator = ",";
    }
    if (asJson) output.write("]\n");
    return kDone;
}

}  // namespace

const Command kProfileList = {"profile list", "FILE SECTION", 2,      "Shows a section of a settings file",
                              kListHelp,      kListOptions,   runList};

const Command kProfileSections = {
    "profile sections", "FILE",           1,          "Shows the names of a settings file's sections",
    kSectionsHelp,      kSectionsOptions, runSections};

}  // namespace kor::command
