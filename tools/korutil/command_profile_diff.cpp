#include <string>
#include <unordered_set>
#include <vector>

#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"
#include "tools/korutil/input.h"
#include "tools/korutil/profile_form.h"
#include "tools/korutil/profile_options.h"

namespace kor::command {
namespace {

using profile::Setting;
using profile::Settings;

constexpr std::array kOptions = {kJsonOption};

constexpr std::string_view kHelp =
    "Compares what the library reads from two settings files, not their lines: order, letter case of names,\n"
    "comments, blanks, quotes and lines that are not read make no difference. A value that only A has is\n"
    "shown with -, one that only B has with +. The exit status is 0 when both hold the same settings (when\n"
    "the files differ all the same, a line says so) and 1 when they do not.\n";

using Value = std::optional<Setting>;

// The names of both lists, each once.
std::vector<std::string> merged(std::vector<std::string> first, const std::vector<std::string>& second) {
    std::unordered_set<std::string> known;
    for (const std::string& name : first)
        known.insert(profile::folded(name));
    for (const std::string& name : second) {
        if (known.insert(profile::folded(name)).second) first.push_back(name);
    }
    return first;
}

// Calls `use` with every setting that differs.
template <class Use>
void forDifferences(const Settings& a, const Settings& b, Use use) {
    for (const std::string& section : merged(a.sections(), b.sections())) {
        for (const std::string& key : merged(a.keys(section), b.keys(section))) {
            const Value first = a.find(section, key);
            const Value second = b.find(section, key);
            if (first.has_value() == second.has_value() && (!first || first->value == second->value))
                continue;
            use(section, key, first, second);
        }
    }
}

std::string valueAsJson(const Value& value) { return value ? profile::jsonText(value->value) : "null"; }

class TextWriter {
  public:
    explicit TextWriter(Output& output) : output_(output) {}

    void operator()(const std::string& section, const std::string& key, const Value& a, const Value& b) {
        if (!section_ || *section_ != section) line("[" + section + "]");
        section_ = section;
        if (a) line("-" + key + '=' + a->value);
        if (b) line("+" + key + '=' + b->value);
    }

  private:
    void line(const std::string& text) { output_.write(oneLine(code_page::toUtf8(text)) + '\n'); }

    Output& output_;
    std::optional<std::string> section_;
};

ExitStatus compareAsText(const Arguments& arguments, const Settings& a, const Settings& b, Output& output) {
    bool isSame = true;
    TextWriter writer(output);
    forDifferences(a, b, [&](const auto&... difference) {
        isSame = false;
        writer(difference...);
    });
    if (!isSame) return kAnswerIsNo;
    if (!isSameFile(arguments.operand(0), arguments.operand(1)) &&
        readInput(arguments.operand(0)) != readInput(arguments.operand(1))) {
        output.write(oneLine(a.shown()) + " and " + oneLine(b.shown()) +
                     " hold the same settings, written differently\n");
    }
    return kDone;
}

ExitStatus compareAsJson(const Settings& a, const Settings& b, Output& output) {
    const char* separator = "[\n  ";
    bool isSame = true;
    forDifferences(
        a, b,
        [&](const std::string& section, const std::string& key, const Value& first, const Value& second) {
            isSame = false;
            output.write(separator + ("{\"section\":" + profile::jsonText(section)) +
                         ",\"key\":" + profile::jsonText(key) + ",\"a\":" + valueAsJson(first) +
                         ",\"b\":" + valueAsJson(second) + '}');
            separator = ",\n  ";
        });
    output.write(isSame ? "[]\n" : "\n]\n");
    return isSame ? kDone : kAnswerIsNo;
}

ExitStatus run(const Arguments& arguments, Output& output) {
    const Settings a = Settings::ofFile(arguments.operand(0));
    const Settings b = Settings::ofFile(arguments.operand(1));
    return arguments.has("json") ? compareAsJson(a, b, output) : compareAsText(arguments, a, b, output);
}

}  // namespace

const Command kProfileDiff = {"profile diff", "A B",    2,  "Compares the settings of two files",
                              kHelp,          kOptions, run};

}  // namespace kor::command
