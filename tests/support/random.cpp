#include "tests/support/random.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace kor::test {
namespace {

const char* environment(const char* name) { return std::getenv(name); }

}  // namespace

std::uint32_t seed() {
    static const std::uint32_t value = [] {
        const char* given = environment("KORUTIL_TEST_SEED");
        return given ? static_cast<std::uint32_t>(std::stoul(given)) : std::random_device{}();
    }();
    return value;
}

std::mt19937 generator() { return std::mt19937(seed()); }

int scaled(int count) {
    static const double factor = [] {
        const char* given = environment("KORUTIL_TEST_SCALE");
        return given ? std::stod(given) : 1.0;
    }();
    return std::max(1, static_cast<int>(count * factor));
}

}  // namespace kor::test
