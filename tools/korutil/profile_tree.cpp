#include "tools/korutil/profile_tree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/tree_file.h"

namespace kor::profile {
namespace {

using tree::Type;

constexpr std::string_view kAnotherCounts =
    "another entry of this id and kind stands before it; only the first is read";
constexpr std::string_view kPointsStay = "a point is written, but not read back";

// The suffix of an entry's key, and the type that it stands for.
struct Suffix {
    std::string_view text;
    Type type;
};

constexpr Suffix kSuffixes[] = {
    {"Int", Type::kLong},     {"Flt", Type::kDouble}, {"Pt", Type::kPoint},    {"Str", Type::kString},
    {"FltA", Type::kDoubles}, {"Mem", Type::kMemory}, {"Sec", Type::kSection}, {"MVer", Type::kMemory},
};

std::string_view suffixOf(Type type) {
    const auto found = std::find_if(std::begin(kSuffixes), std::end(kSuffixes),
                                    [type](const Suffix& suffix) { return suffix.type == type; });
    return found == std::end(kSuffixes) ? "?" : found->text;
}

DWORD kindOf(const CTagTree& node) { return node.GetType() & ~tree::kVersionMask; }
int idOf(const CTagTree& node) { return static_cast<int>(node.GetTagID()); }

// A section with its name in the settings file.
struct NamedSection {
    const CTagTree& node;
    std::string name;
};

std::string nameIn(const NamedSection& section, const CTagTree& child, const KeyMap& map) {
    const std::string* name = map.nameOf(idOf(section.node), idOf(child));
    return name ? *name : std::string();
}

NamedSection below(const NamedSection& section, const CTagTree& child, const KeyMap& map) {
    return {child, section.name + '.' + nameIn(section, child, map)};
}

std::string shownEntry(const NamedSection& section, const CTagTree& child, const KeyMap& map) {
    const Type type = tree::typeOf(tree::typeWordOf(child));
    return entryShown(section.name, nameIn(section, child, map) + '.' + std::string(suffixOf(type)));
}

std::string bytesOf(const CTagTree& node) {
    std::string bytes(node.GetDataSize(), '\0');
    node.CopyBuffer(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

class Comparison {
  public:
    Comparison(const KeyMap& map, const Loss& loss) : map_(map), loss_(loss) {}

    void sections(const NamedSection& written, const CTagTree& restored) {
        if (written.node.GetVersion() != restored.GetVersion()) {
            loss_(entryShown(written.name, "Version"),
                  "is read back as " + std::to_string(restored.GetVersion()));
        }
        for (int i = 0; i < written.node.GetChildCount(); ++i) {
            const CTagTree& child = tree::childOf(written.node, i);
            const CTagTree* twin = restored.FindTag(child.GetTagID(), kindOf(child));
            const std::string reason = lossOf(child, written.node, twin);
            if (!reason.empty()) loss_(shownEntry(written, child, map_), reason);
            if (reason.empty() && tree::isSection(child)) sections(below(written, child, map_), *twin);
        }
    }

    void finish(const std::string& section) const {
        if (rounded_ > 0) {
            loss_('[' + code_page::toUtf8(section) + ']',
                  "numbers that lose digits beyond the 15 that are kept: " + std::to_string(rounded_));
        }
    }

  private:
    std::string lossOf(const CTagTree& child, const CTagTree& section, const CTagTree* twin) {
        const Type type = tree::typeOf(tree::typeWordOf(child));
        if (type == Type::kPoint) return std::string(kPointsStay);
        if (type == Type::kOther)
            return "the type word " + tree::wordText(tree::typeWordOf(child)) + " has no form in settings";
        if (section.FindTag(child.GetTagID(), kindOf(child)) != &child) return std::string(kAnotherCounts);
        if (!twin || tree::typeOf(tree::typeWordOf(*twin)) != type) return "it is not read back";
        switch (type) {
            case Type::kLong:
                return child.GetLong() == twin->GetLong()
                           ? ""
                           : "is read back as " + std::to_string(twin->GetLong());
            case Type::kDouble:
                return numbers({child.GetDouble()}, {twin->GetDouble()});
            case Type::kDoubles:
                return numbers(valuesOf(child), valuesOf(*twin));
            case Type::kString:
                return text(static_cast<const char*>(child.GetString()),
                            static_cast<const char*>(twin->GetString()));
            case Type::kMemory:
                if (child.GetVersion() != twin->GetVersion())
                    return "its version is read back as " + std::to_string(twin->GetVersion());
                return bytesOf(child) == bytesOf(*twin) ? "" : "its bytes are not read back";
            default:
                return "";
        }
    }

    static std::string text(const std::string& written, const std::string& restored) {
        if (written == restored) return "";
        if (written.starts_with(restored)) {
            return "only the first " + std::to_string(restored.size()) + " of " +
                   std::to_string(written.size()) + " characters are kept";
        }
        return "is read back as '" + code_page::toUtf8(restored) + '\'';
    }

    static std::vector<double> valuesOf(const CTagTree& node) {
        std::vector<double> values(node.GetDataSize() / sizeof(double));
        node.GetDblArray(values.data(), static_cast<int>(values.size()));
        return values;
    }

    std::string numbers(const std::vector<double>& written, const std::vector<double>& restored) {
        std::size_t same = 0;
        std::size_t rounded = 0;
        for (; same < std::min(written.size(), restored.size()); ++same) {
            if (isSame(written[same], restored[same])) continue;
            if (!isRounded(written[same], restored[same])) break;
            ++rounded;
        }
        rounded_ += rounded;
        if (same == written.size() && same == restored.size()) return "";
        if (written.size() == 1)
            return restored.empty() ? "it is not read back"
                                    : "is read back as " + tree::doubleText(restored[0]);
        return "only the first " + std::to_string(same) + " of " + std::to_string(written.size()) +
               " numbers are kept";
    }

    static bool isSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

    static bool isRounded(double written, double restored) {
        return std::isfinite(written) && std::isfinite(restored) &&
               std::abs(written - restored) <= 1e-14 * std::abs(written);
    }

    const KeyMap& map_;
    const Loss& loss_;
    std::uint64_t rounded_ = 0;
};

class UnreadKeys {
  public:
    UnreadKeys(const Settings& settings, const KeyMap& map, const Loss& loss)
        : settings_(settings), map_(map), loss_(loss) {}

    void section(const NamedSection& section) const {
        for (const std::string& key : settings_.keys(section.name)) {
            const std::string reason = reasonFor(section, key);
            if (!reason.empty()) loss_(entryShown(section.name, key), reason);
        }
        for (int i = 0; i < section.node.GetChildCount(); ++i) {
            const CTagTree& child = tree::childOf(section.node, i);
            if (tree::isSection(child)) this->section(below(section, child, map_));
        }
    }

  private:
    std::string reasonFor(const NamedSection& section, const std::string& key) const {
        if (folded(key) == "version") return "";
        const std::size_t dot = key.rfind('.');
        const std::string suffix = dot == std::string::npos ? "" : key.substr(dot + 1);
        const auto known = std::find_if(std::begin(kSuffixes), std::end(kSuffixes),
                                        [&](const Suffix& each) { return each.text == suffix; });
        if (known == std::end(kSuffixes)) return "it is no entry of a tree";
        if (known->type == Type::kPoint) return "a point is not read back";
        std::string name = key.substr(0, dot);
        if (known->type == Type::kSection) {
            const auto value = settings_.find(section.name, key);
            name = value ? value->value : "";
        }
        const auto id = map_.idOf(idOf(section.node), name);
        if (!id) return '\'' + code_page::toUtf8(name) + "' is not in the key map";
        return reasonFor(section.node, *id, *known);
    }

    static std::string reasonFor(const CTagTree& section, int id, const Suffix& suffix) {
        constexpr DWORD kKinds[] = {tree::kImmediateBit, tree::kSectionBit, tree::kMemoryBit, 0x10000000};
        for (const DWORD kind : kKinds) {
            const CTagTree* child = section.FindTag(static_cast<DWORD>(id), kind);
            if (child && tree::typeOf(tree::typeWordOf(*child)) == suffix.type) return "";
        }
        if (suffix.text == "MVer") return "there is no block of bytes to this version";
        return "it was not read: it is no value of its type, another entry of its id came first, or it lies "
               "behind the 16384 bytes that are read of a section";
    }

    const Settings& settings_;
    const KeyMap& map_;
    const Loss& loss_;
};

void checkSection(const NamedSection& section, const KeyMap& map, std::string_view where) {
    for (int i = 0; i < section.node.GetChildCount(); ++i) {
        const CTagTree& child = tree::childOf(section.node, i);
        const std::string entry = "entry " + std::to_string(child.GetTagID()) + " of section " +
                                  std::to_string(section.node.GetTagID());
        if (idOf(child) <= 0 || nameIn(section, child, map).empty())
            throw command::Failure(where, "the key map has no name for " + entry);
        if (tree::typeOf(tree::typeWordOf(child)) == Type::kString &&
            bytesOf(child).find_first_of("\r\n") != std::string::npos)
            throw command::Failure(where, entry + " is a text with a line break, which settings cannot hold");
        if (tree::isSection(child)) checkSection(below(section, child, map), map, where);
    }
}

}  // namespace

void checkWritable(const MappedTree& tree, const KeyMap& map, std::string_view where) {
    if (idOf(tree) != map.rootId()) {
        throw command::Failure(where, "the tree has the id " + std::to_string(tree.GetTagID()) +
                                          ", but the key map is for " + std::to_string(map.rootId()));
    }
    checkSection({tree, map.rootName()}, map, where);
}

void reportLosses(const MappedTree& written, const MappedTree& restored, const KeyMap& map,
                  const Loss& loss) {
    Comparison comparison(map, loss);
    comparison.sections({written, map.rootName()}, restored);
    comparison.finish(map.rootName());
}

void reportUnread(const Settings& settings, const MappedTree& restored, const KeyMap& map, const Loss& loss) {
    UnreadKeys(settings, map, loss).section({restored, map.rootName()});
}

}  // namespace kor::profile
