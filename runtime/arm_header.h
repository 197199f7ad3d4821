#pragma once
// The header in front of an arm array, reached from the pointer that the caller holds.

#include <span>

#include "korutil/memory.h"

namespace kor {

inline constexpr DWORD kMostDimensions = 16;
inline constexpr DWORD kElementSizeLimit = 0x10000;
inline constexpr std::size_t kWord = sizeof(void*);

class ArmHeader {
  public:
    /// The address is not touched; see valid().
    explicit ArmHeader(const void* array) : end_(static_cast<UINT_PTR*>(const_cast<void*>(array))) {}

    static constexpr std::size_t bytes(DWORD dimensions) { return kWord * (dimensions + 5); }

    /// Whether there is an array, as far as its address and its number of dimensions tell.
    bool valid() const {
        return reinterpret_cast<UINT_PTR>(end_) >= kLowestArray && dimensions() >= 1 &&
               dimensions() <= kMostDimensions;
    }

    DWORD dimensions() const { return static_cast<DWORD>(end_[-1] & kDimensionBits); }
    bool shifted() const { return (end_[-1] & kShiftedBit) != 0; }
    DWORD count(DWORD dimension) const { return static_cast<DWORD>(countWord(dimension)); }
    DWORD typeTag() const { return static_cast<DWORD>(fixedWord(3)); }
    DWORD elementSize() const { return static_cast<DWORD>(fixedWord(2)); }
    HANDLE heap() const { return reinterpret_cast<HANDLE>(fixedWord(1)); }
    SIZE_T blockSize() const { return fixedWord(0); }
    void* block() const { return end_ - dimensions() - 5; }
    void* array() const { return end_; }

    void setShifted() { end_[-1] |= kShiftedBit; }
    void setCount(DWORD dimension, DWORD count) { countWord(dimension) = count; }
    void setBlockSize(SIZE_T size) { fixedWord(0) = size; }

    /// Writes the header of a new block. @return the array behind it
    static void* write(void* block, SIZE_T blockSize, HANDLE heap, DWORD elementSize, DWORD typeTag,
                       std::span<const DWORD> counts) {
        auto* word = static_cast<UINT_PTR*>(block);
        *word++ = blockSize;
        *word++ = reinterpret_cast<UINT_PTR>(heap);
        *word++ = elementSize;
        *word++ = typeTag;
        for (std::size_t k = counts.size(); k-- > 0;)
            *word++ = counts[k];
        *word++ = counts.size();
        return word;
    }

  private:
    static constexpr UINT_PTR kLowestArray = 0x10000;
    static constexpr UINT_PTR kDimensionBits = 0x3F;
    static constexpr UINT_PTR kShiftedBit = 0x80000000;

    // The words with a place of their own are counted from the block's start, the dimensions' from its end.
    UINT_PTR& fixedWord(DWORD index) const { return static_cast<UINT_PTR*>(block())[index]; }
    UINT_PTR& countWord(DWORD dimension) const { return *(end_ - 2 - dimension); }

    UINT_PTR* end_;
};

}  // namespace kor
