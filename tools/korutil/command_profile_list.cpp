#include <algorithm>
#include <vector>

#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"
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

struct Row {
    std::string key;
    std::string value;
    std::string file;
};

std::vector<Row> rowsOf(const profile::Settings& settings, const std::string& section) {
    std::vector<Row> rows;
    for (const std::string& key : settings.keys(section)) {
        const auto setting = settings.find(section, key);
        if (!setting) continue;  // a line that is no setting, or one that went meanwhile
        rows.push_back({oneLine(code_page::toUtf8(key)), oneLine(code_page::toUtf8(setting->value)),
                        oneLine(setting->file->shown)});
    }
    return rows;
}

std::string padded(std::string text, std::size_t width) {
    const std::size_t taken = utf8::count(text);
    return taken < width ? text.append(width - taken, ' ') : text;
}

std::size_t widthOf(const std::vector<Row>& rows, std::string Row::*column) {
    std::size_t width = 5;
    for (const Row& row : rows)
        width = std::max(width, std::min(utf8::count(row.*column), kWidestColumn));
    return width;
}

void writeTable(const std::vector<Row>& rows, Output& output) {
    const std::size_t keyWidth = widthOf(rows, &Row::key);
    const std::size_t valueWidth = widthOf(rows, &Row::value);
    const auto line = [&](const Row& row) {
        output.write(padded(row.key, keyWidth) + "  " + padded(row.value, valueWidth) + "  " + row.file +
                     '\n');
    };
    line({"key", "value", "from"});
    for (const Row& row : rows)
        line(row);
}

void writeJson(const profile::Settings& settings, const std::string& section, Output& output) {
    output.write("{\"section\":" + profile::jsonText(section) + ",\"entries\":[");
    const char* separator = "\n  ";
    for (const std::string& key : settings.keys(section)) {
        const auto setting = settings.find(section, key);
        if (!setting) continue;
        output.write(separator + ("{\"key\":" + profile::jsonText(key)) + ",\"value\":" +
                     profile::jsonText(setting->value) + ",\"file\":" + fileAsJson(*setting) + '}');
        separator = ",\n  ";
    }
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
    const std::vector<Row> rows = rowsOf(settings, section);
    if (arguments.has("origin")) {
        writeTable(rows, output);
    } else {
        for (const Row& row : rows)
            output.write(row.key + '=' + row.value + '\n');
    }
    return kDone;
}

ExitStatus runSections(const Arguments& arguments, Output& output) {
    const profile::Settings settings = settingsOf(arguments);
    const bool asJson = arguments.has("json");
    const char* separator = "";
    if (asJson) output.write("[");
    for (const std::string& name : settings.sections()) {
        output.write(asJson ? separator + profile::jsonText(name) : oneLine(code_page::toUtf8(name)) + '\n');
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
