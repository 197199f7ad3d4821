#include "tools/korutil/tree_path.h"

#include <limits>

#include "tools/korutil/arguments.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/tree_file.h"

namespace kor::tree {
namespace {

[[noreturn]] void refuse(std::string_view text) {
    throw command::UsageError(
        "'" + std::string(text) +
        "' is no path; it is made of ids joined by '/', the last one id or id:type, such as "
        "20/3:double");
}

DWORD idOf(std::string_view part, std::string_view whole) {
    const auto id = command::wholeNumber(part, std::numeric_limits<DWORD>::max());
    if (!id) refuse(whole);
    return static_cast<DWORD>(*id);
}

CTagTree* findSection(const CTagTree& parent, DWORD id) {
    for (int i = 0; i < parent.GetChildCount(); ++i) {
        CTagTree& child = childOf(parent, i);
        if (child.GetTagID() == id && isSection(child)) return &child;
    }
    return nullptr;
}

}  // namespace

Path pathOf(std::string_view text) {
    Path path;
    path.text = text;
    std::string_view rest = text;
    for (std::size_t slash = rest.find('/'); slash != std::string_view::npos; slash = rest.find('/')) {
        path.sections.push_back(idOf(rest.substr(0, slash), text));
        rest.remove_prefix(slash + 1);
    }
    if (const std::size_t colon = rest.find(':'); colon != std::string_view::npos) {
        Type type{};
        const std::string_view name = rest.substr(colon + 1);
        if (!typeNamed(name, type)) {
            throw command::UsageError("'" + std::string(name) + "' is no type; use " +
                                      std::string(kValueTypes) + ", section or other");
        }
        path.type = type;
        rest = rest.substr(0, colon);
    }
    path.id = idOf(rest, text);
    return path;
}

CTagTree& sectionOf(CTagTree& root, const Path& path, std::string_view where) {
    CTagTree* section = &root;
    std::string walked;
    for (const DWORD id : path.sections) {
        if (!walked.empty()) walked += '/';
        walked += std::to_string(id);
        section = findSection(*section, id);
        if (!section) throw command::Failure(where, "there is no section " + walked);
    }
    return *section;
}

CTagTree* findEntry(const CTagTree& section, DWORD id, Type type) {
    for (int i = 0; i < section.GetChildCount(); ++i) {
        CTagTree& child = childOf(section, i);
        if (child.GetTagID() == id && typeOf(typeWordOf(child)) == type) return &child;
    }
    return nullptr;
}

CTagTree& entryOf(const CTagTree& section, const Path& path, std::string_view where) {
    CTagTree* found = nullptr;
    if (path.type) {
        found = findEntry(section, path.id, *path.type);
    } else {
        for (int i = 0; i < section.GetChildCount(); ++i) {
            CTagTree& child = childOf(section, i);
            if (child.GetTagID() != path.id) continue;
            if (found)
                throw command::Failure(where, "several entries are called " + path.text +
                                                  "; name one by its type, " + path.text + ":TYPE");
            found = &child;
        }
    }
    if (!found) throw command::Failure(where, "there is no entry " + path.text);
    return *found;
}

}  // namespace kor::tree
