#include "tools/korutil/command_table.h"
#include "tools/korutil/json.h"
#include "tools/korutil/profile_check.h"
#include "tools/korutil/profile_options.h"

namespace kor::command {
namespace {

constexpr std::string_view kIgnoreLayout = "ignore-layout";

constexpr std::array kOptions = {
    Option{kIgnoreLayout, "", "pass over blanks and quotes around names and values"},
    kJsonOption,
};

constexpr std::string_view kHelp =
    "Names line and reason of everything that will not be read as it is written: sections and keys that\n"
    "stand twice, text before the first section, lines without '=', section names without ']' or with text\n"
    "behind it, blanks and quotes that reading takes off, comments behind values, names and values that are\n"
    "longer than readers take, zero bytes, characters that the code page lacks, UTF-8 that is not marked as\n"
    "such. What seems right is also read through the library and compared. The exit status is 1 when\n"
    "something was found, and 2 when the file could not be checked.\n";

ExitStatus run(const Arguments& arguments, Output& output) {
    const FileArgument file = existingFile(arguments.operand(0));
    const bool asJson = arguments.has("json");
    bool isClean = true;
    const profile::CheckRules rules{arguments.has(kIgnoreLayout)};
    if (asJson) output.write("[");
    profile::checkProfile(file, rules, [&](std::uint64_t line, std::string_view reason) {
        if (asJson) {
            std::string text = isClean ? "\n  {\"line\":" : ",\n  {\"line\":";
            text += std::to_string(line) + ",\"reason\":";
            json::appendString(text, reason);
            output.write(text + '}');
        } else {
            output.write(oneLine(file.shown) + ':' + std::to_string(line) + ": " + oneLine(reason) + '\n');
        }
        isClean = false;
    });
    if (asJson) output.write(isClean ? "]\n" : "\n]\n");
    return isClean ? kDone : kAnswerIsNo;
}

}  // namespace

const Command kProfileCheck = {
    "profile check", "FILE",   1,   "Finds what in a settings file will not be read as it is written",
    kHelp,           kOptions, run, kNoAnswer};

}  // namespace kor::command
