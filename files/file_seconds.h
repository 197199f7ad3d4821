#pragma once
// File times as seconds since 1970.

#include "korutil/platform.h"

namespace kor {

inline constexpr LONGLONG kUnitsPerSecond = 10'000'000;
inline constexpr LONGLONG kSecondsTo1970 = 11'644'473'600;  // since 1601

/// Rounded downwards. A time of 2^63 units or more counts as the last one below.
constexpr LONGLONG secondsOf(const FILETIME& time) {
    const ULONGLONG units = ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    const LONGLONG counted = units > INT64_MAX ? INT64_MAX : static_cast<LONGLONG>(units);
    return counted / kUnitsPerSecond - kSecondsTo1970;
}

}  // namespace kor
