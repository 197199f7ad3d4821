#pragma once
// The loops around the raw calls that read and write.

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace kor {

struct Transfer {
    std::size_t done;
    int error;  ///< errno of the call that failed, else 0
};

/// The kernel moves less than this in one call whatever it is asked for.
inline constexpr std::size_t kLargestTransfer = std::size_t{1} << 30;

/// Calls `raw(data, count)`, which returns as read(2) and write(2) do, until all is moved, nothing more comes
/// or a call fails; interrupted calls are made again.
/// @param once  end with the first call that moves something, as a terminal or a pipe wants it
template <typename Byte, typename Raw>
Transfer transferAll(Raw&& raw, Byte* data, std::size_t count, bool once = false) {
    std::size_t done = 0;
    while (done < count) {
        const auto moved = raw(data + done, std::min(count - done, kLargestTransfer));
        if (moved < 0) {
            if (errno == EINTR) continue;
            return {done, errno};
        }
        if (moved == 0) break;
        done += static_cast<std::size_t>(moved);
        if (once) break;
    }
    return {done, 0};
}

}  // namespace kor
