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
    /// Loads every data block below the root that was left in the file; invalidFile when it was left in
    /// another one. The places of the sections below the root are set.
    void loadLeft(CTagTree& root);

  private:
    using Nodes = std::span<CKorSimpleTree* const>;

    static CTagTree& at(Nodes nodes, std::size_t index) { return *static_cast<CTagTree*>(nodes[index]); }
    static CTagTree* nextSection(const CTagTree& root, CTagTree& section);
    void readTable(CTagTree& section, DWORD count);
    void readRecords(Nodes nodes);
    void loadRows(CTagTree& section, Nodes nodes);
    Nodes makeChildren(CTagTree& section, std::size_t count);
    void expectTables(CTagTree& section);
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
    std::uintptr_t mark_;
    CTagTree* nextNew_ =
        nullptr;  // the first of the sections whose tables are still to be read, in pre-order
    std::unique_ptr<CKorSimpleTree*[]> made_;
    std::unique_ptr<BYTE[]> table_;
    DWORD tableRoom_ = 0;
};

}  // namespace kor
