#pragma once
// Reads a tag tree from bytes that are not trusted. Whatever they say: nothing outside the file is asked for,
// tables and loaded data together take no more bytes than the file has, and depth costs no stack.

#include <memory>
#include <span>

#include "korutil/tag_tree.h"

namespace kor {

class TagRow;

class TagTreeReader {
  public:
    /// @param limit  data blocks of more bytes stay in the file
    TagTreeReader(CFile& file, DWORD limit);

    /// Reads what stands at the file's position into the root. After an exception the root is half read.
    void read(CTagTree& root);
    /// Loads every data block at and below the root that was left in the file.
    void loadLeft(CTagTree& root);
    /// Whether a data block was left in the file.
    bool left() const { return left_; }

  private:
    using Nodes = std::span<CKorSimpleTree* const>;

    static CTagTree& at(Nodes nodes, std::size_t index) { return *static_cast<CTagTree*>(nodes[index]); }
    static CTagTree* nextSection(const CTagTree& root, CTagTree& section, int next, int& level);
    void readTable(CTagTree& section, DWORD count);
    bool addChildren(CTagTree& section, int count);
    void checkData(CTagTree& node);
    bool isLoaded(const CTagTree& node) const;
    bool loadData(Nodes nodes, TagRow* row);
    void loadRun(Nodes run, ULONGLONG size, TagRow* row);
    void fetch(DWORD position, void* target, DWORD size);
    void takeRoom(ULONGLONG bytes);
    [[noreturn]] void fail(int cause, LONG osError = -1) const;

    CFile& file_;
    ULONGLONG length_;
    ULONGLONG room_;
    DWORD limit_;
    bool left_ = false;
    std::unique_ptr<BYTE[]> table_;
    DWORD tableRoom_ = 0;
};

}  // namespace kor
