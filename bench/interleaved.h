#pragma once
// Measures works against each other in one run: round after round each of them runs for a while, in an order
// that rotates, and the median of the rounds counts. So a machine that slows down in between slows all of
// them.

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace kor::bench {

/// A piece of work and how to do it `count` times.
struct Work {
    std::string name;
    std::function<void(int count)> repeat;
    /// Seconds that `count` times take, for a work whose time is not this thread's: another process's, or the
    /// disk's. Goes before `repeat`.
    std::function<double(int count)> timed{};
};

/// Makes a work of one call. What the call computes must be kept from the optimiser
/// (benchmark::DoNotOptimize, benchmark::ClobberMemory).
template <class Call>
Work work(std::string name, Call call) {
    return {std::move(name), [call](int count) mutable {
                for (int i = 0; i < count; ++i)
                    call();
            }};
}

/// What the subject is held to: at most `ceiling` times the time of this work.
struct Limit {
    Work work;
    double ceiling;
};

/// Measures the subject with all its limits and prints a table: a line for the subject, then one for each
/// limit with its median time, the subject's ratio to it and the ceiling.
/// @param rounds  at least 7
/// @return whether every ceiling was kept
bool compare(const Work& subject, const std::vector<Limit>& limits, int rounds = 9);

/// The line for a peer that is not installed: it names what is missing and is no failure.
void skipped(const std::string& subject, const std::string& peer, const std::string& why);

}  // namespace kor::bench
