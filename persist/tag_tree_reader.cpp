#include "persist/tag_tree_reader.h"

#include <limits>
#include <typeinfo>

#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/memory_exception.h"
#include "persist/children.h"
#include "persist/left_data.h"
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
    : file_(file), length_(file.GetLength()), room_(length_), limit_(limit), mark_(fileMark(file)) {}

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
    for (CTagTree* section = &root;;) {
        const DWORD count = section->header_.word0 / kTagRecordSize;
        if (level == kDeepestLevel && count > 0) fail(CFileException::generic, kBadFormat);
        if (count > 0) readTable(*section, count);
        CTagTree* next = nextNew_;
        if (!next) return;
        nextNew_ = next->nextNew_;
        next->nextNew_ = nullptr;
        for (const CKorSimpleTree* above = section; above && above != next->parent_; above = above->parent_)
            --level;
        ++level;
        section = next;
    }
}

void TagTreeReader::loadLeft(CTagTree& root) {
    for (CTagTree* section = &root; section; section = nextSection(root, *section)) {
        for (int index = 0; index < section->count(); ++index) {
            auto* node = static_cast<CTagTree*>(section->at(index));
            node->place_ = index;
            if (!node->isLeft()) continue;
            if (node->leftIn_ != mark_) fail(CFileException::invalidFile);
            takeRoom(node->header_.word0);
            loadRun({section->children_->order() + index, 1}, node->header_.word0, nullptr);
            section->children_->asRead = false;
            node->weigh();
        }
    }
}

// The next section in pre-order, where the places of the sections passed are right.
CTagTree* TagTreeReader::nextSection(const CTagTree& root, CTagTree& section) {
    int next = 0;
    for (CTagTree* parent = &section;;) {
        for (; next < parent->count(); ++next) {
            auto* node = static_cast<CTagTree*>(parent->at(next));
            if (isSectionTag(node->header_.type)) return node;
        }
        if (parent == &root) return nullptr;
        next = parent->place_ + 1;
        parent = static_cast<CTagTree*>(parent->parent_);
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
    // Without a factory of its own a section makes what addRow makes.
    if (typeid(section) == typeid(CTagTree) || typeid(section) == typeid(CRootTagTree)) {
        const int first = section.count();
        section.addRow(static_cast<int>(count));
        const Nodes nodes(section.children_->order() + first, count);
        readRecords(nodes);
        loadRows(section, nodes);
    } else {
        const Nodes nodes = makeChildren(section, count);
        readRecords(nodes);
        loadData(nodes, nullptr);
    }
    expectTables(section);
}

// Fills new nodes from the table. A section points at itself until its own table is expected.
void TagTreeReader::readRecords(Nodes nodes) {
    const BYTE* record = table_.get();
    for (std::size_t index = 0; index < nodes.size(); ++index, record += kTagRecordSize) {
        CTagTree& node = at(nodes, index);
        node.header_ = {loadWord(record), loadWord(record + 4), loadWord(record + 8), loadWord(record + 12)};
        if (isDataTag(node.header_.type)) checkData(node);
        if (isSectionTag(node.header_.type)) node.nextNew_ = &node;
        node.setWeight(tagWeight(node.header_.type, node.header_.word0, isLoaded(node)));
    }
}

// Loads the data of children that lie in rows of their own, each row's with it where that is possible.
void TagTreeReader::loadRows(CTagTree& section, Nodes nodes) {
    bool whole = static_cast<std::size_t>(section.count()) == nodes.size();
    for (std::size_t index = 0; index < nodes.size();) {
        TagRow* row = TagRow::of(&at(nodes, index));
        const auto nodesOfRow = static_cast<std::size_t>(row->capacity());
        whole = loadData(nodes.subspan(index, nodesOfRow), row) && whole;
        index += nodesOfRow;
    }
    section.children_->asRead = whole;
}

// The nodes that a factory makes, in the order of the records, wherever it puts them.
TagTreeReader::Nodes TagTreeReader::makeChildren(CTagTree& section, std::size_t count) {
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max() - section.count()))
        AfxThrowMemoryException();
    section.reserve(section.count() + static_cast<int>(count));
    made_.reset(new (std::nothrow) CKorSimpleTree*[count]);
    if (!made_) AfxThrowMemoryException();
    for (std::size_t index = 0; index < count; ++index) {
        CKorSimpleTree* node = section.AddNewKnot(nullptr, nullptr);
        if (!node || node->parent_ != &section) AfxThrowMemoryException();  // a factory that failed
        static_cast<CTagTree*>(node)->dropData();
        made_[index] = node;
    }
    return {made_.get(), count};
}

// Puts the new sections among the children, in child order, in front of the others that wait.
void TagTreeReader::expectTables(CTagTree& section) {
    if (section.children_->open == 0) return;
    for (int index = section.count() - 1; index >= 0; --index) {
        auto* node = static_cast<CTagTree*>(section.at(index));
        if (!isSectionTag(node->header_.type) || node->nextNew_ != node) continue;
        node->nextNew_ = nextNew_;
        nextNew_ = node;
    }
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
        node.leftIn_ = mark_;
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
        if (!row) node.dropData();
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
