#include "tools/korutil/command_table.h"
#include "tools/korutil/tree_edit.h"

namespace kor::command {
namespace {

constexpr std::string_view kHelp =
    "PATH is ids joined by /, from the outermost section's entries down (20/3); all but the last name\n"
    "sections, which must be there. The entry of that id and TYPE is changed and keeps its place; when "
    "there\n"
    "is none, it is added at the end of its section. With a type in the path (20/3:long) the entry of that\n"
    "type is replaced, which may change its type.\n"
    "\n"
    "  TYPE      VALUE\n"
    "  long      a whole number of 32 bits: -40\n"
    "  double    a number, NaN, Infinity or -Infinity: 6.45e-6; or the bits of a NaN, 0x and 16 digits\n"
    "  point     x,y: 12,-7\n"
    "  string    a text in UTF-8\n"
    "  doubles   numbers joined by commas: 0.5,1e-3 (an empty text for none)\n"
    "  memory    pairs of hexadecimal digits: 00FF (an empty text for none)\n"
    "\n"
    "FILE is replaced in one atomic step; it must hold the tree and nothing else. A VALUE that begins with\n"
    "two dashes follows the word --.\n";

ExitStatus run(const Arguments& arguments, Output&) {
    const tree::Path path = tree::pathOf(arguments.operand(1));
    const std::string& typeName = arguments.operand(2);
    tree::Type type{};
    if (!tree::typeNamed(typeName, type)) {
        throw UsageError("'" + typeName + "' is no type; use " + std::string(tree::kValueTypes));
    }
    const tree::Content content =
        tree::contentOfText(type, arguments.operand(3), arguments.operand(0) + ": VALUE");
    tree::editTree(arguments.operand(0), [&](CRootTagTree& root, std::string_view where) {
        tree::setEntry(root, path, content, where);
    });
    return kDone;
}

}  // namespace

const Command kTreeSet = {
    "tree set", "FILE PATH TYPE VALUE", 4, "Changes or adds one entry of a stored parameter tree", kHelp, {},
    run};

}  // namespace kor::command
