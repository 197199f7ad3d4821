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
constexpr int kNodesAhead = 32;  // memory is asked for early: the children, and the data of those that came
constexpr int kDataAhead = 16;

}  // namespace

TagTreeWriter::TagTreeWriter(CFile& file) : file_(file), buffer_(new (std::nothrow) BYTE[kBufferSize]) {
    if (!buffer_) AfxThrowMemoryException();
}

void TagTreeWriter::write(CTagTree& root) {
    putHeader(root);
    if (!isSectionTag(root.header_.type)) return flush();
    int next = putTable(root);
    CTagTree* section = &root;
    for (;;) {
        CTagTree* inner = putData(*section, next);
        if (inner) {
            next = putTable(*inner);
            section = inner;
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

// Returns from which child on the data is still to be put.
int TagTreeWriter::putTable(CTagTree& section) {
    const int count = section.count();
    if (count == 0) return 0;
    const ULONGLONG size = section.header_.word0 + section.children_->bytes;
    if (section.children_->open == 0 && size <= kBufferSize) {
        putLeaves(section, static_cast<DWORD>(size));
        return count;
    }
    DWORD position = section.header_.word1 + section.header_.word0;
    for (int first = 0; first < count; first += kTablePiece) {
        const int end = count - first < kTablePiece ? count : first + kTablePiece;
        BYTE* record = room(static_cast<std::size_t>(end - first) * kTagRecordSize);
        for (int index = first; index < end; ++index, record += kTagRecordSize) {
            auto* node = static_cast<CTagTree*>(section.at(index));
            section.expect(index + kExpectAhead);
            if (!isImmediateTag(node->header_.type)) {
                // CalcAllSize left a section's size where its position belongs.
                const bool isSection = isSectionTag(node->header_.type);
                const DWORD blocks = isSection ? node->header_.word1 : paddedTagSize(node->header_.word0);
                node->header_.word1 = position;
                position += blocks;
            }
            storeHeader(record, *node);
        }
    }
    return 0;
}

// The table and the data of a section without inner ones, so that each node is touched once.
void TagTreeWriter::putLeaves(CTagTree& section, DWORD size) {
    BYTE* record = room(size);
    BYTE* block = record + section.header_.word0;
    DWORD position = section.header_.word1 + section.header_.word0;
    const int count = section.count();
    for (int index = 0; index < kNodesAhead; ++index)
        section.expect(index);
    for (int index = 0; index < count; ++index, record += kTagRecordSize) {
        auto* node = static_cast<CTagTree*>(section.at(index));
        section.expect(index + kNodesAhead);
        if (index + kDataAhead < count)
            __builtin_prefetch(static_cast<const CTagTree*>(section.at(index + kDataAhead))->data_);
        if (isDataTag(node->header_.type)) {
            node->header_.word1 = position;
            const DWORD padded = paddedTagSize(node->header_.word0);
            if (padded > 0) {
                storeWord(block + padded - sizeof(DWORD), 0);
                std::memcpy(block, node->data_, node->header_.word0);
            }
            block += padded;
            position += padded;
        }
        storeHeader(record, *node);
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
    const std::size_t padding = paddedTagSize(node.header_.word0) - size;
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
