// Reads arbitrary bytes as a tag tree, looks at everything in it, and writes it again: the copy reads back
// equal.
//
// The first 8 bytes say where in the rest the tree stands and how large a data block may be to be loaded.

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "korutil/framework/exception.h"
#include "korutil/framework/mem_file.h"
#include "korutil/tag_tree.h"

namespace {

using Bytes = std::vector<BYTE>;

constexpr std::size_t kControlSize = 8;
constexpr DWORD kSection = 0x40000000;
constexpr DWORD kKindBits = 0xF8000000;

void require(bool holds) {
    if (!holds) std::abort();
}

DWORD wordAt(const BYTE* data) {
    return DWORD{data[0]} | DWORD{data[1]} << 8 | DWORD{data[2]} << 16 | DWORD{data[3]} << 24;
}

// Runs an action that may be refused by an exception of the framework.
template <class Action>
bool done(Action action) {
    try {
        action();
        return true;
    } catch (CException* e) {
        e->Delete();
        return false;
    }
}

CTagTree& next(CTagTree& node) { return *static_cast<CTagTree*>(node.GetNext()); }

// The data of a node; less than its size when it lies in the file and the file has become shorter.
Bytes dataOf(const CTagTree& node) {
    Bytes data(node.GetDataSize());
    if (!data.empty()) {
        const int count = node.CopyBuffer(data.data(), static_cast<int>(data.size()));
        require(count == static_cast<int>(data.size()));
    }
    return data;
}

void lookAt(CTagTree& root) {
    for (CKorSimpleTree* at = &root; at; at = at->GetNext()) {
        const auto& node = *static_cast<CTagTree*>(at);
        require(node.GetLevel() <= 1000);
        node.GetVersion();
        switch (node.GetType()) {
            case 0x80000014:
                node.GetLong();
                break;
            case 0x80000088:
                node.GetDouble();
                break;
            case 0x80000108:
                node.GetPoint();
                break;
            default:
                break;
        }
        if (node.GetType() < kSection) {
            node.GetString();
            double values[3];
            require(node.GetDblArray(values, 3) <= 3);
            require(dataOf(node).size() == node.GetDataSize());
        }
        if (node.GetLevel() == 1)
            require(root.FindTag(node.GetTagID(), node.GetType() & kKindBits) != nullptr);
    }
}

void requireEqual(CTagTree& first, CTagTree& second) {
    CTagTree* a = &first;
    CTagTree* b = &second;
    for (;;) {
        require(a->GetTagID() == b->GetTagID() && a->GetType() == b->GetType());
        require(a->GetVersion() == b->GetVersion() && a->GetChildCount() == b->GetChildCount());
        require(a->GetLevel() == b->GetLevel());
        if (a->GetType() < kSection) require(dataOf(*a) == dataOf(*b));
        const bool ended = !a->GetNext();
        require(ended == !b->GetNext());
        if (ended) return;
        a = &next(*a);
        b = &next(*b);
    }
}

Bytes written(CRootTagTree& root, DWORD offset) {
    CMemFile file;
    file.SetLength(offset);
    file.SeekToEnd();
    root.AttachTo(file, 0);
    root.WriteTree();
    require(file.GetPosition() == file.GetLength());
    Bytes bytes(static_cast<std::size_t>(file.GetLength()) - offset);
    file.Seek(offset, CFile::begin);
    require(file.Read(bytes.data(), static_cast<UINT>(bytes.size())) == bytes.size());
    root.Detach();
    return bytes;
}

void writeAndReadBack(CRootTagTree& root, DWORD offset) {
    Bytes image(offset);
    const Bytes tree = written(root, offset);
    image.insert(image.end(), tree.begin(), tree.end());
    CMemFile file(image.data(), static_cast<UINT>(image.size()));
    file.Seek(offset, CFile::begin);
    CRootTagTree copy;
    copy.AttachTo(file, static_cast<int>(offset));
    copy.ReadTree();
    requireEqual(root, copy);
    file.Seek(offset, CFile::begin);
    copy.WriteTree();  // over itself
    require(std::equal(tree.begin(), tree.end(), image.begin() + static_cast<std::ptrdiff_t>(offset)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kControlSize) return 0;
    const DWORD limit = wordAt(data) & 0x7FFFFFFF;
    Bytes image(data + kControlSize, data + size);
    const DWORD offset = image.empty() ? 0 : wordAt(data + 4) % static_cast<DWORD>(image.size());
    CMemFile file(image.data(), static_cast<UINT>(image.size()));
    file.Seek(offset, CFile::begin);
    CRootTagTree root;
    root.AttachTo(file, static_cast<int>(limit));
    if (!done([&root] { root.ReadTree(); })) {
        require(root.GetChildCount() == 0 && root.GetTagID() == 0);
        return 0;
    }
    lookAt(root);

    // All of it in memory, so that it can go to another file.
    CRootTagTree whole;
    file.Seek(offset, CFile::begin);
    whole.AttachTo(file, 0x7FFFFFFF);
    if (!done([&whole] { whole.ReadTree(); })) return 0;
    if (whole.GetType() == kSection) {
        requireEqual(root, whole);
        whole.Detach();
        writeAndReadBack(whole, offset);
    }
    return 0;
}
