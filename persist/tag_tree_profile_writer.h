#pragma once
// Writes a tag tree to a profile.

#include "korutil/tag_tree.h"
#include "persist/tag_profile.h"

namespace kor {

class TagTreeProfileWriter {
  public:
    TagTreeProfileWriter(CRootTagTree& root, const CString& profile) : root_(root), profile_(profile) {}

    /// @throws CFileException, CMemoryException
    void write();

  private:
    void writeSection(const CTagTree& section);
    void writeEntry(const CTagTree& section, const CTagTree& entry);
    void writeNumbers(const CString& name, const CTagTree& entry);
    void writeMemory(const CString& name, const CTagTree& entry);
    void put(const CString& name, const TagProfileSuffix& suffix, LPCSTR value);
    void check(BOOL written) const;
    UINT_PTR selector() const;

    CRootTagTree& root_;
    const CString& profile_;
    CString section_;  // the name of the one that is written
};

}  // namespace kor
