#pragma once
// The keys of a tag tree in a profile: an entry's key is its name, a point and one of these.

#include <array>

#include "persist/tag_record.h"

namespace kor {

inline constexpr const char* kTagProfileVersion = "Version";  // of a section, in the section itself

struct TagProfileSuffix {
    const char* name;
    DWORD type;  // as GetKeyId is given it
};

inline constexpr TagProfileSuffix kIntSuffix = {"Int", kTagLong};
inline constexpr TagProfileSuffix kFloatSuffix = {"Flt", kTagDouble};
inline constexpr TagProfileSuffix kPointSuffix = {"Pt", kTagPoint};
inline constexpr TagProfileSuffix kSectionSuffix = {"Sec", kTagSection};
inline constexpr TagProfileSuffix kTextSuffix = {"Str", kTagString};
inline constexpr TagProfileSuffix kFloatArraySuffix = {"FltA", kTagDoubleArray};
inline constexpr TagProfileSuffix kMemoryVersionSuffix = {"MVer", kTagMemory};
inline constexpr TagProfileSuffix kMemorySuffix = {"Mem", kTagMemory};

/// A memory block's version, between the two entries: a child of this type with the block's tag id.
inline constexpr DWORD kTagVersionMark = 0xA0000014;

}  // namespace kor
