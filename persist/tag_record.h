#pragma once
// The header record of a tag tree as it stands in a file: four words, little-endian.

#include "korutil/platform.h"

namespace kor {

inline constexpr DWORD kTagRecordSize = 16;
inline constexpr ULONGLONG kTagFileEnd = 0x100000000;  // positions have 32 bits

inline constexpr DWORD kTagImmediate = 0x80000000;
inline constexpr DWORD kTagSection = 0x40000000;
inline constexpr DWORD kTagMemory = 0x20000000;
inline constexpr DWORD kTagArray = 0x10000000;
inline constexpr DWORD kTagVersionBits = 0x07FFFFFF;

inline constexpr DWORD kTagLong = 0x80000014;
inline constexpr DWORD kTagDouble = 0x80000088;
inline constexpr DWORD kTagPoint = 0x80000108;
inline constexpr DWORD kTagString = 0x10000011;
inline constexpr DWORD kTagDoubleArray = 0x10000088;

constexpr bool isImmediateTag(DWORD type) { return (type & kTagImmediate) != 0; }
constexpr bool isSectionTag(DWORD type) { return (type & (kTagImmediate | kTagSection)) == kTagSection; }
constexpr bool isDataTag(DWORD type) { return (type & (kTagImmediate | kTagSection)) == 0; }

/// The largest data that can still be padded to a multiple of 4 within 32 bits.
inline constexpr DWORD kLargestTagData = 0xFFFFFFFC;
constexpr DWORD paddedTagSize(DWORD size) { return (size + 3) & ~DWORD{3}; }

constexpr DWORD loadWord(const BYTE* from) {
    return DWORD{from[0]} | DWORD{from[1]} << 8 | DWORD{from[2]} << 16 | DWORD{from[3]} << 24;
}

constexpr void storeWord(BYTE* to, DWORD word) {
    for (int byte = 0; byte < 4; ++byte)
        to[byte] = static_cast<BYTE>(word >> (8 * byte));
}

}  // namespace kor
