#pragma once
// Reads a tag tree from a profile.

#include "korutil/framework/byte_array.h"
#include "korutil/framework/string_array.h"
#include "korutil/tag_tree.h"
#include "persist/tag_profile.h"

namespace kor {

class TagTreeProfileReader {
  public:
    /// @param buffer  for the text of one section of the profile
    TagTreeProfileReader(CRootTagTree& root, const CString& profile, CByteArray& buffer);

    /// @throws CFileException, CMemoryException
    void read();

  private:
    void readSection(CTagTree& section);
    void checkMissing(DWORD error) const;
    void readLine(CTagTree& section, const CString& line, int former);
    void addEntry(CTagTree& section, const CString& name, const TagProfileSuffix& suffix,
                  const CString& value, int former);
    void addValue(CTagTree& section, DWORD tag, const TagProfileSuffix& suffix, const CString& value);
    void applyVersions(CTagTree& section);

    CRootTagTree& root_;
    const CString& profile_;
    CByteArray& buffer_;
    bool hasVersion_ = false;  // the section that is read has told its version
};

}  // namespace kor
