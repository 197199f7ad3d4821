#include <algorithm>
#include <array>

#include "tools/korutil/code_page.h"
#include "tools/korutil/immediate_words.h"
#include "tools/korutil/tree_json.h"

namespace kor::tree {
namespace {

class Writer {
  public:
    Writer(StoredTree& tree, command::Output& output) : words_(tree), output_(output) {}

    void section(const CTagTree& node, std::size_t table, int level) {
        const bool named = typeOf(typeWordOf(node)) == Type::kSection;
        std::string text = start(node, named ? Type::kSection : Type::kOther);
        if (named) text += ",\"version\":" + std::to_string(node.GetVersion());
        output_.write(text + ",\"children\":[");
        const int count = node.GetChildCount();
        for (int i = 0; i < count; ++i) {
            output_.write(i == 0 ? "\n" : ",\n");
            output_.write(indentation(level + 1));
            child(childOf(node, i), table, i, level + 1);
        }
        if (count > 0) output_.write('\n' + indentation(level));
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

    void child(const CTagTree& node, std::size_t table, int index, int level) {
        if (isSection(node)) return section(node, words_.tableOf(table, index), level);
        if (isImmediate(node)) return immediate(node, words_.of(node, table, index));
        block(node, blockOf(node));
    }

    void immediate(const CTagTree& node, const std::array<DWORD, 2>& words) {
        const Type type = typeOf(typeWordOf(node));
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

    void block(const CTagTree& node, const std::string& data) {
        const Type type = typeOf(typeWordOf(node));
        if (type == Type::kString && isRegular(type, data)) {
            const std::string_view text(data.data(), data.empty() ? 0 : data.size() - 1);
            const auto units = code_page::decode(text);
            if (code_page::isFaithful(text, units)) {
                return output_.write(start(node, type) + ",\"value\":" + code_page::quoted(units) + '}');
            }
        }
        if (type == Type::kDoubles && isRegular(type, data)) return doubles(node, data);
        const bool isMemory = type == Type::kMemory;
        std::string text = start(node, isMemory ? type : Type::kOther);
        if (isMemory) text += ",\"version\":" + std::to_string(node.GetVersion());
        output_.write(text + ",\"value\":\"" + hexText(data) + "\"}");
    }

    void doubles(const CTagTree& node, std::string_view data) {
        output_.write(start(node, Type::kDoubles) + ",\"value\":[");
        for (std::size_t i = 0; i < data.size() / 8; ++i) {
            if (i > 0) output_.write(",");
            output_.write(real(elementOf(data, i)));
        }
        output_.write("]}");
    }

    static std::string real(double value) {
        return isSpecial(value) ? '"' + doubleText(value) + '"' : doubleText(value);
    }

    template <class Number>
    static std::string pair(Number first, Number second) {
        return '[' + std::to_string(first) + ',' + std::to_string(second) + ']';
    }

    ImmediateWords words_;
    command::Output& output_;
};

}  // namespace

void writeJson(StoredTree& tree, command::Output& output) {
    Writer(tree, output).section(tree.root(), ImmediateWords::rootTable(), 0);
    output.write("\n");
}

}  // namespace kor::tree
