#include <string>
#include <unordered_set>
#include <vector>

#include "tools/korutil/command_table.h"
#include "tools/korutil/input.h"
#include "tools/korutil/long_text.h"
#include "tools/korutil/profile_content.h"
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
    "the files differ all the same, a line says so), 1 when they do not, and 2 when they could not be\n"
    "compared: also Unicode files that are read alike, but hold characters that the code page lacks.\n";

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

void writeValueAsJson(Output& output, const Value& value) {
    if (value)
        writeJsonText(output, value->value);
    else
        output.write("null");
}

// Why two files whose settings are read alike may differ all the same: characters that the code page lacks
// are all read as one.
void checkComparable(const Settings& settings) {
    const profile::Content content(readInput(settings.native()));
    const std::string fault = content.faultInSettings();
    if (!fault.empty()) throw Failure(settings.shown(), fault + "; the files cannot be compared");
}

class TextWriter {
  public:
    explicit TextWriter(Output& output) : output_(output) {}

    void operator()(const std::string& section, const std::string& key, const Value& a, const Value& b) {
        if (!section_ || *section_ != section) line("[", section, "]");
        section_ = section;
        if (a) line("-", key, "=", a->value);
        if (b) line("+", key, "=", b->value);
    }

  private:
    void line(std::string_view before, std::string_view name, std::string_view behind,
              std::string_view value = {}) {
        output_.write(before);
        writeLine(output_, name);
        output_.write(behind);
        writeLine(output_, value);
        output_.write("\n");
    }

    Output& output_;
    std::optional<std::string> section_;
};

ExitStatus compareAsText(const Settings& a, const Settings& b, Output& output) {
    bool isSame = true;
    TextWriter writer(output);
    forDifferences(a, b, [&](const auto&... difference) {
        isSame = false;
        writer(difference...);
    });
    if (!isSame) return kAnswerIsNo;
    if (!hasSameBytes(a.native(), b.native())) {
        checkComparable(a);
        checkComparable(b);
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
            output.write(separator + std::string("{\"section\":"));
            writeJsonText(output, section);
            output.write(",\"key\":");
            writeJsonText(output, key);
            output.write(",\"a\":");
            writeValueAsJson(output, first);
            output.write(",\"b\":");
            writeValueAsJson(output, second);
            output.write("}");
            separator = ",\n  ";
        });
    if (isSame && !hasSameBytes(a.native(), b.native())) {
        checkComparable(a);
        checkComparable(b);
    }
    output.write(isSame ? "[]\n" : "\n]\n");
    return isSame ? kDone : kAnswerIsNo;
}

ExitStatus run(const Arguments& arguments, Output& output) {
    const Settings a = Settings::ofFile(arguments.operand(0));
    const Settings b = Settings::ofFile(arguments.operand(1));
    return arguments.has("json") ? compareAsJson(a, b, output) : compareAsText(a, b, output);
}

}  // namespace

const Command kProfileDiff = {"profile diff", "A B",    2,   "Compares the settings of two files",
                              kHelp,          kOptions, run, kNoAnswer};

}  // namespace kor::command
