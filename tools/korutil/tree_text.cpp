#include "tools/korutil/tree_text.h"

#include <algorithm>
#include <limits>

#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"

namespace kor::tree {
namespace {

constexpr std::size_t kDoublesShown = 8;
constexpr std::size_t kBytesShown = 24;
constexpr std::size_t kIndentation = 2;
constexpr std::size_t kMostIndentation = 40;

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

std::size_t indentationOf(std::size_t level) { return std::min(kIndentation * level, kMostIndentation); }

struct Extent {
    std::size_t idWidth = 2;
    std::size_t versionWidth = 7;
    std::size_t bytesWidth = 5;
    std::uint64_t entries = 0;
    std::uint64_t sections = 1;
};

void measure(const CTagTree& node, std::size_t level, Extent& extent) {
    const auto widen = [](std::size_t& width, DWORD number) {
        width = std::max(width, std::to_string(number).size());
    };
    extent.idWidth = std::max(extent.idWidth, indentationOf(level) + std::to_string(node.GetTagID()).size());
    widen(extent.bytesWidth, node.GetDataSize());
    if (typeOf(typeWordOf(node)) != Type::kOther) widen(extent.versionWidth, node.GetVersion());
    for (int i = 0; i < node.GetChildCount(); ++i) {
        ++extent.entries;
        extent.sections += isSection(childOf(node, i));
        measure(childOf(node, i), level + 1, extent);
    }
}

std::string left(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string right(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

class TextWriter {
  public:
    TextWriter(StoredTree& tree, bool all, command::Output& output)
        : tree_(tree), all_(all), output_(output) {
        measure(tree.root(), 0, extent_);
    }

    void head(const StoredTree& tree) {
        std::string line = command::oneLine(tree.file().shown) + ": parameter tree of " +
                           counted(extent_.entries, "entry", "entries") + " in " +
                           counted(extent_.sections, "section", "sections") + ", " +
                           counted(tree.size(), "byte", "bytes");
        if (tree.offset() > 0) line += " at offset " + std::to_string(tree.offset());
        const std::uint64_t end = tree.offset() + tree.size();
        if (end < tree.fileLength())
            line += "; " + counted(tree.fileLength() - end, "more byte follows", "more bytes follow");
        output_.write(line + "\n\n");
        row("id", "type", "version", "bytes", "value");
    }

    void section(const CTagTree& node, const Record& record, std::size_t level) {
        const Type type = typeOf(typeWordOf(node));
        const int count = node.GetChildCount();
        const std::string size = counted(static_cast<std::uint64_t>(count), "entry", "entries");
        row(idOf(node, level), nameOf(type), versionOf(node), "", withWord(node, size));
        const std::vector<Record> records = tree_.recordsBelow(node, record);
        for (int i = 0; i < count; ++i) {
            const CTagTree& child = childOf(node, i);
            const Record& childRecord = records[static_cast<std::size_t>(i)];
            if (isSection(child)) {
                section(child, childRecord, level + 1);
            } else {
                const bool isBlock = !isImmediate(child);
                const std::string value =
                    isBlock ? blockValue(child, childRecord) : immediateValue(child, childRecord.words);
                row(idOf(child, level + 1), nameOf(typeOf(typeWordOf(child))), versionOf(child),
                    isBlock ? std::to_string(child.GetDataSize()) : "", withWord(child, value));
            }
        }
    }

  private:
    void row(const std::string& id, std::string_view type, const std::string& version,
             const std::string& bytes, const std::string& value) {
        std::string line = left(id, extent_.idWidth) + "  " + left(std::string(type), 7) + "  " +
                           right(version, extent_.versionWidth) + "  " + right(bytes, extent_.bytesWidth) +
                           "  " + value;
        line.erase(line.find_last_not_of(' ') + 1);
        output_.write(line + '\n');
    }

    static std::string idOf(const CTagTree& node, std::size_t level) {
        return std::string(indentationOf(level), ' ') + std::to_string(node.GetTagID());
    }

    static std::string versionOf(const CTagTree& node) {
        const Type type = typeOf(typeWordOf(node));
        return type == Type::kSection || type == Type::kMemory ? std::to_string(node.GetVersion()) : "";
    }

    static std::string withWord(const CTagTree& node, const std::string& value) {
        const DWORD word = typeWordOf(node);
        return typeOf(word) == Type::kOther ? "type word " + wordText(word) + ": " + value : value;
    }

    static std::string immediateValue(const CTagTree& node, const std::array<DWORD, 2>& words) {
        const Type type = typeOf(typeWordOf(node));
        const std::string bits = wordText(words[0]) + ' ' + wordText(words[1]);
        if (!isRegular(type, words)) return "no proper long: " + bits;
        switch (type) {
            case Type::kLong:
                return std::to_string(static_cast<LONG>(words[0]));
            case Type::kDouble:
                return doubleText(doubleOf(words));
            case Type::kPoint:
                return '(' + std::to_string(static_cast<LONG>(words[0])) + ", " +
                       std::to_string(static_cast<LONG>(words[1])) + ')';
            default:
                return bits;
        }
    }

    std::string blockValue(const CTagTree& node, const Record& record) const {
        const Type type = typeOf(typeWordOf(node));
        if (type == Type::kString && record.size() <= kLargestText) {
            const std::string data = tree_.bytesOf(record, 0, record.size());
            if (isRegular(type, data)) {
                return code_page::quoted(
                    code_page::decode({data.data(), data.empty() ? 0 : data.size() - 1}));
            }
            return "no proper text: " + cut(node, record, kBytesShown, bytes);
        }
        if (type != Type::kDoubles) return cut(node, record, kBytesShown, bytes);
        if (record.size() % 8 != 0) return "no whole doubles: " + cut(node, record, kBytesShown, bytes);
        return cut(node, record, 8 * kDoublesShown, doubles);
    }

    std::string cut(const CTagTree& node, const Record& record, std::size_t most,
                    std::string (*form)(std::string_view)) const {
        const std::size_t size = record.size();
        if (all_ && size > kLargestText) {
            throw command::Failure(tree_.file().shown, "the block with id " +
                                                           std::to_string(node.GetTagID()) +
                                                           " is too large for --all; use --json");
        }
        const std::size_t shown = all_ ? size : std::min(size, most);
        std::string text = form(tree_.bytesOf(record, 0, shown));
        if (shown < size) text += " ...";
        return text;
    }

    static std::string doubles(std::string_view data) {
        std::string text;
        for (std::size_t i = 0; i < data.size() / 8; ++i) {
            if (i > 0) text += ", ";
            text += doubleText(elementOf(data, i));
        }
        return text;
    }

    static std::string bytes(std::string_view data) {
        std::string text;
        for (std::size_t i = 0; i < data.size(); i += 4) {
            if (i > 0) text += ' ';
            text += hexText(data.substr(i, 4));
        }
        return text;
    }

    StoredTree& tree_;
    bool all_;
    command::Output& output_;
    Extent extent_;
};

}  // namespace

void writeText(StoredTree& tree, bool all, command::Output& output) {
    TextWriter writer(tree, all, output);
    writer.head(tree);
    writer.section(tree.root(), tree.rootRecord(), 0);
}

}  // namespace kor::tree
