#include "tools/korutil/profile_key_map.h"

#include <algorithm>
#include <limits>

#include "platform/win32.h"
#include "tools/korutil/arguments.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/profile_settings.h"
#include "tools/korutil/tree_value.h"

namespace kor::profile {
namespace {

constexpr int kMostId = std::numeric_limits<int>::max();

// A name in the code page.
std::string checkedName(const json::Document& document, const json::Value& value) {
    if (value.kind() != json::Kind::kString) {
        document.fail(value, "a name must be a string, not " + std::string(json::kindName(value.kind())));
    }
    const std::string name(value.text());
    std::string_view fault = faultOfSection(name);
    if (fault.empty()) fault = faultOfKey(name);
    if (fault.empty() && name.find('.') != std::string::npos) fault = "holds a dot";
    if (fault.empty() && name.find('\0') != std::string::npos) fault = "holds a zero";
    if (!fault.empty()) document.fail(value, "the name \"" + name + "\" " + std::string(fault));
    char32_t unmappable = 0;
    auto bytes = code_page::encode(code_page::unitsOf(name, {}), unmappable);
    if (!bytes) {
        document.fail(value, "code page " + std::to_string(GetACP()) + " cannot express " +
                                 code_page::nameOf(unmappable));
    }
    return *std::move(bytes);
}

const json::Value& member(const json::Document& document, const json::Value& node, std::string_view name) {
    const json::Value* value = node.find(name);
    if (!value) document.fail(node, "the node has no \"" + std::string(name) + '"');
    return *value;
}

void checkMembers(const json::Document& document, const json::Value& node, bool isRoot) {
    if (node.kind() != json::Kind::kObject) {
        document.fail(node, "a node must be an object, not " + std::string(json::kindName(node.kind())));
    }
    for (std::size_t i = 0; i < node.names().size(); ++i) {
        const std::string& name = node.names()[i];
        if (name == "name" || name == "keys" || (isRoot && name == "id")) continue;
        document.fail(node.items()[i], "a node of a key map has no \"" + name + '"');
    }
}

}  // namespace

KeyMap::KeyMap(const json::Document& document) {
    const json::Value& root = document.root();
    checkMembers(document, root, true);
    rootId_ = static_cast<int>(document.integer(member(document, root, "id"), 1, kMostId, "\"id\""));
    rootName_ = checkedName(document, member(document, root, "name"));
    if (const json::Value* keys = root.find("keys")) take(document, rootId_, *keys);
}

void KeyMap::take(const json::Document& document, int section, const json::Value& keys) {
    if (keys.kind() != json::Kind::kObject) {
        document.fail(keys, "\"keys\" must be an object, not " + std::string(json::kindName(keys.kind())));
    }
    for (std::size_t i = 0; i < keys.names().size(); ++i) {
        const std::string& text = keys.names()[i];
        const json::Value& entry = keys.items()[i];
        const auto number = text.starts_with('0')
                                ? std::nullopt
                                : command::wholeNumber(text, static_cast<std::uint64_t>(kMostId));
        if (!number)
            document.fail(entry, "\"" + text + "\" is no id; there are 1 to " + std::to_string(kMostId));
        const int id = static_cast<int>(*number);
        if (entry.kind() == json::Kind::kString) {
            add(document, section, id, entry);
            continue;
        }
        checkMembers(document, entry, false);
        add(document, section, id, member(document, entry, "name"));
        sections_[section].sections.insert(id);
        if (const json::Value* below = entry.find("keys")) take(document, id, *below);
    }
}

void KeyMap::add(const json::Document& document, int section, int id, const json::Value& value) {
    const std::string name = checkedName(document, value);
    Section& names = sections_[section];
    const auto& named = names.names.try_emplace(id, name).first->second;
    const int first = names.ids.try_emplace(folded(name), id).first->second;
    const std::string where = "in section " + std::to_string(section);
    if (folded(named) != folded(name)) {
        document.fail(value, "id " + std::to_string(id) + ' ' + where + " is called \"" +
                                 code_page::toUtf8(named) + "\" elsewhere");
    }
    if (first != id) {
        document.fail(value, "\"" + std::string(value.text()) + "\" is the name of id " +
                                 std::to_string(first) + ' ' + where + " already");
    }
}

const std::string* KeyMap::nameOf(int section, int id) const {
    const auto names = sections_.find(section);
    if (names == sections_.end()) return nullptr;
    const auto name = names->second.names.find(id);
    return name == names->second.names.end() ? nullptr : &name->second;
}

std::optional<int> KeyMap::idOf(int section, const std::string& name) const {
    const auto names = sections_.find(section);
    if (names == sections_.end()) return std::nullopt;
    const auto id = names->second.ids.find(folded(name));
    if (id == names->second.ids.end()) return std::nullopt;
    return id->second;
}

std::optional<KeyMap::Place> KeyMap::placeOf(const std::string& sectionName) const {
    std::string_view rest = sectionName;
    const auto next = [&rest] {
        const std::string name(rest.substr(0, rest.find('.')));
        rest.remove_prefix(std::min(rest.size(), name.size() + 1));
        return name;
    };
    if (folded(next()) != folded(rootName_)) return std::nullopt;
    Place place{rootId_, true};
    while (!rest.empty()) {
        const auto id = idOf(place.id, next());
        if (!id) return std::nullopt;
        place = {*id, sections_.at(place.id).sections.contains(*id)};
    }
    return place;
}

MappedTree::MappedTree(const KeyMap& map) : CRootTagTree(static_cast<DWORD>(map.rootId()), 0), map_(map) {}

CString MappedTree::GetKeyStr(int parentTag, DWORD type, int tag) {
    if (parentTag == 0 && type == tree::kSectionBit && tag == map_.rootId()) return map_.rootName().c_str();
    const std::string* name = map_.nameOf(parentTag, tag);
    return name ? name->c_str() : "";
}

int MappedTree::GetKeyId(int parentTag, DWORD, const CString& name) {
    return map_.idOf(parentTag, static_cast<const char*>(name)).value_or(-1);
}

}  // namespace kor::profile
