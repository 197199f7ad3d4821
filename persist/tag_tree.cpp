// A node of a tag tree: its life, the Save functions, sizes before writing.

#include "korutil/tag_tree.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <typeinfo>

#include "korutil/framework/memory_exception.h"
#include "persist/children.h"
#include "persist/tag_record.h"
#include "persist/tag_storage.h"
#include "persist/tag_weight.h"

using namespace kor;

namespace {

constexpr int kFirstRow = 4;  // nodes that are saved one by one lie in rows from here
constexpr int kLastRow = 32;  // up to here
constexpr int kLookBack = 4;  // children that may have a piece of data with room

}  // namespace

IMPLEMENT_DYNAMIC(CTagTree, CKorSimpleTree)

CTagTree::CTagTree() = default;

CTagTree::~CTagTree() { dropData(); }

void* CTagTree::operator new(std::size_t size) {
    void* node = TagRow::makeNode(size);
    if (!node) AfxThrowMemoryException();
    return node;
}

void* CTagTree::operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return TagRow::makeNode(size);
}

void* CTagTree::operator new(std::size_t, void* place) noexcept { return place; }

void CTagTree::operator delete(void* node) noexcept { TagRow::freeNode(node); }

void CTagTree::operator delete(void* node, const std::nothrow_t&) noexcept { TagRow::freeNode(node); }

void CTagTree::operator delete(void*, void*) noexcept {}

CKorSimpleTree* CTagTree::AddNewKnot(CKorSimpleTree* node, CKorSimpleTree* before) {
    if (node) return CKorSimpleTree::AddNewKnot(node, before);
    reserve(count() + 1);
    std::unique_ptr<CTagTree> child(newChild());
    CKorSimpleTree::AddNewKnot(child.get(), before);
    return child.release();
}

CTagTree* CTagTree::SaveLong(DWORD tag, LONG value) {
    return addNode({tag, kTagLong, static_cast<DWORD>(value), 0});
}

CTagTree* CTagTree::SaveDouble(DWORD tag, double value) {
    const auto bits = std::bit_cast<ULONGLONG>(value);
    return addNode({tag, kTagDouble, static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)});
}

CTagTree* CTagTree::SavePoint(DWORD tag, POINT point) {
    return addNode({tag, kTagPoint, static_cast<DWORD>(point.x), static_cast<DWORD>(point.y)});
}

CTagTree* CTagTree::SaveString(DWORD tag, LPCSTR text) {
    const std::size_t length = text ? std::strlen(text) : 0;
    return privSaveBuffer(tag, kTagString, text, length ? length + 1 : 0);
}

// The middle argument is ignored: required.
CTagTree* CTagTree::SaveString(DWORD tag, DWORD, LPCSTR text) { return SaveString(tag, text); }

CTagTree* CTagTree::SaveDblArray(DWORD tag, const double* values, int count) {
    const std::size_t elements = count > 0 ? static_cast<std::size_t>(count) : 0;
    if (elements > kLargestTagData / sizeof(double)) AfxThrowMemoryException();
    return privSaveBuffer(tag, kTagDoubleArray, values, elements * sizeof(double));
}

CTagTree* CTagTree::SaveStaticDblArray(DWORD tag, const double* values, int count) {
    const std::size_t elements = count > 0 ? static_cast<std::size_t>(count) : 0;
    if (elements > kLargestTagData / sizeof(double)) AfxThrowMemoryException();
    return privSaveStatic(tag, kTagDoubleArray, values, elements * sizeof(double));
}

CTagTree* CTagTree::SaveTemporaryBuffer(DWORD tag, DWORD version, const void* data, DWORD size) {
    return privSaveBuffer(tag, version | kTagMemory, data, size);
}

CTagTree* CTagTree::SaveStaticBuffer(DWORD tag, DWORD version, const void* data, DWORD size) {
    return privSaveStatic(tag, version | kTagMemory, data, size);
}

CTagTree* CTagTree::CreateSection(DWORD tag, DWORD version) {
    return addNode({tag, version | kTagSection, 0, 0});
}

CTagTree* CTagTree::addNode(const Header& header, const void* data) {
    auto* node = static_cast<CTagTree*>(AddNewKnot(nullptr, nullptr));
    node->header_ = header;
    node->data_ = data;
    node->weigh();
    return node;
}

CTagTree* CTagTree::privSaveBuffer(DWORD tag, DWORD type, const void* data, std::size_t size) {
    if (size > kLargestTagData) AfxThrowMemoryException();
    if (size == 0 || !data) return privSaveStatic(tag, type, nullptr, 0);
    TagData* const last = lastData();
    BYTE* copy = last ? last->take(size) : nullptr;
    const TagData::User piece(copy ? last->use() : TagData::makeWithRoom(size, last).release());
    if (!copy) copy = piece->bytes();
    std::memcpy(copy, data, size);
    CTagTree* node = privSaveStatic(tag, type, copy, size);
    node->owned_ = piece->use();
    return node;
}

// The piece that the data copied last lies in, where one of the last children holds it.
TagData* CTagTree::lastData() const {
    for (int index = count() - 1; index >= 0 && index >= count() - kLookBack; --index) {
        const auto* node = static_cast<CTagTree*>(at(index));
        if (node->data_ && node->owned_) return node->owned_;
    }
    return nullptr;
}

CTagTree* CTagTree::privSaveStatic(DWORD tag, DWORD type, const void* data, std::size_t size) {
    if (size > kLargestTagData) AfxThrowMemoryException();
    if (!data) size = 0;
    return addNode({tag, type, static_cast<DWORD>(size), 0}, data);
}

void CTagTree::dropData() {
    if (data_ && owned_) owned_->endUse();
    owned_ = nullptr;
    data_ = nullptr;
}

// Appends nodes as AddNewKnot would make them one by one, in few pieces of memory.
void CTagTree::addRow(int added) {
    if (added > std::numeric_limits<int>::max() - count()) AfxThrowMemoryException();
    reserve(count() + added);
    while (added > 0) {
        TagRow* row = TagRow::make(sizeof(CTagTree), std::min(added, TagRow::kLargest));
        for (; !row->isFull(); --added)
            append(new (row->take(sizeof(CTagTree))) CTagTree);
    }
}

// A node for this section, beside the child made last where that lies in a row. A single child stays alone.
CTagTree* CTagTree::newChild() const {
    CKorSimpleTree* last = count() > 0 ? at(count() - 1) : nullptr;
    if (!last || typeid(*last) != typeid(CTagTree)) return new CTagTree;
    TagRow* row = TagRow::of(static_cast<CTagTree*>(last));
    if (!row || row->isFull())
        row = TagRow::make(sizeof(CTagTree),
                           row ? std::clamp(2 * row->capacity(), kFirstRow, kLastRow) : kFirstRow);
    return new (row->take(sizeof(CTagTree))) CTagTree;
}

// Sets the sizes of the sections at and below this one, each the bytes of its blocks in word 1, where its
// position will stand, and returns those of this one. The sizes are those of the file only while the result
// is below 4 GB. Tells whether data is left in a file.
ULONGLONG CTagTree::CalcAllSize(bool& left) {
    if (!isSectionTag(header_.type)) return 0;
    ULONGLONG total = sumSizes();
    CTagTree* section = this;
    int next = 0;
    for (;;) {
        if (CTagTree* inner = section->openChild(next, left)) {
            total += inner->sumSizes();
            section = inner;
            next = 0;
            continue;
        }
        if (section == this) return total;
        auto* parent = static_cast<CTagTree*>(section->parent_);
        parent->header_.word1 += section->header_.word1;
        next = section->place_ + 1;
        section = parent;
    }
}

// The table and the data of the children, without the sections among them.
ULONGLONG CTagTree::sumSizes() {
    const auto table = static_cast<DWORD>(count()) * kTagRecordSize;
    const ULONGLONG data = children_ ? children_->bytes : 0;
    header_.word0 = table;
    header_.word1 = table + static_cast<DWORD>(data);
    return ULONGLONG{kTagRecordSize} * static_cast<ULONGLONG>(count()) + data;
}

// The first section among the children from there on.
CTagTree* CTagTree::openChild(int next, bool& left) const {
    if (!children_ || children_->open == 0) return nullptr;
    for (; next < count(); ++next) {
        auto* node = static_cast<CTagTree*>(at(next));
        expect(next + kExpectAhead);
        if (!(node->weight_ & kOpenWeight)) continue;
        node->place_ = next;
        if (isSectionTag(node->header_.type)) return node;
        left = true;
    }
    return nullptr;
}
