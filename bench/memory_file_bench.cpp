// A memory file of 64 MB, written in small pieces, against appending the same pieces to a std::string.
#include <cstdlib>
#include <string>

#include "bench/interleaved.h"
#include "korutil/buffered_file.h"
#include "korutil/platform/memory.h"

namespace {

constexpr char kPiece[] = "0123456789";
constexpr DWORD kPieceSize = sizeof(kPiece) - 1;
constexpr DWORD kPieces = (DWORD{64} << 20) / kPieceSize;
constexpr double kCeiling = 1.5;

void writeMemoryFile() {
    const int file = fileOpenWriteBuffer();
    for (DWORD i = 0; i < kPieces; ++i)
        if (!file_hwrite(file, kPiece, kPieceSize)) std::abort();
    const HGLOBAL block = fileCloseWriteBuffer();
    if (GlobalSize(block) != SIZE_T{kPieces} * kPieceSize) std::abort();
    GlobalFree(block);
}

void appendToString() {
    std::string text;
    for (DWORD i = 0; i < kPieces; ++i)
        text.append(kPiece, kPieceSize);
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
}

}  // namespace

int main() {
    const bool kept =
        kor::bench::compare(kor::bench::work("memory file, 64 MB in 10-byte pieces", writeMemoryFile),
                            {{kor::bench::work("std::string::append", appendToString), kCeiling}});
    return kept ? 0 : 1;
}
