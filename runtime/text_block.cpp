// Several text buffers in one block.

#include <cstdint>
#include <cstdlib>
#include <limits>

#include "korutil/error.h"
#include "korutil/text.h"
#include "platform/win32.h"

namespace kor {
namespace {

constexpr std::uint64_t kExtra = 8;
constexpr std::uint64_t kMostBytes = std::numeric_limits<SIZE_T>::max();

struct Pieces {
    std::uint64_t bytes = 0;
    bool named = true;  // each has an address
};

Pieces measurePieces(DWORD count, va_list pairs) {
    Pieces pieces;
    while (count-- > 0) {
        char** const piece = va_arg(pairs, char**);
        pieces.bytes += va_arg(pairs, DWORD);
        if (piece)
            *piece = nullptr;
        else
            pieces.named = false;
    }
    return pieces;
}

void* allocate(const Pieces& pieces) {
    if (!pieces.named) return nullptr;
    const std::uint64_t bytes = pieces.bytes + kExtra;
    void* block = bytes <= kMostBytes ? std::calloc(1, static_cast<SIZE_T>(bytes)) : nullptr;
    if (!block) OutOfMemoryError();
    return block;
}

void placePieces(char* next, DWORD count, va_list pairs) {
    while (count-- > 0) {
        *va_arg(pairs, char**) = next;
        next += va_arg(pairs, DWORD);
    }
}

}  // namespace
}  // namespace kor

void* strAlloc(DWORD count, ...) {
    va_list pairs;
    va_start(pairs, count);
    void* const block = kor::allocate(kor::measurePieces(count, pairs));
    va_end(pairs);
    if (!block) return nullptr;
    va_start(pairs, count);
    kor::placePieces(static_cast<char*>(block), count, pairs);
    va_end(pairs);
    return block;
}

void KORUTIL_CALL strFree(void* block) { std::free(block); }
