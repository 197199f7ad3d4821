#pragma once
// The loop around the runtime's calls that read and write.

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace kor {

/// The runtime refuses counts of 2 GB and more.
inline constexpr std::size_t kLargestPiece = std::size_t{1} << 30;

/// Calls `raw(data, count)`, which returns as the runtime's `_read` and `_write` do, until all is moved,
/// nothing more comes or a call fails; a call that was interrupted is made again.
/// @return whether all of `count` bytes were moved
template <typename Byte, typename Raw>
bool transfersAll(Raw&& raw, Byte* data, std::size_t count) {
    while (count > 0) {
        const std::size_t piece = std::min(count, kLargestPiece);
        const int moved = raw(data, static_cast<unsigned>(piece));
        if (moved < 0 && errno == EINTR) continue;
        if (moved <= 0 || static_cast<std::size_t>(moved) > piece) return false;
        data += moved;
        count -= static_cast<std::size_t>(moved);
    }
    return true;
}

}  // namespace kor
