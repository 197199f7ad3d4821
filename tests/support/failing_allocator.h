#pragma once
// Makes memory run out at a chosen moment, natively. A test program that compiles failing_allocator.cpp in
// has its own malloc, calloc, realloc and operator new, which every library of the process then uses.

namespace kor::test {

/// While it lives, the n-th allocation of this thread fails (1 is the next one), and only that one unless
/// `thenAll` is set. Allocations before and after it are real.
class FailingAllocation {
  public:
    enum class After { succeeds, fails };

    explicit FailingAllocation(int nth, After after = After::succeeds);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether the n-th allocation was reached, and so failed.
    bool happened() const;

    /// Ends the failing before the object's end, so that the test may check and report.
    void stop();
};

/// Runs `work(n)` with the first, the second, ... allocation failing, until a run needs no more of them.
/// @return how many allocations were made to fail
template <class Work>
int failEachAllocation(Work work, int most = 10000) {
    for (int nth = 1; nth <= most; ++nth) {
        FailingAllocation failing(nth);
        work();
        failing.stop();
        if (!failing.happened()) return nth - 1;
    }
    return most;
}

}  // namespace kor::test
