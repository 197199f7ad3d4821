#include "tools/korutil/command_table.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/tree_file.h"
#include "tools/korutil/tree_json.h"
#include "tools/korutil/tree_text.h"

namespace kor::command {
namespace {

constexpr std::uint64_t kLastPosition = 0xFFFFFFFF;  // positions in a tree have 32 bits

constexpr std::array kOptions = {
    Option{"offset", "N", "where the tree begins in the file, in bytes (0)", kLastPosition},
    Option{"all", "", "show long values whole"},
    Option{"json", "", "write the tree as JSON, in the form that from-json reads"},
};

constexpr std::string_view kHelp =
    "Sections are shown with the entries below them, each with its id, its type, its version (sections and\n"
    "memory blocks have one), the size of its block in bytes, and its value. The file is opened for reading\n"
    "only and is not changed. The tree may stand anywhere in a larger file (--offset).\n";

ExitStatus run(const Arguments& arguments, Output& output) {
    const std::uint64_t offset = arguments.number("offset").value_or(0);
    if (arguments.has("json") && arguments.has("all"))
        throw UsageError("--json is always whole; --all goes with the text");
    const FileArgument file = existingFile(arguments.operand(0));
    guarded(file.shown, [&] {
        tree::StoredTree tree(file, offset, tree::Blocks::kInFile);
        if (arguments.has("json")) {
            tree::writeJson(tree, output);
        } else {
            tree::writeText(tree, arguments.has("all"), output);
        }
    });
    return kDone;
}

}  // namespace

const Command kTreeShow = {"tree show", "FILE",   1,  "Shows the parameter tree that a file holds",
                           kHelp,       kOptions, run};

}  // namespace kor::command
