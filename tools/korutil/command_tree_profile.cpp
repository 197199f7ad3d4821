#include <unistd.h>

#include <unordered_set>
#include <utility>
#include <vector>

#include "korutil/profile.h"
#include "platform/win32.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"
#include "tools/korutil/input.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/profile_scratch.h"
#include "tools/korutil/profile_section_lines.h"
#include "tools/korutil/profile_suffix.h"
#include "tools/korutil/profile_tree.h"
#include "tools/korutil/replace_file.h"
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
    "for the type (Title.Str, Bits.Int). The sections of PROFILE that the tree has are replaced, and\n"
    "those that only MAP names are removed; comments and everything else in it stay. PROFILE is made when\n"
    "it is missing, and replaced in one atomic step.\n"
    "\n"
    "What was written is read back: what will not be restored (points; texts and lists of numbers beyond\n"
    "259 characters; more than 15 digits; blanks at a text's ends) is told on standard error, and so are "
    "the\n"
    "sections that were removed, and in those that were replaced the keys that are no entries of a tree. "
    "The\n"
    "exit status is then 3.\n" KOR_MAP_HELP;

constexpr std::string_view kFromHelp =
    "TREEFILE is made, or replaced in one atomic step, from the sections of PROFILE that to-profile writes.\n"
    "What of these sections does not become an entry, or one of another value than it stands there, is told\n"
    "on standard error, with exit status 3.\n" KOR_MAP_HELP;

#undef KOR_MAP_HELP

profile::KeyMap keyMapOf(const Arguments& arguments) {
    const std::string& source = *arguments.valueOf("keys");
    try {
        return profile::KeyMap(json::Document(readInput(source)));
    } catch (const json::Error& error) {
        throw Failure(source == "-" ? "standard input" : source, error.what());
    }
}

// Tells losses, and counts them.
class Losses {
  public:
    explicit Losses(std::string file) : file_(std::move(file)) {}

    profile::Loss teller() {
        return [this](const std::string& entry, const std::string& reason) {
            reportLine(file_ + ": " + entry + ": " + reason);
            isAny_ = true;
        };
    }
    ExitStatus status() const { return isAny_ ? kIncomplete : kDone; }

  private:
    std::string file_;
    bool isAny_ = false;
};

using Told = std::vector<std::pair<std::string, std::string>>;

// Keys of a section that is replaced which no tree of this map can have.
void addOtherKeys(const profile::Settings& settings, const std::string& section, int id,
                  const profile::KeyMap& map, Told& told) {
    for (const std::string& key : settings.keys(section)) {
        const profile::SplitKey split(key);
        if (profile::folded(key) == "version" || (split.suffix && map.idOf(id, std::string(split.name))))
            continue;
        told.emplace_back(profile::entryShown(section, key), "it was no entry of a tree, and was removed");
    }
}

// Removes the sections of the tree, and those that the map has names for.
Told removeSections(const std::string& native, const profile::KeyMap& map,
                    const std::vector<profile::SectionLines>& written, std::string_view shown) {
    const profile::Settings settings = profile::Settings::ofFile(native);
    std::unordered_set<std::string> ours;
    for (const profile::SectionLines& section : written)
        ours.insert(profile::folded(section.name));
    Told told;
    std::unordered_set<std::string> removed;
    for (const std::string& name : settings.sectionLines()) {
        const auto place = map.placeOf(name);
        const bool isOurs = ours.contains(profile::folded(name));
        if (!place || (!isOurs && !place->isSection)) continue;
        if (!removed.insert(profile::folded(name)).second) {
            throw Failure(shown, "section [" + code_page::toUtf8(name) +
                                     "] stands there several times; see korutil profile check");
        }
        if (isOurs)
            addOtherKeys(settings, name, place->id, map, told);
        else
            told.emplace_back('[' + code_page::toUtf8(name) + ']',
                              "the tree has no such section; it was removed");
        if (!appWriteProfileString(name.c_str(), nullptr, nullptr, settings.selector(), nullptr))
            throw Failure(shown, reasonOf(GetLastError()));
    }
    return told;
}

// Puts the sections into the target, and reads them back.
Told storeSections(const FileArgument& target, const profile::KeyMap& map,
                   const std::vector<profile::SectionLines>& sections, profile::MappedTree& restored) {
    const profile::ScratchProfile scratch(target);
    Told told;
    if (target.found) told = removeSections(scratch.native(), map, sections, target.shown);
    // Each write is one of the whole file: the lines of the first section are those of all.
    std::string lines;
    for (const profile::SectionLines& section : sections) {
        if (&section != &sections.front()) (lines += '[' + section.name + ']') += '\0';
        lines += section.lines;
    }
    if (!WritePrivateProfileSectionA(sections.front().name.c_str(), lines.c_str(), scratch.path().c_str()))
        throw Failure(target.shown, reasonOf(GetLastError()));
    restored.AttachToProfile(scratch.path().c_str());
    restored.ReadTree();
    scratch.commit();
    return told;
}

// A file that others write all the time is free sooner or later.
Told storeWithPatience(const Arguments& arguments, const profile::KeyMap& map,
                       const std::vector<profile::SectionLines>& sections, profile::MappedTree& restored) {
    constexpr int kMostTries = 20;
    for (int tries = 1;; ++tries) {
        try {
            return storeSections(targetFile(arguments.operand(1)), map, sections, restored);
        } catch (const ChangedMeanwhile&) {
            if (tries == kMostTries) throw;
        }
        restored.DeleteChildren();
        ::usleep(static_cast<useconds_t>(tries) * 1000);
    }
}

ExitStatus runTo(const Arguments& arguments, Output&) {
    const profile::KeyMap map = keyMapOf(arguments);
    const FileArgument source = existingFile(arguments.operand(0));
    const FileArgument target = targetFile(arguments.operand(1));
    if (isSameFile(source.native, target.native)) throw Failure(target.shown, "it is the tree's file itself");
    tree::StoredTree stored(source, 0, tree::Blocks::kInMemory);
    Losses losses(target.shown);
    guarded(target.shown, [&] {
        profile::MappedTree written(map);
        tree::setRoot(written, stored.root().GetTagID(), tree::typeWordOf(stored.root()));
        while (stored.root().GetChildCount() > 0)
            written.AddNewKnot(&tree::childOf(stored.root(), 0));
        profile::checkWritable(written, map, source.shown);
        profile::MappedTree restored(map);
        const Told told = storeWithPatience(arguments, map, profile::sectionLinesOf(written, map), restored);
        for (const auto& [entry, reason] : told)
            losses.teller()(entry, reason);
        profile::reportLosses(written, restored, map, losses.teller());
    });
    return losses.status();
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
    Losses losses(source.shown);
    guarded(target.shown, [&] {
        profile::MappedTree tree(map);
        tree.AttachToProfile(source.path.c_str());
        tree.ReadTree();
        tree::storeTree(tree, target);
        profile::reportUnread(settings, tree, map, losses.teller());
    });
    return losses.status();
}

}  // namespace

const Command kTreeToProfile = {
    "tree to-profile", "TREEFILE PROFILE", 2,    "Stores a parameter tree in a settings file",
    kToHelp,           kOptions,           runTo};

const Command kTreeFromProfile = {
    "tree from-profile", "PROFILE TREEFILE", 2,      "Makes a parameter tree from a settings file",
    kFromHelp,           kOptions,           runFrom};

}  // namespace kor::command
