#include "tools/korutil/tree_file.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "korutil/framework/file_exception.h"
#include "korutil/framework/mem_file.h"
#include "platform/win32.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/replace_file.h"

namespace kor::tree {
namespace {

constexpr DWORD kRecordSize = 16;
constexpr std::uint64_t kBlockUnit = 4;
constexpr int kEverything = std::numeric_limits<int>::max();

void appendWord(std::string& bytes, DWORD word) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>((word >> shift) & 0xFF);
}

std::string record(DWORD id, DWORD typeWord, DWORD word0, DWORD word1) {
    std::string bytes;
    for (const DWORD word : {id, typeWord, word0, word1})
        appendWord(bytes, word);
    return bytes;
}

void readFrom(std::string bytes, CRootTagTree& root) {
    CMemFile memory(reinterpret_cast<BYTE*>(bytes.data()), static_cast<UINT>(bytes.size()));
    root.AttachTo(memory, kEverything);
    root.ReadTree();
    root.Detach();
}

// The library writes only the types it knows, but it reads and keeps any: an entry of another type is read
// from a tree made for it, and moved.
CTagTree& addRead(CTagTree& section, DWORD id, DWORD typeWord, const std::array<DWORD, 2>& words,
                  std::string_view data) {
    constexpr DWORD kDataPosition = 2 * kRecordSize;
    std::string bytes = record(0, kSectionBit, kRecordSize, kRecordSize);
    if (typeWord & kImmediateBit) {
        bytes += record(id, typeWord, words[0], words[1]);
    } else {
        bytes += record(id, typeWord, static_cast<DWORD>(data.size()), kDataPosition);
        bytes += data;
    }
    CRootTagTree carrier;
    readFrom(std::move(bytes), carrier);
    CTagTree& entry = childOf(carrier, 0);
    section.AddNewKnot(&entry);
    return entry;
}

DWORD wordAt(std::string_view bytes, std::size_t offset) {
    DWORD word = 0;
    for (std::size_t i = 4; i-- > 0;)
        word = word << 8 | static_cast<unsigned char>(bytes.at(offset + i));
    return word;
}

Record recordAt(std::string_view bytes, std::size_t offset) {
    return {wordAt(bytes, offset + 4), {wordAt(bytes, offset + 8), wordAt(bytes, offset + 12)}};
}

// What a table or a block takes of the file.
struct Extent {
    std::uint64_t start;
    std::uint64_t size;
};

void addExtents(StoredTree& tree, const CTagTree& section, const Record& record,
                std::vector<Extent>& extents) {
    const std::vector<Record> records = tree.recordsBelow(section, record);
    if (records.empty()) return;
    extents.push_back({record.position(), kRecordSize * records.size()});
    for (std::size_t i = 0; i < records.size(); ++i) {
        const CTagTree& child = childOf(section, static_cast<int>(i));
        if (isSection(child)) {
            addExtents(tree, child, records[i], extents);
        } else if (!isImmediate(child) && records[i].size() > 0) {
            extents.push_back({records[i].position(), records[i].size()});
        }
    }
}

[[noreturn]] void refuseAsDamaged(const command::FileArgument& file) {
    throw command::Failure(file.shown, "it is no parameter tree, or is damaged");
}

}  // namespace

DWORD typeWordOf(const CTagTree& node) { return node.GetType() | node.GetVersion(); }

bool isSection(const CTagTree& node) {
    return (node.GetType() & (kImmediateBit | kSectionBit)) == kSectionBit;
}

bool isImmediate(const CTagTree& node) { return (node.GetType() & kImmediateBit) != 0; }

CTagTree& childOf(const CTagTree& section, int index) { return static_cast<CTagTree&>(*section[index]); }

std::uint64_t sizeBelow(const CTagTree& section, std::uint64_t unit) {
    std::uint64_t size = 0;
    for (int i = 0; i < section.GetChildCount(); ++i) {
        const CTagTree& child = childOf(section, i);
        size += kRecordSize + (child.GetDataSize() + unit - 1) / unit * unit + sizeBelow(child, unit);
    }
    return size;
}

StoredTree::StoredTree(const command::FileArgument& file, std::uint64_t offset, Blocks blocks)
    : file_(file), offset_(offset) {
    command::guarded(file.shown, [&] {
        CFileException failure;
        if (!stream_.Open(file.path.c_str(), CFile::modeRead | CFile::shareDenyWrite, &failure)) {
            throw command::Failure(file.shown, command::reasonOf(failure));
        }
        fileLength_ = stream_.GetLength();
        root_.AttachTo(stream_, blocks == Blocks::kInFile ? 0 : kEverything);
        readAndCheck();
    });
}

void StoredTree::readAndCheck() {
    if (fileLength_ == 0) throw command::Failure(file_.shown, "it is empty");
    if (offset_ >= fileLength_) {
        throw command::Failure(file_.shown, "offset " + std::to_string(offset_) + " is not inside it (" +
                                                std::to_string(fileLength_) + " bytes)");
    }
    stream_.Seek(static_cast<LONGLONG>(offset_), CFile::begin);
    root_.ReadTree();
    if (!isSection(root_)) refuseAsDamaged(file_);
    size_ = kRecordSize + sizeBelow(root_, kBlockUnit);
    // Blocks that lie on each other would be shown again and again. Other writers need not pad them.
    if (kRecordSize + sizeBelow(root_, 1) > fileLength_) refuseAsDamaged(file_);
}

std::string StoredTree::read(std::uint64_t position, std::size_t count) {
    std::string bytes(count, '\0');
    stream_.Seek(static_cast<LONGLONG>(position), CFile::begin);
    if (stream_.Read(bytes.data(), static_cast<UINT>(count)) != count) refuseAsDamaged(file_);
    return bytes;
}

Record StoredTree::rootRecord() { return recordAt(read(offset_, kRecordSize), 0); }

std::vector<Record> StoredTree::recordsBelow(const CTagTree& section, const Record& record) {
    std::vector<Record> records(static_cast<std::size_t>(section.GetChildCount()));
    if (records.empty()) return records;
    const std::string table = read(record.position(), kRecordSize * records.size());
    for (std::size_t i = 0; i < records.size(); ++i)
        records[i] = recordAt(table, kRecordSize * i);
    return records;
}

std::string StoredTree::bytesOf(const Record& block, std::size_t first, std::size_t count) {
    return read(std::uint64_t{block.position()} + first, count);
}

void StoredTree::checkAlone() {
    const auto refuse = [&](std::string_view what, std::uint64_t position) {
        throw command::Failure(file_.shown, "it cannot be changed: the byte at " + std::to_string(position) +
                                                ' ' + std::string(what));
    };
    std::vector<Extent> extents = {{offset_, kRecordSize}};
    addExtents(*this, root_, rootRecord(), extents);
    extents.push_back({fileLength_, 0});
    std::sort(extents.begin(), extents.end(),
              [](const Extent& a, const Extent& b) { return a.start < b.start; });
    std::uint64_t end = 0;
    std::uint64_t padding = 0;
    for (const Extent& extent : extents) {
        if (extent.start < end) refuse("is used twice in the parameter tree", extent.start);
        if (extent.start > end + padding) refuse("does not belong to the parameter tree", end + padding);
        end = extent.start + extent.size;
        padding = (kBlockUnit - extent.size % kBlockUnit) % kBlockUnit;
    }
}

void storeTree(CRootTagTree& root, const command::FileArgument& target) {
    command::FileReplacement replacement(target);
    command::guarded(target.shown, [&] {
        CFile file;
        CFileException failure;
        if (!file.Open(replacement.path().c_str(), CFile::modeReadWrite | CFile::shareExclusive, &failure)) {
            throw command::Failure(target.shown, command::reasonOf(failure));
        }
        root.AttachTo(file, 0);
        root.WriteTree();
        root.Detach();
        file.SeekToBegin();
        CRootTagTree check;
        check.AttachTo(file, 0);
        try {
            check.ReadTree();
        } catch (CFileException* exception) {
            if (exception->m_lOsError != ERROR_BAD_FORMAT) throw;
            exception->Delete();
            throw command::Failure(target.shown, "the tree is nested too deeply to be stored");
        }
        check.Detach();
        file.Close();
    });
    replacement.commit();
}

CTagTree& addEntry(CTagTree& section, DWORD id, const Content& content) {
    const Type type = typeOf(content.typeWord);
    const auto size = static_cast<DWORD>(content.data.size());
    if (content.data.size() > static_cast<std::size_t>(kEverything))
        AfxThrowFileException(CFileException::diskFull);
    switch (type) {
        case Type::kLong:
            if (content.words[1] != 0) break;
            return *section.SaveLong(id, static_cast<LONG>(content.words[0]));
        case Type::kDouble:
            return *section.SaveDouble(id, doubleOf(content.words));
        case Type::kPoint:
            return *section.SavePoint(
                id, {static_cast<LONG>(content.words[0]), static_cast<LONG>(content.words[1])});
        case Type::kMemory:
            return *section.SaveTemporaryBuffer(id, content.typeWord & kVersionMask, content.data.data(),
                                                size);
        case Type::kString:
            if (!isRegular(type, content.data)) break;
            return *section.SaveString(id, content.data.c_str());
        case Type::kDoubles: {
            if (!isRegular(type, content.data)) break;
            std::vector<double> values(content.data.size() / 8);
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = elementOf(content.data, i);
            return *section.SaveDblArray(id, values.data(), static_cast<int>(values.size()));
        }
        case Type::kSection:
        case Type::kOther:
            break;
    }
    return addRead(section, id, content.typeWord, content.words, content.data);
}

CTagTree& addSection(CTagTree& section, DWORD id, DWORD typeWord) {
    if (typeOf(typeWord) == Type::kSection) return *section.CreateSection(id, typeWord & kVersionMask);
    return addRead(section, id, typeWord, {}, {});
}

void setRoot(CRootTagTree& root, DWORD id, DWORD typeWord) { readFrom(record(id, typeWord, 0, 0), root); }

}  // namespace kor::tree
