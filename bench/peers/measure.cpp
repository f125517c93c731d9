#include "peers/measure.hpp"

#include <time.h>

#include <algorithm>
#include <cmath>

namespace kuvbench {

namespace {

double secondsOf(clockid_t clock) {
    timespec now;
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double secondsOf(const Repeat& work, long count, clockid_t clock) {
    const double start = secondsOf(clock);
    work(count);
    return secondsOf(clock) - start;
}

// How often a run must be repeated to last long enough.
long repetitionsOf(const Run& run, clockid_t clock, double seconds) {
    long count = 1;
    while (secondsOf(run.work, count, clock) < seconds) count *= 2;
    return count;
}

}  // namespace

std::vector<std::vector<double>> takeTurns(const std::vector<Run>& runs, Clock clock, const Plan& plan) {
    const clockid_t id = clock == Clock::elapsed ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID;
    std::vector<long> repetitions;
    for (const Run& run : runs) repetitions.push_back(repetitionsOf(run, id, plan.sampleSeconds));

    std::vector<std::vector<double>> samples(runs.size());
    const double start = secondsOf(CLOCK_MONOTONIC);
    for (int round = 0; round < plan.maximumRounds; ++round) {
        const double passed = secondsOf(CLOCK_MONOTONIC) - start;
        if (round >= plan.minimumRounds && passed >= plan.seconds) break;
        if (round >= plan.slowRounds && passed >= 10 * plan.seconds) break;
        for (std::size_t turn = 0; turn < runs.size(); ++turn) {
            const std::size_t i = (turn + static_cast<std::size_t>(round)) % runs.size();
            runs[i].work(1);  // not timed: what the one before left in the caches is not this one's doing
            double seconds = secondsOf(runs[i].work, repetitions[i], id);
            if (runs[i].overhead) seconds -= secondsOf(runs[i].overhead, repetitions[i], id);
            samples[i].push_back(seconds / static_cast<double>(repetitions[i]));
        }
    }
    return samples;
}

Spread spreadOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const auto at = [&](double share) {
        const double position = share * static_cast<double>(values.size() - 1);
        const auto below = static_cast<std::size_t>(position);
        const auto above = std::min(below + 1, values.size() - 1);
        return std::lerp(values[below], values[above], position - static_cast<double>(below));
    };
    return {at(0.25), at(0.5), at(0.75)};
}

}  // namespace kuvbench
