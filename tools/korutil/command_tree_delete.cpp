#include "tools/korutil/command_table.h"
#include "tools/korutil/tree_edit.h"

namespace kor::command {
namespace {

constexpr std::string_view kHelp =
    "PATH is ids joined by /, from the outermost section's entries down (20/3), the last one with its type\n"
    "where several entries have that id (20/3:long); of several with the same id and type it is the first.\n"
    "A section goes with everything below it. FILE is replaced in one atomic step; it must hold the tree "
    "and\n"
    "nothing else.\n";

ExitStatus run(const Arguments& arguments, Output&) {
    const tree::Path path = tree::pathOf(arguments.operand(1));
    tree::editTree(arguments.operand(0),
                   [&](CRootTagTree& root, std::string_view where) { tree::deleteEntry(root, path, where); });
    return kDone;
}

}  // namespace

const Command kTreeDelete = {"tree delete", "FILE PATH", 2,  "Deletes one entry of a stored parameter tree",
                             kHelp,         {},          run};

}  // namespace kor::command
