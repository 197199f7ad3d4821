#include "korutil/profile.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"
#include "tools/korutil/input.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/profile_scratch.h"
#include "tools/korutil/profile_tree.h"
#include "tools/korutil/tree_file.h"

namespace kor::command {
namespace {

constexpr std::array kOptions = {
    Option{"keys", "MAP", "JSON file with the names of the entries; - for standard input", 0, true}};

#define KOR_MAP_HELP                                                                                      \
    "\n"                                                                                                  \
    "MAP gives the names, which have no dots:\n"                                                          \
    "\n"                                                                                                  \
    "  {\"id\":1000,\"name\":\"Setup\",\"keys\":{\n"                                                      \
    "    \"1\":\"Title\",\n"                                                                              \
    "    \"100\":{\"name\":\"Camera\",\"keys\":{\"1\":\"Model\",\"5\":\"Bits\"}}}}\n"                     \
    "\n"                                                                                                  \
    "Sections are told apart by their own id, wherever they stand: what MAP says about a section id in\n" \
    "several places must agree, and is taken together.\n"

constexpr std::string_view kToHelp =
    "The tree's sections become sections of PROFILE (Setup, Setup.Camera), its entries keys with a suffix\n"
    "for the type (Title.Str, Bits.Int). Sections of these names that PROFILE has are replaced, the rest of\n"
    "it stays; PROFILE is made when it is missing, and replaced in one atomic step.\n"
    "\n"
    "What was written is read back: what will not be restored (points; texts and lists of numbers beyond\n"
    "259 characters; more than 15 digits; blanks at a text's ends) is told on standard error.\n" KOR_MAP_HELP;

constexpr std::string_view kFromHelp =
    "TREEFILE is made, or replaced in one atomic step, from the sections of PROFILE that to-profile writes.\n"
    "Keys that do not become an entry are told on standard error.\n" KOR_MAP_HELP;

#undef KOR_MAP_HELP

profile::KeyMap keyMapOf(const Arguments& arguments) {
    const std::string& source = *arguments.valueOf("keys");
    try {
        return profile::KeyMap(json::Document(readInput(source)));
    } catch (const json::Error& error) {
        throw Failure(source == "-" ? "standard input" : source, error.what());
    }
}

profile::Loss warningsAbout(const std::string& file) {
    return [file](const std::string& entry, const std::string& reason) {
        reportLine(file + ": " + entry + ": " + reason);
    };
}

// Removes the sections that a tree of the map has in a file: the root's, and those below it.
void removeSections(const std::string& native, const profile::KeyMap& map, std::string_view shown) {
    const profile::Settings settings = profile::Settings::ofFile(native);
    const std::string root = profile::folded(map.rootName());
    for (const std::string& name : settings.sections()) {
        const std::string section = profile::folded(name);
        if (section != root && !section.starts_with(root + '.')) continue;
        if (!appWriteProfileString(name.c_str(), nullptr, nullptr, settings.selector(), nullptr))
            throw Failure(shown, reasonOf(GetLastError()));
    }
    for (const std::string& name : settings.sections()) {
        if (profile::folded(name) == root || profile::folded(name).starts_with(root + '.'))
            throw Failure(shown,
                          "section [" + name + "] stands there several times; see korutil profile check");
    }
}

ExitStatus runTo(const Arguments& arguments, Output&) {
    const profile::KeyMap map = keyMapOf(arguments);
    const FileArgument source = existingFile(arguments.operand(0));
    const FileArgument target = targetFile(arguments.operand(1));
    if (isSameFile(source.native, target.native)) throw Failure(target.shown, "it is the tree's file itself");
    tree::StoredTree stored(source, 0, tree::Blocks::kInMemory);
    const profile::ScratchProfile scratch(target);
    guarded(target.shown, [&] {
        profile::MappedTree written(map);
        tree::setRoot(written, stored.root().GetTagID(), tree::typeWordOf(stored.root()));
        while (stored.root().GetChildCount() > 0)
            written.AddNewKnot(&tree::childOf(stored.root(), 0));
        profile::checkWritable(written, map, source.shown);
        removeSections(scratch.native(), map, target.shown);
        written.AttachToProfile(scratch.path().c_str());
        written.WriteTree();
        profile::MappedTree restored(map);
        restored.AttachToProfile(scratch.path().c_str());
        restored.ReadTree();
        scratch.commit();
        profile::reportLosses(written, restored, map, warningsAbout(target.shown));
    });
    return kDone;
}

ExitStatus runFrom(const Arguments& arguments, Output&) {
    const profile::KeyMap map = keyMapOf(arguments);
    const FileArgument source = existingFile(arguments.operand(0));
    const FileArgument target = targetFile(arguments.operand(1));
    if (isSameFile(source.native, target.native))
        throw Failure(target.shown, "it is the settings file itself");
    const profile::Settings settings = profile::Settings::ofFile(arguments.operand(0));
    if (!settings.hasSection(map.rootName()))
        throw Failure(source.shown, "there is no section [" + code_page::toUtf8(map.rootName()) + ']');
    guarded(target.shown, [&] {
        profile::MappedTree tree(map);
        tree.AttachToProfile(source.path.c_str());
        tree.ReadTree();
        tree::storeTree(tree, target);
        profile::reportUnread(settings, tree, map, warningsAbout(source.shown));
    });
    return kDone;
}

}  // namespace

const Command kTreeToProfile = {
    "tree to-profile", "TREEFILE PROFILE", 2,    "Stores a parameter tree in a settings file",
    kToHelp,           kOptions,           runTo};

const Command kTreeFromProfile = {
    "tree from-profile", "PROFILE TREEFILE", 2,      "Makes a parameter tree from a settings file",
    kFromHelp,           kOptions,           runFrom};

}  // namespace kor::command
