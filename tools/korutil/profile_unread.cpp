// What of a settings file does not come back as a tree.
#include <charconv>
#include <set>
#include <unordered_set>
#include <utility>

#include "platform/posix/kernel/profile_line.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/input.h"
#include "tools/korutil/long_text.h"
#include "tools/korutil/profile_content.h"
#include "tools/korutil/profile_number.h"
#include "tools/korutil/profile_suffix.h"
#include "tools/korutil/profile_tree.h"
#include "tools/korutil/tree_file.h"

namespace kor::profile {
namespace {

using tree::Type;

constexpr DWORD kReadRoom = 16384;  // for a section, in the library's reader
constexpr int kDeepestLevel = 1000;

DWORD kindOf(Type type) {
    switch (type) {
        case Type::kSection:
            return tree::kSectionBit;
        case Type::kMemory:
            return tree::kMemoryBit;
        case Type::kString:
        case Type::kDoubles:
            return 0x10000000;
        default:
            return tree::kImmediateBit;
    }
}

std::string quoted(std::string_view text) { return '\'' + command::shownStart(text) + '\''; }

// The library reads bytes up to an odd digit.
std::string_view wholeBytes(std::string_view digits) { return digits.substr(0, digits.size() / 2 * 2); }

std::string readAs(std::string_view value, const std::string& reading) {
    return quoted(value) + " is read as " + reading;
}

std::string_view withoutBlanks(std::string_view text) { return withoutProfileBlanks(text); }

// A version has fewer bits than a number.
std::string versionLoss(std::string_view value, DWORD read) {
    DWORD wanted = 0;
    const std::string_view digits = withoutBlanks(value);
    const auto [rest, error] = std::from_chars(digits.data(), digits.data() + digits.size(), wanted);
    const bool isNumber = error == std::errc() && rest == digits.data() + digits.size();
    return isNumber && wanted == read ? "" : readAs(value, std::to_string(read));
}

std::string valueLoss(Type type, std::string_view value, const CTagTree& entry) {
    const std::string_view text = withoutBlanks(value);
    switch (type) {
        case Type::kLong:
            return isWhole32(text) ? "" : readAs(value, std::to_string(entry.GetLong()));
        case Type::kDouble:
            return isNumber(text) ? "" : readAs(value, tree::doubleText(entry.GetDouble()));
        case Type::kDoubles: {
            const std::size_t count = entry.GetDataSize() / sizeof(double);
            const bool isWhole = text.empty() || (areNumbers(text) && count > 0);
            return isWhole
                       ? ""
                       : quoted(value) + ": only the first " + std::to_string(count) + " numbers are read";
        }
        case Type::kMemory:
            return value.size() % 2 == 0
                       ? ""
                       : quoted(value) + ": the last digit is one of no pair, and is not read";
        default:
            return "";
    }
}

class Unread {
  public:
    Unread(const Settings& settings, const KeyMap& map, const Loss& loss)
        : settings_(settings), map_(map), loss_(loss) {}

    void section(const CTagTree& node, const std::string& name) {
        known_.insert(folded(name));
        const std::string text = settings_.sectionText(name);
        if (node.GetLevel() >= kDeepestLevel) {
            if (!text.empty())
                loss_(shown(name), "it lies more than 1,000 levels below the first; its keys are not read");
            return;
        }
        const std::size_t read = settings_.sectionText(name, kReadRoom).size();
        std::set<std::pair<int, DWORD>> taken;
        std::set<std::pair<int, DWORD>> versions;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find('\0', at), text.size());
            const std::string_view line = std::string_view(text).substr(at, end - at);
            const std::string reason =
                at >= read   ? "it lies behind the 16384 bytes that are read of a section"
                : end > read ? "it is cut at the 16384 bytes that are read of a section"
                             : lineLoss(node, line, taken, versions);
            if (!reason.empty())
                loss_(entryShown(name, line.substr(0, std::min(line.find('='), kMostKey))), reason);
            at = end + 1;
        }
        for (int i = 0; i < node.GetChildCount(); ++i) {
            const CTagTree& child = tree::childOf(node, i);
            if (!tree::isSection(child)) continue;
            const std::string* own = map_.nameOf(idOf(node), idOf(child));
            if (own) section(child, name + '.' + *own);
        }
    }

    // Sections of the tree's names that no entry leads to, and second ones of a name.
    void otherSections() const {
        std::unordered_set<std::string> seen;
        const std::string below = folded(map_.rootName()) + '.';
        for (const std::string& name : settings_.sectionLines()) {
            const std::string key = folded(name);
            const bool isKnown = known_.contains(key);
            if (!isKnown && !key.starts_with(below)) continue;
            if (!seen.insert(key).second)
                loss_(shown(name), "it stands there several times; only the first is read");
            else if (!isKnown)
                loss_(shown(name), "it is not read: no entry with .Sec leads to it");
        }
    }

    // The characters of a Unicode file that the library reads as others.
    void characters(const Content& content) const {
        if (!content.isUnicode()) return;
        bool isOurs = false;
        std::string section;
        const std::string_view text = content.text();
        for (std::size_t at = 0; at < text.size();) {
            const ProfileLineSpan span = profileLineAt(text, at);
            const ProfileLine line = readProfileLine(text.substr(span.begin, span.end - span.begin));
            at = span.next;
            if (line.kind == ProfileLineKind::section) {
                section = content.inPage(line.name).value_or("");
                isOurs = known_.contains(folded(section));
            } else if (line.kind == ProfileLineKind::key && isOurs) {
                std::string fault = content.faultIn(line.name);
                if (fault.empty()) fault = content.faultIn(line.value);
                if (!fault.empty()) loss_(shown(section) + ' ' + content.shown(line.name), fault);
            }
        }
    }

  private:
    static constexpr std::size_t kMostKey = 260;

    static int idOf(const CTagTree& node) { return static_cast<int>(node.GetTagID()); }
    static std::string shown(const std::string& section) { return '[' + code_page::toUtf8(section) + ']'; }

    std::string lineLoss(const CTagTree& node, std::string_view line, std::set<std::pair<int, DWORD>>& taken,
                         std::set<std::pair<int, DWORD>>& versions) const {
        const std::size_t sign = line.find('=');
        if (sign == std::string_view::npos) return "there is no '='";
        const std::string_view key = line.substr(0, sign);
        const std::string_view value = line.substr(sign + 1);
        if (folded(std::string(key)) == "version") {
            // Each line counts, so that the last one does.
            return versionLoss(value, node.GetVersion());
        }
        const SplitKey split(key);
        if (!split.suffix || split.name.empty()) return "it is no entry of a tree";
        const Type type = split.suffix->type;
        if (type == Type::kPoint) return "a point is not read back";
        const std::string name(type == Type::kSection ? value : split.name);
        const auto id = map_.idOf(idOf(node), name);
        if (!id) return quoted(name) + " is not in the key map";
        const std::pair place{*id, kindOf(type)};
        const CTagTree* entry = node.FindTag(static_cast<DWORD>(*id), place.second);
        if (split.suffix->text == kVersionSuffix) {
            if (!entry) return "there is no block of bytes to this version";
            return versions.insert(place).second ? versionLoss(value, entry->GetVersion())
                                                 : std::string(kAnotherCounts);
        }
        if (type == Type::kMemory && !tree::isHex(wholeBytes(value)))
            return quoted(value) + " is no row of hexadecimal digit pairs";
        if (!entry) return "it was not read";
        if (tree::typeOf(tree::typeWordOf(*entry)) == type && taken.insert(place).second)
            return valueLoss(type, value, *entry);
        return std::string(kAnotherCounts);
    }

    const Settings& settings_;
    const KeyMap& map_;
    const Loss& loss_;
    std::unordered_set<std::string> known_;  // sections that the tree has, folded
};

}  // namespace

void reportUnread(const Settings& settings, const MappedTree& restored, const KeyMap& map, const Loss& loss) {
    Unread unread(settings, map, loss);
    unread.section(restored, map.rootName());
    unread.otherSections();
    unread.characters(Content(command::readInput(settings.native())));
}

}  // namespace kor::profile
