// The main of every test program: prints the seed of random cases and ends a run that hangs.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "tests/support/comma_locale.h"
#include "tests/support/random.h"

namespace {

constexpr std::chrono::minutes kPatience{4};

// Ends the process when the tests do not finish in time: abort() leaves a core and a failed run, not a hung
// one.
class Watchdog {
  public:
    Watchdog() : thread_([this] { watch(); }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(mutex_);
            done_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }

  private:
    void watch() {
        std::unique_lock lock(mutex_);
        if (wake_.wait_for(lock, kPatience, [this] { return done_; })) return;
        const auto* current = testing::UnitTest::GetInstance()->current_test_info();
        std::fprintf(stderr, "watchdog: no end after %d minutes in %s.%s\n",
                     static_cast<int>(kPatience.count()), current ? current->test_suite_name() : "?",
                     current ? current->name() : "?");
        std::abort();
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::printf("seed %u (KORUTIL_TEST_SEED)\n", kor::test::seed());
    if (!kor::test::useCommaLocale()) std::puts("no locale with a comma is installed: the tests run without");
    const Watchdog watchdog;
    return RUN_ALL_TESTS();
}
