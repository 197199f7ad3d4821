#pragma once
// FILETIME as a number of units, and the native time.

#include <cstdint>
#include <ctime>

#include "korutil/platform.h"

namespace kor {

/// From 1601 to 1970, in 100-nanosecond units.
inline constexpr std::int64_t kUnitsTo1970 = 116'444'736'000'000'000;

constexpr std::uint64_t unitsOf(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

constexpr FILETIME fileTime(std::uint64_t units) {
    return {static_cast<DWORD>(units & 0xFFFFFFFF), static_cast<DWORD>(units >> 32)};
}

/// Times before 1601 become 0.
constexpr FILETIME fileTimeOf(const timespec& time) {
    constexpr std::int64_t kLastSecond = (INT64_MAX - kUnitsTo1970) / 10'000'000 - 1;
    if (time.tv_sec < -kUnitsTo1970 / 10'000'000) return {0, 0};
    const std::int64_t seconds = time.tv_sec < kLastSecond ? time.tv_sec : kLastSecond;
    return fileTime(static_cast<std::uint64_t>(seconds * 10'000'000 + kUnitsTo1970 + time.tv_nsec / 100));
}

constexpr timespec nativeTime(const FILETIME& time) {
    const std::int64_t since1970 = static_cast<std::int64_t>(unitsOf(time)) - kUnitsTo1970;
    std::int64_t seconds = since1970 / 10'000'000;
    std::int64_t rest = since1970 % 10'000'000;
    if (rest < 0) {
        --seconds;
        rest += 10'000'000;
    }
    return {seconds, rest * 100};
}

}  // namespace kor
