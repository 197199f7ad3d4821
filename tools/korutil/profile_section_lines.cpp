#include "tools/korutil/profile_section_lines.h"

#include <cstdio>
#include <set>
#include <utility>

#include "platform/posix/kernel/profile_line.h"
#include "tools/korutil/file_argument.h"
#include "tools/korutil/input.h"
#include "tools/korutil/profile_scratch.h"
#include "tools/korutil/tree_file.h"

namespace kor::profile {
namespace {

using tree::Type;

// The library writes a file anew for each entry: small files keep that in step with the number of entries.
constexpr int kMostEntries = 32;

// Some entries of a section, as the root of a tree of their own under the section's whole name.
class Piece : public CRootTagTree {
  public:
    Piece(const CTagTree& section, const std::string& name, const KeyMap& map)
        : CRootTagTree(section.GetTagID(), section.GetVersion()), name_(name), map_(map) {}

    CString GetKeyStr(int parentTag, DWORD, int tag) override {
        if (parentTag == 0) return name_.c_str();
        const std::string* name = map_.nameOf(parentTag, tag);
        return name ? name->c_str() : "";
    }

  private:
    const std::string& name_;
    const KeyMap& map_;
};

tree::Content contentOf(const CTagTree& entry, Type type) {
    if (type == Type::kLong) return tree::longContent(entry.GetLong());
    if (type == Type::kDouble) return tree::doubleContent(entry.GetDouble());
    if (type == Type::kPoint) return tree::pointContent(entry.GetPoint());
    std::string bytes(entry.GetDataSize(), '\0');
    entry.CopyBuffer(bytes.data(), static_cast<int>(bytes.size()));
    return {tree::typeWordOf(entry), {}, std::move(bytes)};
}

class Writer {
  public:
    explicit Writer(const KeyMap& map)
        : map_(map), native_(folder_.path + "/piece.ini"), path_(command::libraryPath(native_, native_)) {}

    void section(const CTagTree& section, const std::string& name) {
        const std::size_t place = result_.size();
        result_.push_back({name, {}});
        std::set<std::pair<DWORD, Type>> known;
        int next = 0;
        do
            appendPiece(section, next, known, result_[place]);
        while (next < section.GetChildCount());
        for (int i = 0; i < section.GetChildCount(); ++i) {
            const CTagTree& child = tree::childOf(section, i);
            // The first of an id: further ones are not written.
            if (tree::isSection(child) && known.erase({child.GetTagID(), Type::kSection}) > 0)
                this->section(child, name + '.' + *map_.nameOf(idOf(section), idOf(child)));
        }
    }

    std::vector<SectionLines> result() { return std::move(result_); }

  private:
    static int idOf(const CTagTree& node) { return static_cast<int>(node.GetTagID()); }

    void appendPiece(const CTagTree& section, int& next, std::set<std::pair<DWORD, Type>>& known,
                     SectionLines& to) const {
        Piece piece(section, to.name, map_);
        for (; next < section.GetChildCount() && piece.GetChildCount() < kMostEntries; ++next) {
            const CTagTree& child = tree::childOf(section, next);
            const Type type = tree::typeOf(tree::typeWordOf(child));
            if (type == Type::kOther || !known.emplace(child.GetTagID(), type).second) continue;
            if (type == Type::kSection)
                piece.CreateSection(child.GetTagID(), 0);
            else
                tree::addEntry(piece, child.GetTagID(), contentOf(child, type));
        }
        std::remove(native_.c_str());
        piece.AttachToProfile(path_.c_str());
        piece.WriteTree();
        takeFirstSection(command::readInput(native_), to);
    }

    // The sections in the piece have sections of their own behind it.
    static void takeFirstSection(std::string_view text, SectionLines& to) {
        ProfileLineSpan line = profileLineAt(text, 0);
        // All pieces begin with the section's version.
        if (!to.lines.empty() && line.next < text.size()) line = profileLineAt(text, line.next);
        while (line.next < text.size()) {
            line = profileLineAt(text, line.next);
            if (text[line.begin] == '[') return;
            to.lines.append(text.substr(line.begin, line.end - line.begin)) += '\0';
        }
    }

    const KeyMap& map_;
    ScratchFolder folder_;
    std::string native_;
    std::string path_;
    std::vector<SectionLines> result_;
};

}  // namespace

std::vector<SectionLines> sectionLinesOf(const MappedTree& tree, const KeyMap& map) {
    Writer writer(map);
    writer.section(tree, map.rootName());
    return writer.result();
}

}  // namespace kor::profile
