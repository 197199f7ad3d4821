#include <algorithm>

#include "runtime/reserve.h"

namespace kor {

DWORD ReserveSize::get() {
    if (cached_ == 0) {
        const DWORD stored = store_ ? store_->read(kDefaultReserveBytes) : kDefaultReserveBytes;
        cached_ = std::max(stored, kLeastReserveBytes);
    }
    return cached_;
}

bool ReserveSize::set(DWORD bytes) {
    cached_ = std::max(bytes, kLeastReserveBytes);
    return store_ && store_->write(cached_);
}

}  // namespace kor
