#include <algorithm>

#include "tools/korutil/code_page.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/tree_json.h"

namespace kor::tree {
namespace {

constexpr std::size_t kPieceSize = 64 * 1024;  // of a block, a multiple of the size of a double

class Writer {
  public:
    Writer(StoredTree& tree, command::Output& output) : tree_(tree), output_(output) {}

    void section(const CTagTree& node, const Record& record, int level) {
        const bool named = typeOf(typeWordOf(node)) == Type::kSection;
        std::string text = start(node, named ? Type::kSection : Type::kOther);
        if (named) text += ",\"version\":" + std::to_string(node.GetVersion());
        output_.write(text + ",\"children\":[");
        const std::vector<Record> records = tree_.recordsBelow(node, record);
        for (std::size_t i = 0; i < records.size(); ++i) {
            output_.write(i == 0 ? "\n" : ",\n");
            output_.write(indentation(level + 1));
            child(childOf(node, static_cast<int>(i)), records[i], level + 1);
        }
        if (!records.empty()) output_.write('\n' + indentation(level));
        output_.write("]}");
    }

  private:
    // A tree may be a thousand levels deep, and every line of it would then begin with two thousand blanks.
    static std::string indentation(int level) {
        return std::string(2 * static_cast<std::size_t>(std::min(level, 32)), ' ');
    }

    static std::string start(const CTagTree& node, Type type) {
        std::string text =
            "{\"id\":" + std::to_string(node.GetTagID()) + ",\"type\":\"" + std::string(nameOf(type)) + '"';
        if (type == Type::kOther) text += ",\"word\":\"" + wordText(typeWordOf(node)) + '"';
        return text;
    }

    void child(const CTagTree& node, const Record& record, int level) {
        if (isSection(node)) return section(node, record, level);
        if (isImmediate(node)) return immediate(node, record.words);
        block(node, record);
    }

    void immediate(const CTagTree& node, const std::array<DWORD, 2>& words) {
        const Type type =
            isRegular(typeOf(typeWordOf(node)), words) ? typeOf(typeWordOf(node)) : Type::kOther;
        std::string text = start(node, type) + ",\"value\":";
        if (type == Type::kLong) {
            text += std::to_string(static_cast<LONG>(words[0]));
        } else if (type == Type::kDouble) {
            text += real(doubleOf(words));
        } else if (type == Type::kPoint) {
            text += pair(static_cast<LONG>(words[0]), static_cast<LONG>(words[1]));
        } else {
            text += pair(words[0], words[1]);
        }
        output_.write(text + '}');
    }

    void block(const CTagTree& node, const Record& record) {
        const Type type = typeOf(typeWordOf(node));
        if (type == Type::kString && string(node, record)) return;
        if (type == Type::kDoubles && record.size() % 8 == 0) return doubles(node, record);
        const bool isMemory = type == Type::kMemory;
        std::string text = start(node, isMemory ? type : Type::kOther);
        if (isMemory) text += ",\"version\":" + std::to_string(node.GetVersion());
        output_.write(text + ",\"value\":\"");
        forPieces(record, [&](std::string_view piece) { output_.write(hexText(piece)); });
        output_.write("\"}");
    }

    // Whether the block is a text that comes back from its form as one.
    bool string(const CTagTree& node, const Record& record) {
        if (record.size() > kLargestText) {
            throw command::Failure(
                tree_.file().shown,
                "the string with id " + std::to_string(node.GetTagID()) + " is too large for JSON");
        }
        const std::string data = tree_.bytesOf(record, 0, record.size());
        if (!isRegular(Type::kString, data)) return false;
        const std::string_view text(data.data(), data.empty() ? 0 : data.size() - 1);
        const auto units = code_page::decode(text);
        if (!code_page::isFaithful(text, units)) return false;
        output_.write(start(node, Type::kString) + ",\"value\":" + code_page::quoted(units) + '}');
        return true;
    }

    void doubles(const CTagTree& node, const Record& record) {
        output_.write(start(node, Type::kDoubles) + ",\"value\":[");
        const char* separator = "";
        forPieces(record, [&](std::string_view piece) {
            for (std::size_t i = 0; i < piece.size() / 8; ++i) {
                output_.write(separator);
                output_.write(real(elementOf(piece, i)));
                separator = ",";
            }
        });
        output_.write("]}");
    }

    template <class Use>
    void forPieces(const Record& record, Use use) {
        for (std::size_t first = 0; first < record.size(); first += kPieceSize)
            use(tree_.bytesOf(record, first, std::min(kPieceSize, record.size() - first)));
    }

    static std::string real(double value) {
        return isSpecial(value) ? '"' + doubleText(value) + '"' : doubleText(value);
    }

    template <class Number>
    static std::string pair(Number first, Number second) {
        return '[' + std::to_string(first) + ',' + std::to_string(second) + ']';
    }

    StoredTree& tree_;
    command::Output& output_;
};

}  // namespace

void writeJson(StoredTree& tree, command::Output& output) {
    Writer(tree, output).section(tree.root(), tree.rootRecord(), 0);
    output.write("\n");
}

}  // namespace kor::tree
