#include "tools/korutil/tree_edit.h"

#include "tools/korutil/library_failure.h"
#include "tools/korutil/tree_file.h"

namespace kor::tree {

void editTree(std::string_view fileArgument,
              const std::function<void(CRootTagTree&, std::string_view)>& change) {
    const command::FileArgument file = command::existingFile(fileArgument);
    StoredTree tree(file, 0, Blocks::kInMemory);
    command::guarded(file.shown, [&] {
        tree.checkAlone();
        change(tree.root(), file.shown);
    });
    storeTree(tree.root(), file);
}

void setEntry(CRootTagTree& root, const Path& path, Content content, std::string_view where) {
    CTagTree& section = sectionOf(root, path, where);
    const Type type = typeOf(content.typeWord);
    const bool mustExist = path.type && *path.type != type;
    CTagTree* former = mustExist ? &entryOf(section, path, where) : findEntry(section, path.id, type);
    if (former && isSection(*former))
        throw command::Failure(where, path.text + " is a section, which holds no value");
    if (former && type == Type::kMemory && typeOf(typeWordOf(*former)) == type)
        content.typeWord |= former->GetVersion();
    CTagTree& entry = addEntry(section, path.id, content);
    if (!former) return;
    section.AddNewKnot(&entry, former);
    delete former;
}

void deleteEntry(CRootTagTree& root, const Path& path, std::string_view where) {
    delete &entryOf(sectionOf(root, path, where), path, where);
}

}  // namespace kor::tree
