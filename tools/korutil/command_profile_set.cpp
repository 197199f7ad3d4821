#include <algorithm>

#include "tools/korutil/command_table.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/input.h"
#include "tools/korutil/profile_content.h"
#include "tools/korutil/profile_form.h"

namespace kor::command {
namespace {

constexpr std::string_view kHelp =
    "FILE is made when it is missing; the one line is changed or added, everything else stays byte for "
    "byte,\n"
    "in one atomic step. VALUE is what will be read: one that begins or ends with a blank or stands in "
    "quotes\n"
    "is stored in double quotes.\n"
    "\n"
    "  type       VALUE\n"
    "  --int      a whole number of 32 bits: -40\n"
    "  --double   a number, NaN, Infinity or -Infinity: 6.45e-6; stored with 15 significant digits\n"
    "  --doubles  numbers joined by commas: 0.5,1e-3 (an empty text for none)\n"
    "  --bytes    pairs of hexadecimal digits: 00FF (an empty text for none)\n"
    "  --paths    a Windows path (Z:\\data\\a.tif), stored relative to FILE's folder, or several joined by "
    ";\n"
    "             which are stored absolute\n"
    "\n"
    "A VALUE that begins with two dashes follows the word --.\n";

bool isAscii(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char character) { return character < 0; });
}

// Characters of the code page in a file that an editor saved as UTF-8 would make it a file of neither.
void refuseMixture(const FileArgument& file, const Arguments& arguments) {
    const bool plain =
        isAscii(arguments.operand(1)) && isAscii(arguments.operand(2)) && isAscii(arguments.operand(3));
    if (plain || !file.found || !profile::Content(readInput(file.native)).looksLikeUtf8()) return;
    throw Failure(
        file.shown,
        "it looks like UTF-8 without a byte-order mark, and the text would be stored in the code page: "
        "save it with the mark, or set KORUTIL_CODEPAGE=65001");
}

ExitStatus run(const Arguments& arguments, Output&) {
    const profile::Form form = profile::formOf(arguments);
    const std::string section = profile::sectionNamed(arguments.operand(1));
    const std::string key = profile::keyNamed(arguments.operand(2));
    const FileArgument file = targetFile(arguments.operand(0));
    refuseMixture(file, arguments);
    profile::storeAs(form, file, section, key, arguments.operand(3));
    return kDone;
}

}  // namespace

const Command kProfileSet = {
    "profile set", "FILE SECTION KEY VALUE", 4,  "Stores one value in a settings file",
    kHelp,         profile::kFormOptions,    run};

}  // namespace kor::command
