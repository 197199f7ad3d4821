#include "tests/tools/tree_image.h"

namespace kor::test {
namespace {

constexpr std::uint32_t kImmediate = 0x80000000;
constexpr std::uint32_t kSection = 0x40000000;

void appendWord(std::string& bytes, std::uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(word >> shift & 0xFF);
}

std::uint32_t blockSize(const Node& node) {
    std::size_t size = (node.data.size() + 3) / 4 * 4 + 16 * node.children.size();
    for (const Node& child : node.children)
        size += blockSize(child);
    return static_cast<std::uint32_t>(size);
}

void appendRecord(std::string& bytes, const Node& node, std::uint32_t position) {
    appendWord(bytes, node.id);
    appendWord(bytes, node.type);
    if (node.type & kImmediate) {
        appendWord(bytes, node.word0);
        appendWord(bytes, node.word1);
    } else {
        appendWord(bytes, static_cast<std::uint32_t>(node.data.size() + 16 * node.children.size()));
        appendWord(bytes, position);
    }
}

// A node's own block: its data, or its table and then the blocks of its children.
void appendBlock(std::string& bytes, const Node& node) {
    bytes += node.data;
    bytes.resize((bytes.size() + 3) / 4 * 4);
    auto position = static_cast<std::uint32_t>(bytes.size() + 16 * node.children.size());
    for (const Node& child : node.children) {
        appendRecord(bytes, child, position);
        position += blockSize(child);
    }
    for (const Node& child : node.children)
        appendBlock(bytes, child);
}

class Random {
  public:
    Random(std::mt19937& generator, const std::string& strings) : generator_(generator), strings_(strings) {}

    Node section(int depth) {
        Node node{.id = number(), .type = kSection | (number() & 0x07FFFFFF)};
        if (depth > 0 && below(8) == 0) node.type |= 0x20000000;
        const std::uint32_t count = below(8);
        for (std::uint32_t i = 0; i < count; ++i)
            node.children.push_back(depth < 5 && below(4) == 0 ? section(depth + 1) : leaf());
        return node;
    }

  private:
    std::uint32_t below(std::uint32_t bound) { return number() % bound; }
    std::uint32_t number() { return below_(generator_); }

    std::string bytes(std::size_t size) {
        std::string result;
        while (result.size() < size)
            result += static_cast<char>(below(256));
        return result;
    }

    std::string text() {
        std::string result;
        for (std::uint32_t i = below(12); i > 0; --i)
            result += strings_[below(static_cast<std::uint32_t>(strings_.size()))];
        if (!result.empty()) result += '\0';
        return result;
    }

    Node leaf() {
        const std::uint32_t id = number() >> below(32);
        switch (below(10)) {
            case 0:
                return {id, 0x80000014, number(), 0};
            case 1:
                return {id, 0x80000088, number(), number()};
            case 2:
                return {id, 0x80000088, below(2) * 5,
                        0x7FF00000 | below(2) << 31 | below(2) << 19};  // infinities, NaNs
            case 3:
                return {id, 0x80000108, number(), number()};
            case 4:
                return {.id = id, .type = 0x10000011, .data = text()};
            case 5:
                return {.id = id, .type = 0x10000011, .data = bytes(below(6))};  // seldom a proper text
            case 6:
                return {.id = id, .type = 0x10000088, .data = bytes(8 * below(5))};
            case 7:
                return {.id = id, .type = 0x20000000 | (number() & 0x07FFFFFF), .data = bytes(below(40))};
            case 8:
                return {id, kImmediate | number(), number(), number()};
            default: {
                const std::uint32_t types[] = {0, 0x10000014, 0x10000088, 0x18000088, 0x30000005, 0x00000007};
                return {.id = id, .type = types[below(6)], .data = bytes(below(20))};
            }
        }
    }

    std::mt19937& generator_;
    const std::string& strings_;
    std::uniform_int_distribution<std::uint32_t> below_;
};

}  // namespace

std::string imageOf(const Node& root) {
    std::string bytes;
    appendRecord(bytes, root, 16);
    appendBlock(bytes, root);
    return bytes;
}

Node randomTree(std::mt19937& generator, const std::string& strings) {
    return Random(generator, strings).section(0);
}

}  // namespace kor::test
