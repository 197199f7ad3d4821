#include "tools/korutil/command_table.h"
#include "tools/korutil/input.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/tree_file.h"
#include "tools/korutil/tree_json.h"

namespace kor::command {
namespace {

constexpr std::string_view kHelp =
    "JSON is a file, or - for standard input. FILE is made, or replaced in one atomic step. The outermost\n"
    "node is a section; a node is one of\n"
    "\n"
    "  {\"id\":1,\"type\":\"section\",\"version\":0,\"children\":[ nodes ]}\n"
    "  {\"id\":2,\"type\":\"long\",\"value\":-40}\n"
    "  {\"id\":3,\"type\":\"double\",\"value\":0.1}      or \"NaN\", \"Infinity\", \"-Infinity\"\n"
    "  {\"id\":4,\"type\":\"point\",\"value\":[12,-7]}\n"
    "  {\"id\":5,\"type\":\"string\",\"value\":\"text\"}\n"
    "  {\"id\":6,\"type\":\"doubles\",\"value\":[0.5,1e-3]}\n"
    "  {\"id\":7,\"type\":\"memory\",\"version\":0,\"value\":\"00FF\"}\n"
    "\n"
    "What `korutil tree show FILE --json` writes comes back byte for byte.\n";

ExitStatus run(const Arguments& arguments, Output&) {
    const std::string& source = arguments.operand(0);
    if (isSameFile(source, arguments.operand(1)))
        throw Failure(arguments.operand(1), "it is the JSON file itself");
    const FileArgument target = targetFile(arguments.operand(1));
    guarded(target.shown, [&] {
        CRootTagTree root;
        try {
            const json::Document document(readInput(source));
            tree::buildFromJson(document, root);
        } catch (const json::Error& error) {
            throw Failure(source == "-" ? "standard input" : source, error.what());
        }
        tree::storeTree(root, target);
    });
    return kDone;
}

}  // namespace

const Command kTreeFromJson = {
    "tree from-json", "JSON FILE", 2, "Stores a parameter tree that is written as JSON", kHelp, {}, run};

}  // namespace kor::command
