#include "persist/tag_tree_writer.h"

#include <cstring>
#include <new>

#include "korutil/framework/file.h"
#include "korutil/framework/memory_exception.h"
#include "persist/children.h"
#include "persist/tag_record.h"

namespace kor {
namespace {

constexpr std::size_t kBufferSize = 0x8000;
constexpr int kTablePiece = 1024;             // records that are put at once
constexpr std::size_t kLargestCopy = 0x2000;  // larger blocks go to the file without a copy

}  // namespace

TagTreeWriter::TagTreeWriter(CFile& file) : file_(file), buffer_(new (std::nothrow) BYTE[kBufferSize]) {
    if (!buffer_) AfxThrowMemoryException();
}

void TagTreeWriter::write(CTagTree& root) {
    putHeader(root);
    if (!isSectionTag(root.header_.type)) return flush();
    putTable(root);
    CTagTree* section = &root;
    int next = 0;
    for (;;) {
        CTagTree* inner = putData(*section, next);
        if (inner) {
            putTable(*inner);
            section = inner;
            next = 0;
        } else if (section == &root) {
            return flush();
        } else {
            next = section->place_ + 1;
            section = static_cast<CTagTree*>(section->parent_);
        }
    }
}

void TagTreeWriter::putHeader(const CTagTree& node) { storeHeader(room(kTagRecordSize), node); }

void TagTreeWriter::storeHeader(BYTE* record, const CTagTree& node) {
    storeWord(record, node.header_.tag);
    storeWord(record + 4, node.header_.type);
    storeWord(record + 8, node.header_.word0);
    storeWord(record + 12, node.header_.word1);
}

void TagTreeWriter::putTable(CTagTree& section) {
    DWORD position = section.header_.word1 + section.header_.word0;
    const int count = section.count();
    for (int first = 0; first < count; first += kTablePiece) {
        const int end = count - first < kTablePiece ? count : first + kTablePiece;
        BYTE* record = room(static_cast<std::size_t>(end - first) * kTagRecordSize);
        for (int index = first; index < end; ++index, record += kTagRecordSize) {
            auto* node = static_cast<CTagTree*>(section.at(index));
            section.expect(index + kExpectAhead);
            if (!isImmediateTag(node->header_.type)) {
                node->header_.word1 = position;
                position += node->blockSize_;
            }
            storeHeader(record, *node);
        }
    }
}

// The data of the children from there on, up to the next section, which is returned.
CTagTree* TagTreeWriter::putData(CTagTree& section, int next) {
    for (; next < section.count(); ++next) {
        auto* node = static_cast<CTagTree*>(section.at(next));
        if (isDataTag(node->header_.type)) {
            putBlock(*node);
        } else if (isSectionTag(node->header_.type)) {
            return node;
        }
    }
    return nullptr;
}

void TagTreeWriter::putBlock(const CTagTree& node) {
    const std::size_t size = node.header_.word0;
    const std::size_t padding = node.blockSize_ - size;
    if (size > kLargestCopy) {
        flush();
        file_.Write(node.data_, node.header_.word0);
    } else if (size > 0) {
        std::memcpy(room(size), node.data_, size);
    }
    if (padding > 0) std::memset(room(padding), 0, padding);
}

BYTE* TagTreeWriter::room(std::size_t size) {
    if (size > kBufferSize - used_) flush();
    BYTE* place = buffer_.get() + used_;
    used_ += size;
    return place;
}

void TagTreeWriter::flush() {
    if (used_ > 0) file_.Write(buffer_.get(), static_cast<UINT>(used_));
    used_ = 0;
}

}  // namespace kor
