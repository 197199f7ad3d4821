#pragma once
// What a node of a tag tree weighs: the bytes of its data in a file. Open are sections, and data that a
// writer does not have in memory.

#include "korutil/tag_tree.h"
#include "persist/children.h"
#include "persist/tag_record.h"

namespace kor {

constexpr DWORD tagWeight(DWORD type, DWORD word0, bool inMemory) {
    if (isSectionTag(type)) return kOpenWeight;
    if (!isDataTag(type) || word0 == 0) return 0;
    return paddedTagSize(word0) | (inMemory ? 0 : kOpenWeight);
}

}  // namespace kor

inline bool CTagTree::isLeft() const { return kor::isDataTag(header_.type) && header_.word0 != 0 && !data_; }

// To be called after every change of the header or the data.
inline void CTagTree::weigh() { setWeight(kor::tagWeight(header_.type, header_.word0, data_ != nullptr)); }
