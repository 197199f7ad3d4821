#pragma once
// The size of the host's virtual-memory reserve: kept between its bounds, cached, and stored between
// processes by whoever keeps the host's settings.

#include "korutil/platform.h"

namespace kor {

inline constexpr DWORD kDefaultReserveBytes = 20000000;
inline constexpr DWORD kLeastReserveBytes = 10000000;

/// Where the size is kept between processes.
class ReserveStore {
  public:
    /// @return the stored value as it is, `fallback` when none is stored
    virtual DWORD read(DWORD fallback) = 0;
    /// @return whether the value was stored
    virtual bool write(DWORD bytes) = 0;

  protected:
    ~ReserveStore() = default;
};

class ReserveSize {
  public:
    /// @param store  asked at the first get(); null for none. It must outlive this object, or be taken away
    void keepIn(ReserveStore* store) { store_ = store; }

    DWORD get();
    bool set(DWORD bytes);

  private:
    ReserveStore* store_ = nullptr;
    DWORD cached_ = 0;  // 0: not read yet
};

/// The process's own, which the exported functions work on.
ReserveSize& reserveSize();

}  // namespace kor
