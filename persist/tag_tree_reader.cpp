#include "persist/tag_tree_reader.h"

#include <limits>
#include <typeinfo>

#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"
#include "persist/children.h"
#include "persist/tag_record.h"
#include "persist/tag_storage.h"
#include "persist/tag_weight.h"

namespace kor {
namespace {

constexpr int kDeepestLevel = 1000;
constexpr ULONGLONG kLargestRun =
    0x10000;                     // data blocks that follow each other are loaded together up to here
constexpr LONG kBadFormat = 11;  // ERROR_BAD_FORMAT

}  // namespace

TagTreeReader::TagTreeReader(CFile& file, DWORD limit)
    : file_(file), length_(file.GetLength()), room_(length_), limit_(limit) {}

void TagTreeReader::read(CTagTree& root) {
    BYTE record[kTagRecordSize];
    if (file_.Read(record, kTagRecordSize) != kTagRecordSize) fail(CFileException::endOfFile);
    takeRoom(kTagRecordSize);
    root.header_ = {loadWord(record), loadWord(record + 4), loadWord(record + 8), loadWord(record + 12)};
    if (isDataTag(root.header_.type)) {
        checkData(root);
        CKorSimpleTree* const only = &root;
        loadData({&only, 1}, nullptr);
    }
    root.weigh();
    if (!isSectionTag(root.header_.type)) return;
    int level = 0;
    for (CTagTree* section = &root; section;) {
        const DWORD count = section->header_.word0 / kTagRecordSize;
        if (level == kDeepestLevel && count > 0) fail(CFileException::generic, kBadFormat);
        const int first = section->count();
        if (count > 0) readTable(*section, count);
        section = nextSection(root, *section, first, level);
    }
}

void TagTreeReader::loadLeft(CTagTree& root) {
    int level = 0;
    for (CTagTree* section = &root; section; section = nextSection(root, *section, 0, level)) {
        for (int index = 0; index < section->count(); ++index) {
            auto* node = static_cast<CTagTree*>(section->at(index));
            node->place_ = index;
            if (!isDataTag(node->header_.type) || node->header_.word0 == 0 || node->data_) continue;
            takeRoom(node->header_.word0);
            loadRun({section->children_->order() + index, 1}, node->header_.word0, nullptr);
            section->children_->asRead = false;
            node->weigh();
        }
    }
}

// The next section in pre-order: below this one from that child on, or behind it or one of its ancestors.
CTagTree* TagTreeReader::nextSection(const CTagTree& root, CTagTree& section, int next, int& level) {
    for (CTagTree* parent = &section;;) {
        for (; next < parent->count(); ++next) {
            auto* node = static_cast<CTagTree*>(parent->at(next));
            if (!isSectionTag(node->header_.type)) continue;
            ++level;
            return node;
        }
        if (parent == &root) return nullptr;
        next = parent->place_ + 1;
        parent = static_cast<CTagTree*>(parent->parent_);
        --level;
    }
}

// Reads a section's child table and the data of these children.
void TagTreeReader::readTable(CTagTree& section, DWORD count) {
    const DWORD size = count * kTagRecordSize;
    if (section.header_.word1 > length_ || size > length_ - section.header_.word1)
        fail(CFileException::endOfFile);
    takeRoom(size);
    if (tableRoom_ < size) {
        table_.reset(new (std::nothrow) BYTE[size]);
        tableRoom_ = table_ ? size : 0;
        if (!table_) AfxThrowMemoryException();
    }
    fetch(section.header_.word1, table_.get(), size);
    const int first = section.count();
    const bool inRows = addChildren(section, static_cast<int>(count));
    if (static_cast<DWORD>(section.count() - first) != count)
        AfxThrowMemoryException();  // a factory did not append

    const Nodes nodes(section.children_->order() + first, count);
    const BYTE* record = table_.get();
    for (std::size_t index = 0; index < count; ++index, record += kTagRecordSize) {
        CTagTree& node = at(nodes, index);
        node.header_ = {loadWord(record), loadWord(record + 4), loadWord(record + 8), loadWord(record + 12)};
        if (isDataTag(node.header_.type)) checkData(node);
        node.setWeight(tagWeight(node.header_.type, node.header_.word0, isLoaded(node)));
    }
    if (!inRows) {
        loadData(nodes, nullptr);
        return;
    }
    bool whole = first == 0;
    for (std::size_t index = 0; index < count;) {
        TagRow* row = TagRow::of(&at(nodes, index));
        const auto nodesOfRow = static_cast<std::size_t>(row->capacity());
        whole = loadData(nodes.subspan(index, nodesOfRow), row) && whole;
        index += nodesOfRow;
    }
    section.children_->asRead = whole;
}

// Whether the children lie in rows of their own.
bool TagTreeReader::addChildren(CTagTree& section, int count) {
    // Without a factory of its own a section makes what addRow makes.
    if (typeid(section) == typeid(CTagTree) || typeid(section) == typeid(CRootTagTree)) {
        section.addRow(count);
        return true;
    }
    if (count > std::numeric_limits<int>::max() - section.count()) AfxThrowMemoryException();
    section.reserve(section.count() + count);
    for (; count > 0; --count)
        if (!section.AddNewKnot(nullptr, nullptr)) AfxThrowMemoryException();
    return false;
}

void TagTreeReader::checkData(CTagTree& node) {
    const DWORD size = node.header_.word0;
    if (size == 0) return;
    if (node.header_.word1 > length_ || size > length_ - node.header_.word1) fail(CFileException::endOfFile);
    if (size > kLargestTagData)
        fail(CFileException::endOfFile);  // it would end beyond the last position there is
    if (isLoaded(node)) {
        takeRoom(size);
    } else {
        left_ = true;
    }
}

bool TagTreeReader::isLoaded(const CTagTree& node) const {
    return isDataTag(node.header_.type) && node.header_.word0 != 0 && node.header_.word0 <= limit_;
}

// Loads the checked blocks of these nodes, those that follow each other in the file by one call. The first
// piece is the row's, if these are its nodes. Returns whether there is no other.
bool TagTreeReader::loadData(Nodes nodes, TagRow* row) {
    bool whole = true;
    std::size_t index = 0;
    while (index < nodes.size()) {
        const CTagTree& node = at(nodes, index);
        if (!isLoaded(node)) {
            ++index;
            continue;
        }
        const ULONGLONG start = node.header_.word1;
        ULONGLONG end = start + node.header_.word0;
        ULONGLONG next = start + paddedTagSize(node.header_.word0);
        std::size_t behind = index + 1;
        for (std::size_t other = behind; other < nodes.size(); ++other) {
            const CTagTree& candidate = at(nodes, other);
            if (!isDataTag(candidate.header_.type) || candidate.header_.word0 == 0) continue;
            if (!isLoaded(candidate) || candidate.header_.word1 != next) break;
            const DWORD size = paddedTagSize(candidate.header_.word0);
            if (next + size - start > kLargestRun) break;
            end = next + candidate.header_.word0;
            next += size;
            behind = other + 1;
        }
        TagRow* keeper = row && !row->holdsData() && end - start <= kLargestRun ? row : nullptr;
        loadRun(nodes.subspan(index, behind - index), end - start, keeper);
        whole = whole && keeper;
        index = behind;
    }
    return whole;
}

// Loads one piece of the file that holds the blocks of all data nodes of the run; it belongs to the row, or
// else to the nodes.
void TagTreeReader::loadRun(Nodes run, ULONGLONG size, TagRow* row) {
    const DWORD start = at(run, 0).header_.word1;
    TagData::User data = TagData::make(static_cast<std::size_t>(size));
    fetch(start, data->bytes(), static_cast<DWORD>(size));
    for (std::size_t index = 0; index < run.size(); ++index) {
        CTagTree& node = at(run, index);
        if (!isDataTag(node.header_.type) || node.header_.word0 == 0) continue;
        node.data_ = data->bytes() + (node.header_.word1 - start);
        if (!row) node.owned_ = data->use();
    }
    if (row) row->hold(std::move(data));
}

void TagTreeReader::fetch(DWORD position, void* target, DWORD size) {
    file_.Seek(position, CFile::begin);
    if (file_.Read(target, size) != size) fail(CFileException::endOfFile);
}

void TagTreeReader::takeRoom(ULONGLONG bytes) {
    if (bytes > room_) fail(CFileException::generic, kBadFormat);
    room_ -= bytes;
}

void TagTreeReader::fail(int cause, LONG osError) const {
    AfxThrowFileException(cause, osError, file_.GetFilePath());
}

}  // namespace kor
