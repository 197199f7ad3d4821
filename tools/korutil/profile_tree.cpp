#include "tools/korutil/profile_tree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/profile_suffix.h"
#include "tools/korutil/tree_file.h"

namespace kor::profile {
namespace {

using tree::Type;

constexpr std::string_view kPointsStay = "a point is written, but not read back";

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

// The first entry of each id and kind, as FindTag finds it.
class Firsts {
  public:
    explicit Firsts(const CTagTree& section) {
        for (int i = 0; i < section.GetChildCount(); ++i) {
            const CTagTree& child = tree::childOf(section, i);
            entries_.try_emplace({child.GetTagID(), kindOf(child)}, &child);
        }
    }

    const CTagTree* like(const CTagTree& entry) const {
        const auto found = entries_.find({entry.GetTagID(), kindOf(entry)});
        return found == entries_.end() ? nullptr : found->second;
    }

  private:
    std::map<std::pair<DWORD, DWORD>, const CTagTree*> entries_;
};

class Comparison {
  public:
    Comparison(const KeyMap& map, const Loss& loss) : map_(map), loss_(loss) {}

    void sections(const NamedSection& written, const CTagTree& restored) {
        if (written.node.GetVersion() != restored.GetVersion()) {
            loss_(entryShown(written.name, "Version"),
                  "is read back as " + std::to_string(restored.GetVersion()));
        }
        const Firsts firsts(written.node);
        const Firsts twins(restored);
        for (int i = 0; i < written.node.GetChildCount(); ++i) {
            const CTagTree& child = tree::childOf(written.node, i);
            const CTagTree* twin = twins.like(child);
            const std::string reason = lossOf(child, firsts, twin);
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
    std::string lossOf(const CTagTree& child, const Firsts& firsts, const CTagTree* twin) {
        const Type type = tree::typeOf(tree::typeWordOf(child));
        if (type == Type::kPoint) return std::string(kPointsStay);
        if (type == Type::kOther)
            return "the type word " + tree::wordText(tree::typeWordOf(child)) + " has no form in settings";
        if (firsts.like(child) != &child) return std::string(kAnotherCounts);
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

}  // namespace kor::profile
