#pragma once
// Random cases that can be repeated and scaled.
#include <cstdint>
#include <random>

namespace kor::test {

/// The seed of this run: KORUTIL_TEST_SEED when set, else drawn once; printed at the start of the run.
std::uint32_t seed();

/// A generator for one test, from the run's seed.
std::mt19937 generator();

/// A count of random cases, times KORUTIL_TEST_SCALE (a factor, 1 when unset); at least 1.
int scaled(int count);

}  // namespace kor::test
