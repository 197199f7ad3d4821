#include "tools/korutil/immediate_words.h"

#include "korutil/framework/mem_file.h"

namespace kor::tree {
namespace {

constexpr std::size_t kRecordSize = 16;

bool hasOtherImmediates(const CTagTree& section) {
    for (int i = 0; i < section.GetChildCount(); ++i) {
        const CTagTree& child = childOf(section, i);
        if (isImmediate(child) && typeOf(typeWordOf(child)) == Type::kOther) return true;
        if (hasOtherImmediates(child)) return true;
    }
    return false;
}

}  // namespace

ImmediateWords::ImmediateWords(StoredTree& tree) {
    if (!hasOtherImmediates(tree.root())) return;
    StoredTree copy(tree.file(), tree.offset(), Blocks::kInMemory);
    CMemFile memory;
    copy.root().AttachTo(memory, 0);
    copy.root().WriteTree();
    copy.root().Detach();
    image_.resize(static_cast<std::size_t>(memory.GetLength()));
    memory.SeekToBegin();
    memory.Read(image_.data(), static_cast<UINT>(image_.size()));
}

std::size_t ImmediateWords::rootTable() { return kRecordSize; }

std::size_t ImmediateWords::tableOf(std::size_t parentTable, int index) const {
    return image_.empty() ? 0 : wordAt(parentTable + static_cast<std::size_t>(index) * kRecordSize + 12);
}

std::array<DWORD, 2> ImmediateWords::of(const CTagTree& node, std::size_t parentTable, int index) const {
    switch (typeOf(typeWordOf(node))) {
        case Type::kLong:
            return longContent(node.GetLong()).words;
        case Type::kDouble:
            return doubleContent(node.GetDouble()).words;
        case Type::kPoint:
            return pointContent(node.GetPoint()).words;
        default:
            break;
    }
    const std::size_t record = parentTable + static_cast<std::size_t>(index) * kRecordSize;
    return {wordAt(record + 8), wordAt(record + 12)};
}

DWORD ImmediateWords::wordAt(std::size_t position) const {
    DWORD word = 0;
    for (std::size_t i = 4; i-- > 0;)
        word = word << 8 | static_cast<unsigned char>(image_.at(position + i));
    return word;
}

}  // namespace kor::tree
