#pragma once
// Writes a tag tree whose sizes are set, as one stream of bytes in large pieces.

#include <memory>

#include "korutil/tag_tree.h"

namespace kor {

class TagTreeWriter {
  public:
    explicit TagTreeWriter(CFile& file);

    /// Writes the root's header and all blocks below it. CalcAllSize was called and the root's position is
    /// set; those of the nodes below it are set here, each before its table is written.
    void write(CTagTree& root);

  private:
    static void storeHeader(BYTE* record, const CTagTree& node);
    void putHeader(const CTagTree& node);
    int putTable(CTagTree& section);
    void putLeaves(CTagTree& section, DWORD size);
    CTagTree* putData(CTagTree& section, int next);
    void putBlock(const CTagTree& node);
    BYTE* room(std::size_t size);
    void flush();

    CFile& file_;
    std::unique_ptr<BYTE[]> buffer_;
    std::size_t used_ = 0;
};

}  // namespace kor
