// armAllocEx in two dimensions against calloc of the same bytes and filling the row pointers by hand.
#include <cstdlib>

#include "bench/interleaved.h"
#include "korutil/memory.h"

namespace {

struct Shape {
    DWORD rows;
    DWORD columns;  // of 8 bytes
    const char* name;
};

constexpr double kCeiling = 1.3;

void makeArray(const Shape& shape) {
    void* array = armAllocEx(nullptr, sizeof(double), 0, 2, shape.rows, shape.columns);
    benchmark::DoNotOptimize(array);
    benchmark::ClobberMemory();
    armFreeReset(&array);
}

void makeByHand(const Shape& shape) {
    const std::size_t row = shape.columns * sizeof(double);
    auto* block = static_cast<char*>(std::calloc(1, shape.rows * (sizeof(char*) + row)));
    auto** table = reinterpret_cast<char**>(block);
    char* cursor = block + shape.rows * sizeof(char*);
    for (DWORD i = 0; i < shape.rows; ++i, cursor += row)
        table[i] = cursor;
    benchmark::DoNotOptimize(table);
    benchmark::ClobberMemory();
    std::free(block);
}

}  // namespace

int main() {
    constexpr Shape kShapes[] = {{8, 8, "8 x 8 doubles"},
                                 {64, 64, "64 x 64 doubles"},
                                 {512, 512, "512 x 512 doubles"},
                                 {2000, 3, "2000 x 3 doubles"}};
    bool kept = true;
    for (const Shape& shape : kShapes)
        kept = kor::bench::compare(
                   kor::bench::work(std::string("armAllocEx ") + shape.name, [&shape] { makeArray(shape); }),
                   {{kor::bench::work("calloc and filling the pointers", [&shape] { makeByHand(shape); }),
                     kCeiling}}) &&
               kept;
    return kept ? 0 : 1;
}
