#include "bench/interleaved.h"

#include <time.h>

#include <algorithm>
#include <cstdio>

namespace kor::bench {
namespace {

constexpr double kRoundSeconds = 0.02;
constexpr int kFewestRounds = 7;

// Time that this thread was really running: others on the machine take none of it.
double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double seconds(const Work& work, int count) {
    if (work.timed) return work.timed(count);
    const double start = threadSeconds();
    work.repeat(count);
    return threadSeconds() - start;
}

// The count that fills a round; finding it also warms the work up.
int calibrate(const Work& work) {
    for (int count = 1;; count *= 2) {
        const double taken = seconds(work, count);
        if (taken < kRoundSeconds / 4 && count < (1 << 28)) continue;
        return std::max(1, static_cast<int>(count * (kRoundSeconds / std::max(taken, 1e-9))));
    }
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::string timeText(double value) {
    struct Unit {
        double scale;
        const char* name;
    };
    static constexpr Unit kUnits[] = {{1, "s"}, {1e3, "ms"}, {1e6, "us"}, {1e9, "ns"}};
    const Unit* unit = kUnits;
    while (unit + 1 != std::end(kUnits) && value * unit->scale < 1)
        ++unit;
    char text[32];
    std::snprintf(text, sizeof text, "%.3g %s", value * unit->scale, unit->name);
    return text;
}

}  // namespace

bool compare(const Work& subject, const std::vector<Limit>& limits, int rounds) {
    std::vector<const Work*> works{&subject};
    for (const Limit& limit : limits)
        works.push_back(&limit.work);
    std::vector<int> counts;
    for (const Work* work : works)
        counts.push_back(calibrate(*work));
    std::vector<std::vector<double>> times(works.size());
    for (int round = 0; round < std::max(rounds, kFewestRounds); ++round) {
        for (std::size_t turn = 0; turn < works.size(); ++turn) {
            const std::size_t i = (turn + static_cast<std::size_t>(round)) % works.size();
            times[i].push_back(seconds(*works[i], counts[i]) / counts[i]);
        }
    }

    const double own = median(times[0]);
    std::printf("%-52s %10s\n", subject.name.c_str(), timeText(own).c_str());
    bool kept = true;
    for (std::size_t i = 0; i < limits.size(); ++i) {
        const double other = median(times[i + 1]);
        const double ratio = own / other;
        const bool within = ratio <= limits[i].ceiling;
        kept = kept && within;
        std::printf("  %-50s %10s  ratio %6.3f  at most %6.3f  %s\n", limits[i].work.name.c_str(),
                    timeText(other).c_str(), ratio, limits[i].ceiling, within ? "kept" : "EXCEEDED");
    }
    return kept;
}

void skipped(const std::string& subject, const std::string& peer, const std::string& why) {
    std::printf("%-52s skipped against %s: %s\n", subject.c_str(), peer.c_str(), why.c_str());
}

}  // namespace kor::bench
